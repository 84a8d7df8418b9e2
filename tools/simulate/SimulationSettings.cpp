#include "tools/simulate/SimulationSettings.h"

namespace zel::simulate {

SimulationSettings SimulationSettings::withoutNoise() const
{
    SimulationSettings quiet = *this;
    quiet.minIntensity = 0.0;
    quiet.mzNoisePpm = 0.0;
    quiet.intensityNoise = 0.0;
    quiet.intensityPerIon = 0.0;
    quiet.backgroundIonCount = 0;
    quiet.strayPeakCount = 0.0;
    return quiet;
}

double SimulationSettings::mobilityStep() const
{
    return mobilityScanCount > 1 ? (lastMobility - firstMobility) / (mobilityScanCount - 1) : 0.0;
}

double SimulationSettings::maxDriftMinutes() const
{
    return durationMinutes() / 10.0;
}

} // namespace zel::simulate
