#pragma once

#include "common/stable/Setting.h"
#include "tools/simulate/SimulationSettings.h"

namespace zel::simulate {

/// Who reads SimulationSettings: bits of Setting::readBy.
enum SimulationReader : SettingReaders {
    kEveryRun = 1,
    kDigest = 2, ///< peptides of a FASTA file
    kSeveralSamples = 4,
    kMobilityRun = 8,
    kProfileRun = 16,
};

/// The settings of a simulated run that are numbers or a path.
SettingTable<SimulationSettings> simulationSettings();

} // namespace zel::simulate
