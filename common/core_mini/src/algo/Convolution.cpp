#include "common/core_mini/src/algo/Convolution.h"

#include <Eigen/Core>

#include <algorithm>

namespace zel {

namespace {

/// How many results are summed side by side: enough to hide the latency of an addition, few enough
/// to stay in registers.
constexpr std::size_t kBlockSize = 16;
using Block = Eigen::Array<double, kBlockSize, 1>;

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
    const std::vector<double> source =
        padded(signal, before, before + signal.size() + after + kBlockSize);
    for (std::size_t start = 0; start < signal.size(); start += kBlockSize) {
        Block sums = Block::Zero();
        for (std::size_t k = 0; k < kernel.size(); ++k) {
            sums +=
                kernel[k] * Eigen::Map<const Block>(source.data() + start + kernel.size() - 1 - k);
        }
        std::copy_n(sums.data(),
                    std::min(kBlockSize, signal.size() - start),
                    out.begin() + static_cast<std::ptrdiff_t>(start));
    }
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
