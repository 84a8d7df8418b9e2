#pragma once

#include <QString>

namespace zel {

/// True when exactly one item of a modification text (see PeptideSpectrumMatch::tarnicStyleMods) is
/// a label and a mass shift within 0.0001 Da of that of deamidation. An item labelled "deam", in
/// any letter case, does not count.
bool hasOneDeamidationDelta(const QString& mods);

} // namespace zel
