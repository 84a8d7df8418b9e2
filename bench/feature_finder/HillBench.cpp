// The mobility finder's way to the clusters of a frame: what each step costs, how the sliding sum
// stands to the length of its window, and what a second thread gives.

#include "bench/feature_finder/MobilityFrames.h"
#include "bench/support/Paired.h"
#include "common/stable/MathUtils.h"
#include "common/stable/MemoryInfo.h"
#include "feature_finder/clusters/ScanIteratorV2HillClusteromatic.h"
#include "feature_finder/finders/FeatureFinderV24D.h"
#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"
#include "feature_finder/frames/MatrixRows_p.h"
#include "feature_finder/hills/HillLimits_p.h"
#include "feature_finder/hills/ScanIteratorV2HillBuilder.h"
#include "tests/support/SourceProbe.h"

#include <QFile>
#include <QFuture>
#include <QtConcurrent>
#include <benchmark/benchmark.h>

#include <malloc.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace zel::bench {

namespace {

using Matrix = Eigen::SparseMatrix<double>;

constexpr int kFrameCount = 40;
/// Number of the run's first frame.
constexpr int kFirstD1 = 31;

msreader::MsDataSourceInterface* run()
{
    static const auto made = mobilityRun(kFrameCount);
    return made.get();
}

/// Walks over the run, and starts over at its end.
class Window
{
public:
    explicit Window(const SettableFeatureFinderParameters& params, Interval<double> mz = {0.0, 1e4})
    {
        if (m_handler.init(run(), params).hasError()) {
            qFatal("the run cannot be read");
        }
        m_handler.setMinMzAndMaxMz(mz);
        m_d1s = m_handler.allD1s();
        m_next = m_d1s.size();
    }

    Matrix next()
    {
        if (m_next == m_d1s.size()) {
            m_handler.clearFramesAndSummingMatrix();
            m_next = 0;
        }
        return m_handler.getFrameRaw(m_d1s[m_next++]).value();
    }

    bool isAtStart() const { return m_next == m_d1s.size(); }

private:
    FeatureFinderV24DScansHandler m_handler;
    QList<int> m_d1s;
    qsizetype m_next = 0;
};

ScanIteratorV2HillBuilder builderOf(const SettableFeatureFinderParameters& params)
{
    ScanIteratorV2HillBuilder builder;
    if (builder.init(params).hasError()) {
        qFatal("the hill builder cannot be made");
    }
    return builder;
}

SettableFeatureFinderParameters withoutSmoothing(SettableFeatureFinderParameters params)
{
    params.mzSmoothingPasses = 0;
    params.d2SmoothingPasses = 0;
    return params;
}

template <typename Work>
double secondsOf(Work work)
{
    const auto start = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

/// Frames a second, from the points of the source to clusters, and the parts of a frame's time.
/// Limits include the removal of the hills inside others.
void mobilityFrames(benchmark::State& state)
{
    const auto params = SettableFeatureFinderParameters::trappedMobility();
    ScanIteratorV2HillClusteromatic clusteromatic;
    if (clusteromatic.init(params).hasError()) {
        qFatal("the networks cannot be loaded");
    }
    const auto builder = builderOf(params);
    const auto climber = builderOf(withoutSmoothing(params));
    Window window(params);
    std::map<std::string, double> seconds;
    for ([[maybe_unused]] auto _ : state) {
        Matrix raw;
        const double sumSeconds = secondsOf([&] { raw = window.next(); });
        QList<HillD2> hills;
        const double hillSeconds = secondsOf([&] { hills = builder.buildHills(raw, 1).value(); });
        QList<ChargeFeatureFrame> clusters;
        const double clusterSeconds =
            secondsOf([&] { clusters = clusteromatic.buildChargeFeatures(hills).value(); });
        if (clusters.isEmpty()) {
            state.SkipWithError("no clusters");
        }
        state.SetIterationTime(sumSeconds + hillSeconds + clusterSeconds);

        (void)builder.buildHills(&raw); // leaves it smoothed
        const double rowSeconds = secondsOf([&] { MatrixRows rows(raw); });
        const double apexSeconds = secondsOf(
            [&] { benchmark::DoNotOptimize(EigenUtilities::findSparseMatrixApexes(raw)); });
        const double climbSeconds =
            secondsOf([&] { benchmark::DoNotOptimize(climber.buildHills(raw, 1)); });
        seconds["sum"] += sumSeconds;
        seconds["apexes"] += apexSeconds;
        seconds["limits"] += climbSeconds - apexSeconds - rowSeconds;
        seconds["smoothing"] += hillSeconds - climbSeconds + rowSeconds;
        seconds["clustering"] += clusterSeconds;
        seconds["total"] += sumSeconds + hillSeconds + clusterSeconds;
    }
    state.SetItemsProcessed(state.iterations());
    for (const char* const part : {"sum", "smoothing", "apexes", "limits", "clustering"}) {
        state.counters[part] = seconds[part] / seconds["total"];
    }
}
BENCHMARK(mobilityFrames)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(74);

/// The run of the bench over and over again, as one of `frameCount` frames that takes no more
/// memory.
class RepeatedRun : public test::SourceProbe
{
public:
    explicit RepeatedRun(int frameCount)
        : SourceProbe(run())
        , m_frameCount(frameCount)
    {}

    using SourceProbe::scanData;
    using SourceProbe::scanInfoBasic;
    Result<QList<msreader::MsScanId>> scanIds(const msreader::MsQuery& query) override
    {
        auto ids = SourceProbe::scanIds(query);
        const qsizetype idsPerFrame = ids.value().size() / kFrameCount;
        for (int frame = kFrameCount; frame < m_frameCount; ++frame) {
            for (qsizetype i = 0; i < idsPerFrame; ++i) {
                ids.value().append(ids.value().at(i));
                *ids.value().last().d1 += frame;
            }
        }
        return ids;
    }
    Result<msreader::ScanInfoBasic> scanInfoBasic(const msreader::MsScanId& id) override
    {
        return msreader::ScanInfoBasic{id, static_cast<double>(*id.d1)};
    }
    Result<QList<QPointF>> scanData(const msreader::MsQuery& query) override
    {
        msreader::MsScanId id = *query.scanId();
        *id.d1 = kFirstD1 + (*id.d1 - kFirstD1) % kFrameCount;
        return SourceProbe::scanData(msreader::MsQuery(id, query.peakPickingFilter()));
    }

private:
    int m_frameCount;
};

/// Gives unused memory back and lets the peak start over; Linux only.
void forgetPeakMemory()
{
    malloc_trim(0);
    QFile file(QStringLiteral("/proc/self/clear_refs"));
    if (!file.open(QIODevice::WriteOnly) || file.write("5") != 1) {
        qWarning("the peak memory is that of the whole process");
    }
}

/// The peak memory of runs of different length, and what the records of the clusters take of it,
/// MB. The bench itself holds 40 frames.
void memoryOfFrames(benchmark::State& state)
{
    RepeatedRun source(static_cast<int>(state.range(0)));
    forgetPeakMemory();
    FeatureFinderV24D finder;
    if (finder.init(SettableFeatureFinderParameters::trappedMobility()).hasError()) {
        qFatal("the finder cannot be made");
    }
    qsizetype clusterCount = 0;
    for ([[maybe_unused]] auto _ : state) {
        clusterCount = finder.buildPerFrameChargeFeatures(&source, nullptr).value().size();
    }
    state.counters["peakMB"] = static_cast<double>(MemoryInfo().peakProcessWorkingSet()) / 1e6;
    state.counters["recordsMB"] =
        static_cast<double>(clusterCount) * sizeof(ChargeFeatureFrame) / 1e6;
}
BENCHMARK(memoryOfFrames)->Arg(100)->Arg(400)->Unit(benchmark::kSecond)->Iterations(1);

/// A step of a window of 24 frames against one of 3, with reading and binning the frame.
void longWindowAgainstShort(benchmark::State& state)
{
    auto params = SettableFeatureFinderParameters::trappedMobility();
    Window shortWindow(params);
    params.numberOfFramesToSum = 24;
    Window longWindow(params);
    const auto step = [](Window& window) {
        if (window.isAtStart()) {
            benchmark::DoNotOptimize(window.next()); // fills it
        }
        return secondsOf([&] { benchmark::DoNotOptimize(window.next()); });
    };
    std::vector<double> ratios;
    for ([[maybe_unused]] auto _ : state) {
        const double longSeconds = step(longWindow);
        ratios.push_back(longSeconds / step(shortWindow));
        state.SetIterationTime(longSeconds);
    }
    state.counters["ratio"] = MathUtils::median(ratios);
}
BENCHMARK(longWindowAgainstShort)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(30);

/// The search for the limits of the hills of the whole run, over 60 Th, on two threads against one.
/// \param range(0)  0: the climb from the apexes alone; 1: with finding and sorting the apexes and
///                  the removal of hills inside others, which are not parallel
void hillSearchTwoThreadsAgainstOne(benchmark::State& state)
{
    SettableFeatureFinderParameters params;
    params.numberOfFramesToSum = 0;
    params.mzHashFactor = 500.0;
    Matrix matrix = Window(params, {500.0, 560.0}).next();
    (void)builderOf(params).buildHills(&matrix); // leaves it smoothed
    const MatrixRows rows(matrix);
    auto apexes = EigenUtilities::findSparseMatrixApexes(matrix);
    std::stable_sort(apexes.begin(), apexes.end(), [](const auto& a, const auto& b) {
        return a.value > b.value;
    });
    const HillSearchSettings settings = {500.0, 0.1, 0.05, 1};
    const auto climber = builderOf(withoutSmoothing(params));
    const auto climb = [&](qsizetype threads) {
        std::vector<QFuture<std::vector<HillD2>>> batches;
        for (qsizetype i = 0; i < threads; ++i) {
            batches.push_back(QtConcurrent::run(&climbDown,
                                                std::cref(apexes),
                                                i * apexes.size() / threads,
                                                (i + 1) * apexes.size() / threads,
                                                std::cref(matrix),
                                                std::cref(rows),
                                                settings));
        }
        for (auto& batch : batches) {
            benchmark::DoNotOptimize(batch.takeResult());
        }
    };
    const auto search = [&](qsizetype threads) {
        qputenv("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY", QByteArray::number(threads));
        benchmark::DoNotOptimize(climber.buildHills(matrix, 1));
    };
    const bool isWhole = state.range(0) == 1;
    runPaired(
        state, [&] { isWhole ? search(2) : climb(2); }, [&] { isWhole ? search(1) : climb(1); });
    qunsetenv("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY");
    state.counters["apexes"] = static_cast<double>(apexes.size());
}
BENCHMARK(hillSearchTwoThreadsAgainstOne)
    ->Arg(0)
    ->Arg(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(25);

} // namespace zel::bench
