#pragma once

#include "tools/simulate/Simulator.h"
#include "tools/sources/memory/InMemoryDataSource.h"

namespace zel::bench {

/// Frames of 900 mobility scans and about 200,000 centroids on a time-of-flight analyser, one a
/// second: out of a run of 2,400 peptides that elute within about a minute, with background and
/// 80,000 stray peaks a frame. At most 40 frames.
inline QSharedPointer<msreader::InMemoryDataSource> mobilityRun(int frameCount)
{
    constexpr int simulatedFrames = 120;
    constexpr int firstFullFrame = 30;
    simulate::SimulationSettings settings;
    settings.peptideCount = 2400;
    settings.endMinutes = (simulatedFrames - 1) / 60.0;
    settings.peakSigmaSeconds = 2.0;
    settings.peakTailSeconds = 1.0;
    settings.retentionJitterSeconds = 0.1;
    settings.driftMinutes = 0.0;
    settings.mobilityScanCount = 900;
    settings.resolutionModel = simulate::ResolutionModel::TimeOfFlight;
    settings.resolvingPower = 40000.0;
    settings.mzNoisePpm = 3.0;
    settings.minIntensity = 30.0;
    settings.intensityPerIon = 10.0;
    settings.medianApexIntensity = 2e5;
    settings.backgroundIonIntensity = 1e4;
    settings.strayPeakCount = 80000.0;
    settings.strayPeakIntensity = 60.0;
    auto run = simulate::simulateRun(settings, 0);
    if (!run.isOk()) {
        qFatal("%s", qPrintable(run.error().errorMessage()));
    }
    // Peptides do not elute at the ends, so that their peaks are whole.
    const auto full = run.value().scans.mid(firstFullFrame * settings.mobilityScanCount,
                                            frameCount * settings.mobilityScanCount);
    return msreader::InMemoryDataSource::create(full, QStringLiteral("mobility")).value();
}

} // namespace zel::bench
