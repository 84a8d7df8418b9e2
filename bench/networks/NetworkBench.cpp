// How many slices a second one core determines the charge and the monoisotopic offset of.

#include "common/core_mini/src/algo/networks/ChargeDeterminatorNN.h"
#include "common/core_mini/src/algo/networks/MonoisotopeDeterminatorNN.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "tests/support/IsotopeClusters.h"

#include <benchmark/benchmark.h>

namespace zel::bench {

namespace {

constexpr int kCharge = 3;
constexpr double kMassDa = 2400.0;

void chargeOfSlice(benchmark::State& state)
{
    ChargeDeterminatorNN determinator;
    const QList<QPointF> peaks = test::isotopePeaks(kMassDa, kCharge, 1000.0);
    const auto slice = test::sliceOf(peaks, peaks[0].x());
    if (determinator.init(SettableFeatureFinderParameters().networkFilePath).hasError() ||
        determinator.determineCharge(slice) != kCharge) {
        state.SkipWithError("wrong charge");
        return;
    }
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(determinator.determineCharge(slice));
    }
    state.SetItemsProcessed(state.iterations());
}

void offsetOfSlice(benchmark::State& state)
{
    MonoisotopeDeterminatorNN determinator;
    const QList<QPointF> peaks = test::isotopePeaks(kMassDa, kCharge, 1000.0);
    const auto slice = test::sliceOf(peaks, peaks[1].x());
    if (determinator.init(SettableFeatureFinderParameters().networkFilePath).hasError() ||
        determinator.determineMonoisotopeOffset(slice, peaks[1].x(), kCharge) != 1) {
        state.SkipWithError("wrong offset");
        return;
    }
    for ([[maybe_unused]] auto _ : state) {
        benchmark::DoNotOptimize(
            determinator.determineMonoisotopeOffset(slice, peaks[1].x(), kCharge));
    }
    state.SetItemsProcessed(state.iterations());
}

BENCHMARK(chargeOfSlice);
BENCHMARK(offsetOfSlice);

} // namespace

} // namespace zel::bench
