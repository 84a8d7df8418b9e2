#pragma once

#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Setting.h"

namespace zel {

/// Who reads SettableFeatureFinderParameters: bits of Setting::readBy.
enum FeatureFinderReader : SettingReaders {
    kScanWiseFinder = 1, ///< version 0
    kHillFinder = 2,     ///< version 1
    kFrameFinder = 4,    ///< version 2
    kAutoSet = 8,        ///< FeatureFinderParametersAutoSet
    kCrossSample = 16,   ///< features of several samples
};

/// The settings of untargeted feature finding.
ZEL_EXPORT SettingTable<SettableFeatureFinderParameters> featureFinderSettings();

} // namespace zel
