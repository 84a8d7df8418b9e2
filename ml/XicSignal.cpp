#include "common/core_mini/src/algo/numeric/Convolution.h"
#include "common/stable/MathUtils.h"
#include "ml/XicSignal_p.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

/// Standard deviation of normal noise over the median of its magnitude.
constexpr double kNoisePerMedianDeviation = 1.4826;
/// Peaks with at most this many samples above half height are smoothed by three taps only.
constexpr std::ptrdiff_t kNarrowPeakSamples = 5;

/// What lies further from the middle of a Gaussian, in standard deviations, is left out.
constexpr double kKernelReach = 3.0;

std::vector<double> gaussianKernel(double sigma)
{
    const int reach = static_cast<int>(std::ceil(kKernelReach * sigma));
    std::vector<double> weights;
    double sum = 0.0;
    for (int i = -reach; i <= reach; ++i) {
        weights.push_back(std::exp(-0.5 * i * i / (sigma * sigma)));
        sum += weights.back();
    }
    for (double& weight : weights) {
        weight /= sum;
    }
    return weights;
}

std::vector<double> convolved(std::span<const double> heights, const std::vector<double>& kernel)
{
    std::vector<double> out(heights.size());
    convolveRepeatingEnds(heights, kernel, out);
    return out;
}

bool isUsable(const QList<QPointF>& xic)
{
    const auto isFinite = [](const QPointF& point) {
        return std::isfinite(point.x()) && std::isfinite(point.y());
    };
    return std::ranges::all_of(xic, isFinite) && std::ranges::is_sorted(xic, {}, &QPointF::x);
}

/// Replaces short runs of samples without signal between two with signal by the line between these.
void bridgeGaps(std::vector<double>& heights, int maxGapPoints)
{
    const auto hasSignal = [](double height) { return height > 0.0; };
    auto left = std::find_if(heights.begin(), heights.end(), hasSignal);
    while (left != heights.end()) {
        const auto right = std::find_if(left + 1, heights.end(), hasSignal);
        const auto distance = right - left;
        if (right != heights.end() && distance - 1 <= maxGapPoints) {
            for (std::ptrdiff_t i = 1; i < distance; ++i) {
                const double fraction = static_cast<double>(i) / static_cast<double>(distance);
                left[i] = *left + fraction * (*right - *left);
            }
        }
        left = right;
    }
}

/// How many samples around the tallest one are above half of its height.
std::ptrdiff_t samplesAboveHalfHeight(std::span<const double> heights)
{
    const auto apex = std::max_element(heights.begin(), heights.end());
    const auto isBelow = [half = *apex / 2](double height) { return height <= half; };
    const auto end = std::find_if(apex, heights.end(), isBelow);
    const auto before = std::find_if(std::make_reverse_iterator(apex), heights.rend(), isBelow);
    return end - before.base();
}

/// The fourth differences of a trace with the given ends repeated: of a peak that is smooth across
/// five samples they keep next to nothing, of white noise sqrt(70) times its deviation.
double fourthDifference(std::span<const double> heights, std::size_t i)
{
    const auto at = [&heights, i](std::ptrdiff_t offset) {
        const auto last = static_cast<std::ptrdiff_t>(heights.size()) - 1;
        const auto index =
            std::clamp<std::ptrdiff_t>(static_cast<std::ptrdiff_t>(i) + offset, 0, last);
        return heights[static_cast<std::size_t>(index)];
    };
    return at(-2) - 4.0 * at(-1) + 6.0 * at(0) - 4.0 * at(1) + at(2);
}

double noiseOf(std::span<const double> heights)
{
    const double gain = std::sqrt(70.0);
    std::vector<double> differences;
    double smallest = 0.0;
    for (std::size_t i = 0; i < heights.size(); ++i) {
        if (heights[i] > 0.0) {
            differences.push_back(std::abs(fourthDifference(heights, i)));
            smallest = smallest == 0.0 ? heights[i] : std::min(smallest, heights[i]);
        }
    }
    return std::max(kNoisePerMedianDeviation * MathUtils::median(std::move(differences)) / gain,
                    smallest / 2);
}

} // namespace

bool isSize(double value)
{
    return std::isfinite(value) && value >= 0.0;
}

std::ptrdiff_t XicSignal::positiveCount() const
{
    return std::count_if(raw.begin(), raw.end(), [](double height) { return height > 0.0; });
}

Result<XicSignal> xicSignal(const QList<QPointF>& xic, int maxGapPoints)
{
    if (!isUsable(xic)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         "The points of a chromatogram must be finite and ascend in time");
    }
    XicSignal signal;
    if (xic.isEmpty()) {
        return signal;
    }
    signal.raw.reserve(static_cast<std::size_t>(xic.size()));
    for (const QPointF& point : xic) {
        signal.raw.push_back(point.y());
    }
    signal.noise = noiseOf(signal.raw);
    bridgeGaps(signal.raw, maxGapPoints);
    const bool isNarrow = samplesAboveHalfHeight(signal.raw) <= kNarrowPeakSamples;
    signal.smoothed =
        isNarrow ? convolved(signal.raw, {0.25, 0.5, 0.25}) : gaussianSmoothed(signal.raw, 1.0);
    return signal;
}

std::vector<double> gaussianSmoothed(std::span<const double> heights, double sigma)
{
    return convolved(heights, gaussianKernel(sigma));
}

std::vector<double> snipBaseline(std::span<const double> heights, std::size_t halfWindow)
{
    std::vector<double> baseline(heights.begin(), heights.end());
    std::vector<double> clipped = baseline;
    const std::size_t size = baseline.size();
    for (std::size_t distance = std::min(halfWindow, size); distance > 0; --distance) {
        for (std::size_t i = 0; i < size; ++i) {
            // A neighbour beyond an end is the end, so that a peak cut off there is clipped too.
            const double left = baseline[i < distance ? 0 : i - distance];
            const double right = baseline[std::min(i + distance, size - 1)];
            clipped[i] = std::min(baseline[i], (left + right) / 2);
        }
        baseline.swap(clipped);
    }
    return baseline;
}

} // namespace zel
