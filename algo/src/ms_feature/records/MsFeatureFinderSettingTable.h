#pragma once

#include "common/stable/Setting.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"

namespace zel {

/// Who reads MsFeatureFinderSettings: bits of Setting::readBy.
enum MsFeatureFinderReader : SettingReaders {
    kFixedWidthFinder = 1,
    kPrototypeFinder = 2,
    kAdaptiveFinder = 4,
    kAdaptiveV2Finder = 8,
    kHarmonicMean = 16, ///< isotopes folded by MultiIsotopeXic
};

/// The settings of the targeted finders, in the order of the record.
ZEL_EXPORT SettingTable<MsFeatureFinderSettings> msFeatureFinderSettings();

} // namespace zel
