#pragma once

#include <QByteArray>
#include <QHash>

#include <span>

namespace zel::msreader {

/// The term that stands for the arrays that hold a mobility for each point, of all kinds: mean, raw
/// and deconvoluted, drift time and inverse reduced.
inline constexpr const char* kMobilityArrayAccession = "MS:1002816";

/// Replaces accessions of the controlled vocabulary by ones that libpwiz reads without an
/// exception: one of a mobility array by kMobilityArrayAccession, one that libpwiz does not know by
/// one of the same length that means nothing.
class AccessionAdapter
{
public:
    void operator()(std::span<char> accession);

private:
    QHash<QByteArray, QByteArray> m_replacements;
};

} // namespace zel::msreader
