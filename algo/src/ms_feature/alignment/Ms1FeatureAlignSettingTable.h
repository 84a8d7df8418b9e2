#pragma once

#include "common/stable/Setting.h"
#include "ms_feature/alignment/Ms1FeatureAlignSettings.h"

namespace zel {

/// The settings of the alignment across runs, without those of its finder. Every alignment reads
/// all of them.
ZEL_EXPORT SettingTable<Ms1FeatureAlignSettings> ms1FeatureAlignSettings();

} // namespace zel
