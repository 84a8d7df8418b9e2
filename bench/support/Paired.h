#pragma once

#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace zel::bench {

/// Runs `subject` and `baseline` in turn, once each per iteration of the benchmark, so that both
/// see the same machine. The benchmark's time is that of `subject`; the counter `ratio` is the
/// median over the iterations of time(subject) / time(baseline).
template <typename Subject, typename Baseline>
void runPaired(benchmark::State& state, Subject subject, Baseline baseline)
{
    using Clock = std::chrono::steady_clock;
    const auto secondsOf = [](auto& work) {
        const auto start = Clock::now();
        work();
        return std::chrono::duration<double>(Clock::now() - start).count();
    };
    std::vector<double> ratios;
    for ([[maybe_unused]] auto _ : state) {
        const double subjectSeconds = secondsOf(subject);
        ratios.push_back(subjectSeconds / secondsOf(baseline));
        state.SetIterationTime(subjectSeconds);
    }
    if (!ratios.empty()) {
        const auto middle = ratios.begin() + static_cast<std::ptrdiff_t>(ratios.size() / 2);
        std::nth_element(ratios.begin(), middle, ratios.end());
        state.counters["ratio"] = *middle;
    }
}

} // namespace zel::bench
