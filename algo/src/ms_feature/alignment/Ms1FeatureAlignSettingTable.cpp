#include "ms_feature/alignment/Ms1FeatureAlignSettingTable.h"

namespace zel {

namespace {

using Record = Ms1FeatureAlignSettings;

constexpr const char* kAlignment = "Alignment across runs";
constexpr const char* kReaders[] = {"several runs"};

constexpr SettingChoice kModes[] = {
    {"disabled", static_cast<int>(Record::Mode::Disabled)},
    {"different-topology", static_cast<int>(Record::Mode::DifferentTopologyOnly)},
    {"full", static_cast<int>(Record::Mode::Full)}};

constexpr Setting<Record> kSettings[] = {
    {ZEL_ENUM_SETTING(mode),
     .group = kAlignment,
     .meaning = "Which ions are aligned across runs: none, those with different numbers of peaks, "
                "or all",
     .limits = {.choices = kModes},
     .readBy = 1,
     .option = "align"},
    {ZEL_SETTING(correlationThreshold),
     .group = kAlignment,
     .meaning = "Least correlation of the aligned chromatograms",
     .limits = {-1, 1},
     .readBy = 1},
    {ZEL_SETTING(htmlDumpFilename),
     .group = kAlignment,
     .meaning = "Page of diagrams of the aligned chromatograms (HTML)",
     .readBy = 1,
     .option = ""},
    {ZEL_SETTING(power),
     .group = kAlignment,
     .meaning = "Shape of the penalty on shifts: 1 - |share of the greatest shift|^power",
     .readBy = 1},
};

} // namespace

SettingTable<Ms1FeatureAlignSettings> ms1FeatureAlignSettings()
{
    return {kSettings, kReaders};
}

} // namespace zel
