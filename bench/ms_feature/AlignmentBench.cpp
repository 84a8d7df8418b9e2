// The alignment of one ion in eight runs against its dot products, streamed once out of memory or
// as plain loops over the curves.

#include "bench/support/Paired.h"
#include "ms_feature/alignment/Ms1FeatureAlign.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <random>

namespace zel::bench {

namespace {

constexpr int kRunCount = 8;
constexpr int kGridCount = 3000;
constexpr double kStart = 20.0;     ///< minutes
constexpr double kStep = 0.004;     ///< minutes
constexpr double kFwhm = 0.2;       ///< minutes
constexpr double kMiddle = 26.0;    ///< minutes
constexpr double kMostDrift = 0.75; ///< minutes
constexpr int kMaxShift = 400;      ///< 8 widths in grid steps

/// The ion in one run: a Gaussian peak over noise, found where it is.
Ms1Feature featureOf(double drift, std::mt19937_64& random)
{
    std::exponential_distribution<double> noise(1e-3);
    const double apex = kMiddle + drift;
    const double sigma = kFwhm / 2.3548;
    QList<QPointF> points;
    for (int i = 0; i <= kGridCount; ++i) {
        const double time = kStart + kStep * i;
        const double z = (time - apex) / sigma;
        points.append(QPointF(time, 1e6 * std::exp(-0.5 * z * z) + noise(random)));
    }
    Ms1Feature feature;
    feature.setXicPlot(PlotBase(points));
    feature.setTimeInterval({{apex - kFwhm, apex + kFwhm}, kFwhm, {apex, 1e6}, 0.0, 0.0});
    PeptideSpectrumMatch match;
    match.setScanTimeMinutes(apex);
    feature.setPeptideSpectrumMatches({match});
    return feature;
}

QList<Ms1Feature> driftedFeatures()
{
    std::mt19937_64 random(17);
    QList<Ms1Feature> features;
    for (int run = 0; run < kRunCount; ++run) {
        features.append(featureOf(kMostDrift * (2.0 * run / (kRunCount - 1) - 1.0), random));
    }
    return features;
}

QList<Ms1Feature*> pointersTo(QList<Ms1Feature>& features)
{
    QList<Ms1Feature*> pointers;
    for (Ms1Feature& feature : features) {
        pointers.append(&feature);
    }
    return pointers;
}

Ms1FeatureAlign aligner()
{
    Ms1FeatureAlignSettings settings;
    settings.mode = Ms1FeatureAlignSettings::Mode::Full;
    return Ms1FeatureAlign(settings);
}

/// The products of all dot products of an alignment.
std::size_t productCount()
{
    std::size_t count = 0;
    for (int shift = -kMaxShift; shift <= kMaxShift; ++shift) {
        count += static_cast<std::size_t>(kGridCount - std::abs(shift));
    }
    return count * (kRunCount - 1);
}

/// As many products as an alignment has, of two lists that do not fit into a cache.
void streamProducts()
{
    static const std::vector<double> a(productCount(), 1.5);
    static const std::vector<double> b(productCount(), 2.5);
    constexpr std::size_t laneCount = 8;
    std::array<double, laneCount> sums{};
    for (std::size_t i = 0; i + laneCount <= a.size(); i += laneCount) {
        for (std::size_t lane = 0; lane < laneCount; ++lane) {
            sums[lane] += a[i + lane] * b[i + lane];
        }
    }
    benchmark::DoNotOptimize(sums);
}

/// The dot products of the curves at all shifts, each as one sum.
void plainProducts(const QList<QList<double>>& plots)
{
    const QList<double>& pivot = plots.constFirst();
    for (const QList<double>& plot : plots.mid(1)) {
        for (int shift = -kMaxShift; shift <= kMaxShift; ++shift) {
            double sum = 0.0;
            const int first = std::max(shift, 0);
            const int last = kGridCount + std::min(shift, 0);
            for (int i = first; i < last; ++i) {
                sum += pivot[i] * plot[i - shift];
            }
            benchmark::DoNotOptimize(sum);
        }
    }
}

void setRates(benchmark::State& state)
{
    state.counters["products"] = static_cast<double>(productCount());
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(productCount()));
}

/// The whole alignment: grid, shifts, correlation, sum, the feature on it.
void alignAgainstStreamedProducts(benchmark::State& state)
{
    const QList<Ms1Feature> drifted = driftedFeatures();
    Ms1FeatureAlign align = aligner();
    const auto subject = [&] {
        QList<Ms1Feature> features = drifted;
        QList<Ms1Feature*> pointers = pointersTo(features);
        const Error e = align.align(&pointers);
        const double error = features.constFirst().warpOffset() -
                             features.constLast().warpOffset() - 2.0 * kMostDrift;
        if (e.hasError() || std::abs(error) > 2.0 * kStep) {
            state.SkipWithError("the runs are not aligned");
        }
    };
    streamProducts(); // fills its lists
    runPaired(state, subject, streamProducts);
    setRates(state);
}

/// The shifts alone.
void shiftsAgainst(benchmark::State& state, bool plain)
{
    QList<Ms1Feature> features = driftedFeatures();
    const QList<Ms1Feature*> pointers = pointersTo(features);
    QList<QList<double>> plots;
    double start = 0.0;
    double end = 0.0;
    double step = 0.0;
    if (Ms1FeatureAlign::uniformResample(pointers, &plots, &start, &end, &step).hasError() ||
        plots.constFirst().size() != kGridCount) {
        state.SkipWithError("the grid is not the one that is meant");
        return;
    }
    Ms1FeatureAlign align = aligner();
    const auto subject = [&] {
        QList<int> shifts;
        benchmark::DoNotOptimize(align.localAlign(plots, pointers, start, step, &shifts));
    };
    streamProducts();
    if (plain) {
        runPaired(state, subject, [&] { plainProducts(plots); });
    } else {
        runPaired(state, subject, streamProducts);
    }
    setRates(state);
}

void shiftsAgainstStreamedProducts(benchmark::State& state)
{
    shiftsAgainst(state, false);
}

void shiftsAgainstPlainLoops(benchmark::State& state)
{
    shiftsAgainst(state, true);
}

BENCHMARK(alignAgainstStreamedProducts)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(shiftsAgainstStreamedProducts)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(shiftsAgainstPlainLoops)->Unit(benchmark::kMillisecond)->UseManualTime();

} // namespace

} // namespace zel::bench
