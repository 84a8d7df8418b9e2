#include "tools/simulate/Simulator.h"

#include "common/stable/SharedNumbers.h"
#include "tools/simulate/RandomStream.h"
#include "tools/simulate/Sample.h"
#include "tools/simulate/ScanRenderer.h"
#include "tools/simulate/SignalFrame.h"
#include "tools/simulate/SimulatedPeptide.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zel::simulate {

using msreader::InMemoryScan;
using msreader::MsScanId;

namespace {

std::uint64_t pathStep(qsizetype index)
{
    return static_cast<std::uint64_t>(index);
}

/// Walks through the frames of a run with the peptides that elute at each time.
class RunBuilder
{
public:
    RunBuilder(const SimulationSettings& settings,
               std::vector<ElutingPeptide> eluting,
               int sampleIndex)
        : m_settings(settings)
        , m_sampleIndex(sampleIndex)
        , m_waiting(std::move(eluting))
        , m_background(drawBackground(settings))
        , m_renderer(settings)
        , m_frame(settings)
    {
        std::ranges::stable_sort(m_waiting, {}, &ElutingPeptide::startMinutes);
    }

    Result<QList<InMemoryScan>> build(const QSharedPointer<ProgressBarInterface>& progress)
    {
        constexpr int framesPerStep = 100;
        const int frameCount =
            1 + static_cast<int>(m_settings.durationMinutes() * kSecondsPerMinute /
                                 m_settings.scanIntervalSeconds);
        ProgressContext context((frameCount + framesPerStep - 1) / framesPerStep, progress);
        for (int frame = 0; frame < frameCount; ++frame) {
            addFrame(frame);
            if ((frame + 1) % framesPerStep == 0 || frame + 1 == frameCount) {
                ++context;
                if (context.isCanceled()) {
                    ZEL_RETURN_ERROR(kOperationCanceledError);
                }
            }
        }
        return std::move(m_scans);
    }

private:
    void addFrame(int frameIndex)
    {
        const double minutes = m_settings.startMinutes +
                               frameIndex * m_settings.scanIntervalSeconds / kSecondsPerMinute;
        RandomStream random(m_settings.seed,
                            {RandomStream::Scans, pathStep(m_sampleIndex), pathStep(frameIndex)});
        addPeptides(minutes);
        addBackground(minutes);
        addStrayPeaks(random);
        for (std::size_t scan = 0; scan < m_frame.scanCount(); ++scan) {
            InMemoryScan recorded = scanWithoutPoints(frameIndex, scan, minutes);
            recorded.points = m_renderer.render(m_frame.scan(scan), random);
            m_frame.scan(scan).clear();
            m_scans.append(std::move(recorded));
        }
    }

    void addPeptides(double minutes)
    {
        std::erase_if(m_active,
                      [&](const ElutingPeptide& elution) { return elution.endMinutes < minutes; });
        while (m_nextWaiting < m_waiting.size() &&
               m_waiting[m_nextWaiting].startMinutes <= minutes) {
            m_active.push_back(m_waiting[m_nextWaiting++]);
        }
        for (const ElutingPeptide& elution : m_active) {
            const SimulatedPeptide& peptide = *elution.peptide;
            const double intensity =
                elution.area * peptide.shape.height(minutes - elution.apexMinutes);
            for (const SimulatedIon& ion : peptide.ions) {
                m_frame.addIon(peptide, ion, intensity * ion.share);
            }
        }
    }

    /// Each background ion rises and falls by a third, once in ten minutes.
    void addBackground(double minutes)
    {
        constexpr double periodMinutes = 10.0;
        constexpr double relativeChange = 1.0 / 3.0;
        for (const BackgroundIon& ion : m_background) {
            const double angle = 2.0 * std::numbers::pi * minutes / periodMinutes + ion.phase;
            m_frame.addBackground(ion, ion.intensity * (1.0 + relativeChange * std::sin(angle)));
        }
    }

    void addStrayPeaks(RandomStream& random)
    {
        const double count = random.poisson(m_settings.strayPeakCount);
        for (double i = 0.0; i < count; i += 1.0) {
            const double mz = random.uniform(m_settings.mzStart, m_settings.mzEnd);
            const double intensity =
                -std::log(1.0 - random.uniform()) * m_settings.strayPeakIntensity;
            m_frame.add(random.below(m_frame.scanCount()), {mz, intensity});
        }
    }

    InMemoryScan scanWithoutPoints(int frameIndex, std::size_t scan, double minutes) const
    {
        const auto number = static_cast<long long>(m_scans.size()) + 1;
        const long long frameNumber = frameIndex + 1;
        InMemoryScan recorded;
        recorded.info.retentionTimeMinutes = minutes;
        recorded.info.storedAs = m_settings.scanKind;
        recorded.info.nativeScanNumber = number;
        recorded.info.acquiredMzRange = {m_settings.mzStart, m_settings.mzEnd};
        if (m_settings.mobilityScanCount == 0) {
            recorded.info.scanId = MsScanId(frameNumber);
            recorded.info.nativeId = QStringLiteral("scan=%1").arg(number);
        } else {
            const auto scanNumber = static_cast<long long>(scan) + 1;
            recorded.info.scanId = MsScanId(frameNumber, scanNumber);
            recorded.info.nativeId =
                QStringLiteral("frame=%1 scan=%2").arg(frameNumber).arg(scanNumber);
            recorded.info.mobility = m_frame.mobilityOf(scan);
        }
        return recorded;
    }

    const SimulationSettings& m_settings;
    int m_sampleIndex;
    std::vector<ElutingPeptide> m_waiting; ///< ascending in start
    std::size_t m_nextWaiting = 0;
    std::vector<ElutingPeptide> m_active;
    std::vector<BackgroundIon> m_background;
    ScanRenderer m_renderer;
    SignalFrame m_frame;
    QList<InMemoryScan> m_scans;
};

Result<SimulatedRun> runOfSample(const SimulationSettings& settings,
                                 const std::vector<SimulatedPeptide>& peptides,
                                 int sampleIndex,
                                 const QSharedPointer<ProgressBarInterface>& progress)
{
    const std::vector<ElutingPeptide> eluting = elutingPeptides(settings, peptides, sampleIndex);
    SimulatedRun run;
    run.sampleIndex = sampleIndex;
    run.truth = truthOf(settings, eluting, sampleIndex);
    RunBuilder builder(settings, eluting, sampleIndex);
    ZEL_ASSIGN_OR_RETURN(run.scans, builder.build(progress));
    return run;
}

} // namespace

Result<SimulatedRun> simulateRun(const SimulationSettings& settings,
                                 int sampleIndex,
                                 const QSharedPointer<ProgressBarInterface>& progress)
{
    Error e;
    ZEL_RETURN_IF_ERROR(settings.check());
    if (sampleIndex < 0 || sampleIndex >= settings.sampleCount) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("A sample from 0 to %1 is wanted, but it is %2")
                             .arg(settings.sampleCount - 1)
                             .arg(sampleIndex));
    }
    ZEL_ASSIGN_OR_RETURN(const std::vector<SimulatedPeptide> peptides, drawPeptides(settings));
    return runOfSample(settings, peptides, sampleIndex, progress);
}

Result<QList<SimulatedRun>> simulate(const SimulationSettings& settings,
                                     const QSharedPointer<ProgressBarInterface>& progress)
{
    Error e;
    ZEL_RETURN_IF_ERROR(settings.check());
    ZEL_ASSIGN_OR_RETURN(const std::vector<SimulatedPeptide> peptides, drawPeptides(settings));
    QList<SimulatedRun> runs;
    for (int sample = 0; sample < settings.sampleCount; ++sample) {
        ZEL_ASSIGN_OR_RETURN(SimulatedRun run, runOfSample(settings, peptides, sample, progress));
        runs.append(std::move(run));
    }
    return runs;
}

} // namespace zel::simulate
