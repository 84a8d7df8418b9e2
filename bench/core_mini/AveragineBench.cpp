// How many isotope patterns of averagine a second one core makes, for masses of 500 to 6,000 Da,
// and how exact they are.

#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <numeric>
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

/// The pattern of the averagine formula by exp(n log p) of power series in long double, which
/// shares no step with the recurrence of the model.
std::vector<long double> exactPattern(double mass, std::size_t peakCount)
{
    struct ElementTerm
    {
        long double countPerUnit;
        std::vector<long double> abundances; // by mass units above the lightest
    };
    static const ElementTerm terms[] = {
        {4.9384L, {0.9893L, 0.0107L}},
        {7.7583L, {0.999885L, 0.000115L}},
        {1.3577L, {0.99636L, 0.00364L}},
        {1.4773L, {0.99757L, 0.00038L, 0.00205L}},
        {0.0417L, {0.9499L, 0.0075L, 0.0425L, 0.0L, 0.0001L}},
    };
    constexpr long double unitMass = 4.9384L * 12.0L + 7.7583L * 1.00782503223L +
                                     1.3577L * 14.00307400443L + 1.4773L * 15.99491461957L +
                                     0.0417L * 31.9720711744L;
    std::vector<long double> logarithm(peakCount, 0.0L);
    for (const ElementTerm& term : terms) {
        // k p_0 l_k = k p_k - sum_{i=1..k-1} i l_i p_{k-i}, from p' = p (log p)'
        const auto p = [&term](std::size_t k) {
            return k < term.abundances.size() ? term.abundances[k] : 0.0L;
        };
        std::vector<long double> l(peakCount, std::log(p(0)));
        for (std::size_t k = 1; k < peakCount; ++k) {
            long double sum = static_cast<long double>(k) * p(k);
            for (std::size_t i = 1; i < k; ++i) {
                sum -= static_cast<long double>(i) * l[i] * p(k - i);
            }
            l[k] = sum / (static_cast<long double>(k) * p(0));
        }
        for (std::size_t k = 0; k < peakCount; ++k) {
            logarithm[k] += mass / unitMass * term.countPerUnit * l[k];
        }
    }
    std::vector<long double> pattern(peakCount, std::exp(logarithm[0]));
    for (std::size_t k = 1; k < peakCount; ++k) {
        long double sum = 0.0L;
        for (std::size_t i = 1; i <= k; ++i) {
            sum += static_cast<long double>(i) * logarithm[i] * pattern[k - i];
        }
        pattern[k] = sum / static_cast<long double>(k);
    }
    return pattern;
}

/// The counter `largestError` is the largest difference of a share of the model from the exact one,
/// both scaled to the same peaks; `largestCut` the largest part of a pattern beyond its cut.
void averagineError(benchmark::State& state)
{
    const AveragineIsotopeModel& model = AveragineIsotopeModel::senko();
    double largestError = 0.0;
    double largestCut = 0.0;
    QList<double> ratios;
    for ([[maybe_unused]] auto _ : state) {
        for (double mass = 200.0; mass <= 150'000.0; mass *= 1.05) {
            benchmark::DoNotOptimize(model.peakIntensityRatiosFromMass(mass, &ratios).value());
            const auto exact = exactPattern(mass, static_cast<std::size_t>(ratios.size()));
            const long double covered = std::accumulate(exact.begin(), exact.end(), 0.0L);
            largestCut = std::max(largestCut, static_cast<double>(1.0L - covered));
            for (std::size_t k = 0; k < exact.size(); ++k) {
                const long double error =
                    std::abs(ratios[static_cast<qsizetype>(k)] - exact[k] / covered);
                largestError = std::max(largestError, static_cast<double>(error));
            }
        }
    }
    state.counters["largestError"] = largestError;
    state.counters["largestCut"] = largestCut;
}

BENCHMARK(averaginePatterns)->Unit(benchmark::kMillisecond);
BENCHMARK(averagineError)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
