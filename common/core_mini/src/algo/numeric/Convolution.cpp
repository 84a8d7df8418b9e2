#include "common/core_mini/src/algo/numeric/Convolution.h"

#include <algorithm>

namespace zel {

namespace {

/// Results that are computed side by side in one register. Wider ones gain little: what holds it
/// up then are the loads.
using Lanes __attribute__((vector_size(16))) = double;
using UnalignedLanes __attribute__((vector_size(16), aligned(8), may_alias)) = double;
constexpr std::size_t kLanes = 2;

/// So many of them make a block: enough to hide the latency of an addition, few enough to stay in
/// registers.
constexpr std::size_t kRegisters = 8;
constexpr std::size_t kBlockSize = kRegisters * kLanes;

/// Writes the results of a block: result i is the sum of kernel[k] * source[i + last - k], where
/// `last` is the last index of the kernel.
void convolveBlock(const double* source, std::span<const double> kernel, double* results)
{
    Lanes sums[kRegisters] = {};
    const double* values = source + kernel.size() - 1;
    for (const double weight : kernel) {
        for (std::size_t i = 0; i < kRegisters; ++i) {
            sums[i] += weight * *reinterpret_cast<const UnalignedLanes*>(values + i * kLanes);
        }
        --values;
    }
    for (std::size_t i = 0; i < kRegisters; ++i) {
        *reinterpret_cast<UnalignedLanes*>(results + i * kLanes) = sums[i];
    }
}

/// The signal with `before` copies of its first value ahead of it, and filled up with copies of
/// its last value to `paddedSize`.
std::vector<double> padded(std::span<const double> signal,
                           std::size_t before,
                           std::size_t paddedSize)
{
    std::vector<double> result(paddedSize, signal.back());
    std::fill_n(result.begin(), before, signal.front());
    std::copy(signal.begin(), signal.end(), result.begin() + static_cast<std::ptrdiff_t>(before));
    return result;
}

} // namespace

void convolveRepeatingEnds(std::span<const double> signal,
                           std::span<const double> kernel,
                           std::span<double> out)
{
    if (signal.empty()) {
        return;
    }
    // Result i takes the padded values i .. i + kernel.size() - 1, the last of them first. Whole
    // blocks are computed, the last one beyond the end, so that all results come from the same
    // instructions.
    const std::size_t after = kernel.size() / 2;
    const std::size_t before = kernel.size() - 1 - after;
    const std::size_t resultCount = (signal.size() + kBlockSize - 1) / kBlockSize * kBlockSize;
    const std::vector<double> source = padded(signal, before, before + resultCount + after);
    std::vector<double> results(resultCount);
    for (std::size_t start = 0; start < resultCount; start += kBlockSize) {
        convolveBlock(source.data() + start, kernel, results.data() + start);
    }
    std::copy_n(results.begin(), signal.size(), out.begin());
}

bool core::conv(const std::vector<double>& signal,
                const std::vector<double>& kernel,
                int mode,
                std::vector<double>* out)
{
    constexpr int sameLength = 0;
    if (mode != sameLength || kernel.empty()) {
        return false;
    }
    out->resize(signal.size());
    convolveRepeatingEnds(signal, kernel, *out);
    return true;
}

} // namespace zel
