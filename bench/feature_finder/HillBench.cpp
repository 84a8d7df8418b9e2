// The mobility finder's way to the hills of a frame: what each step costs, how the sliding sum
// stands to the length of its window, and what a second thread gives.

#include "bench/feature_finder/MobilityFrames.h"
#include "bench/support/Paired.h"
#include "feature_finder/FeatureFinderV24DScansHandler.h"
#include "feature_finder/ScanIteratorV2HillBuilder.h"

#include <benchmark/benchmark.h>

#include <chrono>
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

/// Frames a second, and the parts of a frame's time. Limits include the removal of the hills inside
/// others.
void mobilityFrames(benchmark::State& state)
{
    const auto params = SettableFeatureFinderParameters::trappedMobility();
    const auto builder = builderOf(params);
    const auto climber = builderOf(withoutSmoothing(params));
    Window window(params);
    std::map<std::string, double> seconds;
    for ([[maybe_unused]] auto _ : state) {
        Matrix raw;
        seconds["sum"] += secondsOf([&] { raw = window.next(); });
        QList<HillD2> hills;
        const double hillSeconds = secondsOf([&] { hills = builder.buildHills(raw, 1).value(); });
        if (hills.isEmpty()) {
            state.SkipWithError("no hills");
        }
        state.PauseTiming();
        seconds["hills"] += hillSeconds;
        (void)builder.buildHills(&raw); // leaves it smoothed
        const double apexSeconds = secondsOf(
            [&] { benchmark::DoNotOptimize(EigenUtilities::findSparseMatrixApexes(raw)); });
        const double climbSeconds =
            secondsOf([&] { benchmark::DoNotOptimize(climber.buildHills(raw, 1)); });
        seconds["apexes"] += apexSeconds;
        seconds["limits"] += climbSeconds - apexSeconds;
        seconds["smoothing"] += hillSeconds - climbSeconds;
        state.ResumeTiming();
    }
    const double total = seconds["sum"] + seconds["hills"];
    state.SetItemsProcessed(state.iterations());
    for (const char* const part : {"sum", "smoothing", "apexes", "limits"}) {
        state.counters[part] = seconds[part] / total;
    }
}
BENCHMARK(mobilityFrames)->Unit(benchmark::kMillisecond)->Iterations(74);

/// A step of a window of 24 frames against one of 3.
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
    };
    step(shortWindow);
    step(longWindow);
    runPaired(
        state,
        [&] { benchmark::DoNotOptimize(longWindow.next()); },
        [&] { benchmark::DoNotOptimize(shortWindow.next()); });
}
BENCHMARK(longWindowAgainstShort)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(15);

/// The search for the hills of the whole run, over 30 Th, on two threads against one.
void hillSearchTwoThreadsAgainstOne(benchmark::State& state)
{
    auto params = SettableFeatureFinderParameters::trappedMobility();
    params.numberOfFramesToSum = 0;
    params.relativeFrameNoiseFloor = 0.0;
    Matrix matrix = Window(params, {500.0, 530.0}).next();
    (void)builderOf(params).buildHills(&matrix); // leaves it smoothed
    const auto climber = builderOf(withoutSmoothing(params));
    const auto climb = [&](const char* threads) {
        qputenv("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY", threads);
        benchmark::DoNotOptimize(climber.buildHills(matrix, 1));
    };
    runPaired(
        state, [&] { climb("2"); }, [&] { climb("1"); });
    qunsetenv("ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY");
    state.counters["apexes"] =
        static_cast<double>(EigenUtilities::findSparseMatrixApexes(matrix).size());
}
BENCHMARK(hillSearchTwoThreadsAgainstOne)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond)
    ->Iterations(5);

} // namespace zel::bench
