// The mobility finder's way to the clusters of a frame: what each step costs, how the sliding sum
// stands to the length of its window, and what a second thread gives.

#include "bench/feature_finder/MobilityFrames.h"
#include "bench/support/Paired.h"
#include "common/stable/MathUtils.h"
#include "feature_finder/FeatureFinderV24DScansHandler.h"
#include "feature_finder/HillLimits_p.h"
#include "feature_finder/MatrixRows_p.h"
#include "feature_finder/ScanIteratorV2HillBuilder.h"
#include "feature_finder/ScanIteratorV2HillClusteromatic.h"

#include <QFuture>
#include <QtConcurrent>
#include <benchmark/benchmark.h>

#include <chrono>
#include <functional>
#include <map>
#include <string>

namespace zel::bench {

namespace {

using Matrix = Eigen::SparseMatrix<double>;

constexpr int kFrameCount = 40;

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
    const auto apexes = EigenUtilities::findSparseMatrixApexes(matrix);
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
    ->Iterations(9);

} // namespace zel::bench
