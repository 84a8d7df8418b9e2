#include "ms_feature/records/MsFeatureFinderSettings.h"

#include "common/stable/SharedNumbers.h"

#include <algorithm>

namespace zel {

constinit const QString MsFeatureFinderSettings::adaptiveHtmlDumpFilenameDefault;

MsFeatureFinderSettings::MsFeatureFinderSettings() = default;

double MsFeatureFinderSettings::mzMargin(double mz) const
{
    return mz * xicMzTolerancePpm * kPartsPerMillion;
}

double MsFeatureFinderSettings::xicTimeWindowToExtract() const
{
    return 3.0 * std::max(xicApexSearchWindow, xicAreaTimeWindow);
}

} // namespace zel
