#pragma once

#include "tools/sources/mzml/FilteredFileBuffer.h"

namespace zel::msreader {

/// The term that stands for the arrays that hold a mobility for each point, of all kinds: mean, raw
/// and deconvoluted, drift time and inverse reduced.
inline constexpr const char* kMobilityArrayAccession = "MS:1002816";

/// A filter that replaces accessions of the controlled vocabulary by ones that libpwiz reads
/// without an exception: one of a mobility array by kMobilityArrayAccession, one that libpwiz does
/// not know by one of the same length that means nothing.
AttributeFilter accessionFilter();

} // namespace zel::msreader
