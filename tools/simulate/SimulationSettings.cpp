#include "tools/simulate/SimulationSettings.h"

#include "common/stable/SharedNumbers.h"

#include <algorithm>
#include <cmath>

namespace zel::simulate {

namespace {

/// Limits on what one run may hold, so that a slip of the pen is told instead of filling memory.
constexpr int kMaxSampleCount = 10'000;
constexpr int kMaxPeptideCount = 10'000'000;
constexpr int kMaxMobilityScanCount = 100'000;
constexpr double kMaxScanCount = 1e7;

/// A setting with the limits that it must keep, both included.
struct Limits
{
    const char* name;
    double value;
    double lowest;
    double highest;
};

Error checkLimits(std::initializer_list<Limits> all)
{
    for (const Limits& limits : all) {
        if (!(limits.value >= limits.lowest && limits.value <= limits.highest)) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("%1 must lie between %2 and %3, but is %4")
                                 .arg(QLatin1StringView(limits.name))
                                 .arg(limits.lowest)
                                 .arg(limits.highest)
                                 .arg(limits.value));
        }
    }
    return kNoError;
}

} // namespace

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

Error SimulationSettings::check() const
{
    Error e;
    constexpr double tiny = 1e-9;
    ZEL_RETURN_IF_ERROR(checkLimits({
        {"sampleCount", static_cast<double>(sampleCount), 1, kMaxSampleCount},
        {"peptideCount", static_cast<double>(peptideCount), 0, kMaxPeptideCount},
        {"missedCleavages", static_cast<double>(missedCleavages), 0, 100},
        {"minPeptideLength", static_cast<double>(minPeptideLength), 1, 1000},
        {"maxPeptideLength",
         static_cast<double>(maxPeptideLength),
         static_cast<double>(minPeptideLength),
         1000},
        {"isomerDistance", isomerDistance, 0, 100},
        {"minCharge", static_cast<double>(minCharge), 1, 100},
        {"maxCharge", static_cast<double>(maxCharge), static_cast<double>(minCharge), 100},
        {"mzStart", mzStart, 1, 1e5},
        {"mzEnd", mzEnd, mzStart + 1, 1e5},
        {"medianApexIntensity", medianApexIntensity, tiny, 1e30},
        {"intensityDecades", intensityDecades, 0, 10},
        {"startMinutes", startMinutes, 0, 1e6},
        {"endMinutes", endMinutes, startMinutes, 1e6},
        {"scanIntervalSeconds", scanIntervalSeconds, 1e-3, 1e6},
        {"peakSigmaSeconds", peakSigmaSeconds, 1e-3, 1e6},
        {"peakTailSeconds", peakTailSeconds, 0, 1e6},
        {"peakWidthSpread", peakWidthSpread, 0, 1},
        {"driftMinutes", driftMinutes, 0, durationMinutes() / 10},
        {"retentionJitterSeconds", retentionJitterSeconds, 0, 1e6},
        {"abundanceSpread", abundanceSpread, 0, 10},
        {"missingFraction", missingFraction, 0, 1},
        {"mobilityScanCount", static_cast<double>(mobilityScanCount), 0, kMaxMobilityScanCount},
        {"resolvingPower", resolvingPower, 100, 1e8},
        {"profilePointsPerFwhm", profilePointsPerFwhm, 3, 1000},
        {"minIntensity", minIntensity, 0, 1e30},
        {"mzNoisePpm", mzNoisePpm, 0, 1000},
        {"intensityNoise", intensityNoise, 0, 10},
        {"intensityPerIon", intensityPerIon, 0, 1e30},
        {"backgroundIonCount", static_cast<double>(backgroundIonCount), 0, kMaxPeptideCount},
        {"backgroundIonIntensity", backgroundIonIntensity, tiny, 1e30},
        {"strayPeakCount", strayPeakCount, 0, 1e7},
        {"strayPeakIntensity", strayPeakIntensity, tiny, 1e30},
    }));
    if (mobilityScanCount > 0) {
        ZEL_RETURN_IF_ERROR(checkLimits({
            {"firstMobility", firstMobility, 1e-3, 1e3},
            {"lastMobility", lastMobility, 1e-3, 1e3},
            {"mobilityScanCount", static_cast<double>(mobilityScanCount), 2, kMaxMobilityScanCount},
            {"mobilitySigma", mobilitySigma, std::abs(mobilityStep()), 1e3},
        }));
    }
    const double frameCount = durationMinutes() * kSecondsPerMinute / scanIntervalSeconds;
    ZEL_RETURN_IF_ERROR(checkLimits({
        {"the number of scans", frameCount * std::max(mobilityScanCount, 1), 0, kMaxScanCount},
    }));
    return kNoError;
}

} // namespace zel::simulate
