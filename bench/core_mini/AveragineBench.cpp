// How many isotope patterns of averagine a second one core makes, for masses of 500 to 6,000 Da.

#include "common/core_mini/src/algo/AveragineIsotopeModel.h"

#include <benchmark/benchmark.h>

#include <random>
#include <vector>

namespace zel::bench {

namespace {

void averaginePatterns(benchmark::State& state)
{
    std::mt19937_64 random(5);
    std::uniform_real_distribution<double> mass(500.0, 6000.0);
    std::vector<double> masses(10'000);
    for (double& value : masses) {
        value = mass(random);
    }
    const AveragineIsotopeModel& model = AveragineIsotopeModel::senko();
    QList<double> ratios;
    for ([[maybe_unused]] auto _ : state) {
        for (const double value : masses) {
            benchmark::DoNotOptimize(model.peakIntensityRatiosFromMass(value, &ratios).value());
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(masses.size()));
}

BENCHMARK(averaginePatterns)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
