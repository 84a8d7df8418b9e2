#include "tools/sources/PeakPicker.h"

#include "tools/sources/SpectrumUtils.h"

#include <Eigen/Dense>

#include <algorithm>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace zel::msreader {

namespace {

/// The valley beside a peak must not be higher than this share of its height.
constexpr double kMaxValleyRatio = 0.85;
/// A step this many times the shortest one nearby is a gap: the samples in between are zero. Above
/// 2, the step across one sample that is missing, with room for steps that grow along m/z.
constexpr double kGapRatio = 2.5;
/// "Nearby" are the steps of a block of this many and of its two neighbour blocks.
constexpr std::size_t kStepBlockSize = 32;
/// The samples of a peak that are at least this share of the highest one say where its centre is.
constexpr double kCoreShare = 0.4;
/// 1 / exp(-0.5 (0.5 / sigma)^2) at a full width at half height of 2 samples, sigma 0.849.
constexpr double kMaxHeightGain = 1.19;

/// Finds the places where the sampling is interrupted.
class GapFinder
{
public:
    explicit GapFinder(std::span<const QPointF> samples)
        : m_samples(samples)
    {
        const std::size_t stepCount = samples.empty() ? 0 : samples.size() - 1;
        m_shortestOfBlock.assign(stepCount / kStepBlockSize + 1,
                                 std::numeric_limits<double>::infinity());
        for (std::size_t i = 0; i < stepCount; ++i) {
            double& shortest = m_shortestOfBlock[i / kStepBlockSize];
            shortest = std::min(shortest, step(i));
        }
    }

    /// Whether samples are missing between sample `i` and the next one.
    bool isGap(std::size_t i) const
    {
        const std::size_t block = i / kStepBlockSize;
        const std::size_t first = block > 0 ? block - 1 : 0;
        const std::size_t last = std::min(block + 1, m_shortestOfBlock.size() - 1);
        const double shortest =
            *std::min_element(m_shortestOfBlock.begin() + static_cast<std::ptrdiff_t>(first),
                              m_shortestOfBlock.begin() + static_cast<std::ptrdiff_t>(last) + 1);
        return step(i) > kGapRatio * shortest;
    }

private:
    double step(std::size_t i) const { return m_samples[i + 1].x() - m_samples[i].x(); }

    std::span<const QPointF> m_samples;
    std::vector<double> m_shortestOfBlock;
};

/// The top of a peak: the samples [first, last] of equal intensity, and the lowest intensity
/// between it and the top before.
struct Top
{
    std::size_t first;
    std::size_t last;
    double height;
    double valleyBefore;
};

/// Adds a top after the others, unless it or those before it are noise on a flank. `valley` is the
/// lowest sample since the last top of the list, before and after.
void addTop(std::vector<Top>& tops, Top top, double& valley)
{
    while (!tops.empty()) {
        const Top& previous = tops.back();
        if (top.valleyBefore <= kMaxValleyRatio * std::min(previous.height, top.height)) {
            break;
        }
        if (previous.height >= top.height) {
            valley = top.valleyBefore;
            return;
        }
        top.valleyBefore = std::min(top.valleyBefore, previous.valleyBefore);
        tops.pop_back();
    }
    tops.push_back(top);
    valley = top.height;
}

/// Writes the tops of a run of positive samples into `tops`, ascending.
void findTops(std::span<const QPointF> run, std::vector<Top>& tops)
{
    tops.clear();
    double valley = 0.0;
    for (std::size_t first = 0; first < run.size();) {
        const double height = run[first].y();
        std::size_t last = first;
        while (last + 1 < run.size() && run[last + 1].y() == height) {
            ++last;
        }
        const bool rises = first == 0 || run[first - 1].y() < height;
        const bool falls = last + 1 == run.size() || run[last + 1].y() < height;
        if (rises && falls) {
            addTop(tops, {first, last, height, valley}, valley);
        } else {
            valley = std::min(valley, height);
        }
        first = last + 1;
    }
}

/// The vertex of the parabola through the logarithms of three samples of which none is higher than
/// the middle one.
QPointF gaussianThrough(const QPointF& left, const QPointF& middle, const QPointF& right)
{
    const double xLeft = left.x() - middle.x();
    const double xRight = right.x() - middle.x();
    const auto logRatio = [&middle](const QPointF& point) {
        return std::log(std::max(point.y() / middle.y(), std::numeric_limits<double>::min()));
    };
    const double slopeLeft = logRatio(left) / xLeft;
    const double slopeRight = logRatio(right) / xRight;
    const double curvature = (slopeRight - slopeLeft) / (xRight - xLeft);
    const double slope = slopeLeft - curvature * xLeft;
    const double x = -0.5 * slope / curvature;
    const double gain = std::exp(0.5 * slope * x);
    return {middle.x() + x, middle.y() * std::min(gain, kMaxHeightGain)};
}

/// The samples around a top, its neighbours and those beyond them that fall on down to kCoreShare
/// of the top.
std::span<const QPointF> coreOf(std::span<const QPointF> run, const Top& top)
{
    const double lowest = kCoreShare * top.height;
    std::size_t first = top.first - 1;
    while (first > 0 && run[first - 1].y() >= lowest && run[first - 1].y() < run[first].y()) {
        --first;
    }
    std::size_t last = top.last + 1;
    while (last + 1 < run.size() && run[last + 1].y() >= lowest &&
           run[last + 1].y() < run[last].y()) {
        ++last;
    }
    return run.subspan(first, last - first + 1);
}

/// The vertex of the parabola of least squares through the logarithms of the samples, weighted by
/// the squares of their intensities.
/// \param middle  the highest sample
QPointF gaussianFit(std::span<const QPointF> core, const QPointF& middle)
{
    const double scale = core.back().x() - core.front().x();
    Eigen::Matrix3d normal = Eigen::Matrix3d::Zero();
    Eigen::Vector3d right = Eigen::Vector3d::Zero();
    for (const QPointF& sample : core) {
        const double x = (sample.x() - middle.x()) / scale;
        const double y = sample.y() / middle.y();
        const Eigen::Vector3d powers(1.0, x, x * x);
        normal += y * y * powers * powers.transpose();
        right += y * y * std::log(y) * powers;
    }
    const Eigen::Vector3d fit = normal.ldlt().solve(right);
    const double x = -0.5 * fit(1) / fit(2);
    const double gain = std::exp(fit(0) + 0.5 * fit(1) * x);
    return {middle.x() + x * scale, middle.y() * std::min(gain, kMaxHeightGain)};
}

/// The fit, or the parabola through the top and its neighbours where there is no more to go by or
/// the fit is no peak inside the samples.
QPointF vertexOf(std::span<const QPointF> run, const Top& top)
{
    const std::span<const QPointF> core = coreOf(run, top);
    if (core.size() > 3) {
        const QPointF vertex = gaussianFit(core, run[top.first]);
        if (vertex.x() > run[top.first - 1].x() && vertex.x() < run[top.last + 1].x()) {
            return vertex;
        }
    }
    return gaussianThrough(run[top.first - 1], run[top.first], run[top.last + 1]);
}

QPointF weightedMean(const QPointF& top, const QPointF& neighbour)
{
    const double share = neighbour.y() / (top.y() + neighbour.y());
    return {top.x() + share * (neighbour.x() - top.x()), top.y()};
}

QPointF centroidOf(std::span<const QPointF> run, const Top& top)
{
    const bool hasLeft = top.first > 0;
    const bool hasRight = top.last + 1 < run.size();
    const QPointF& first = run[top.first];
    if (top.last - top.first >= 2 || (top.last > top.first && !hasLeft && !hasRight)) {
        return {0.5 * (first.x() + run[top.last].x()), top.height};
    }
    if (top.last > top.first) {
        return hasLeft ? gaussianThrough(run[top.first - 1], first, run[top.last])
                       : gaussianThrough(first, run[top.last], run[top.last + 1]);
    }
    if (hasLeft && hasRight) {
        return vertexOf(run, top);
    }
    if (hasLeft || hasRight) {
        return weightedMean(first, hasLeft ? run[top.first - 1] : run[top.last + 1]);
    }
    return first;
}

bool hasEqualMz(const QList<QPointF>& points)
{
    const auto equal = [](const QPointF& a, const QPointF& b) { return a.x() == b.x(); };
    return std::adjacent_find(points.cbegin(), points.cend(), equal) != points.cend();
}

} // namespace

QList<QPointF> pickPeaks(const QList<QPointF>& profile)
{
    if (hasEqualMz(profile)) {
        QList<QPointF> joined = profile;
        joinEqualMz(joined);
        return pickPeaks(joined);
    }
    const std::span<const QPointF> samples(profile.constData(),
                                           static_cast<std::size_t>(profile.size()));
    const GapFinder gaps(samples);
    QList<QPointF> centroids;
    std::vector<Top> tops;
    for (std::size_t first = 0; first < samples.size();) {
        if (samples[first].y() <= 0.0) {
            ++first;
            continue;
        }
        std::size_t last = first;
        while (last + 1 < samples.size() && samples[last + 1].y() > 0.0 && !gaps.isGap(last)) {
            ++last;
        }
        const std::span<const QPointF> run = samples.subspan(first, last - first + 1);
        findTops(run, tops);
        for (const Top& top : tops) {
            centroids.append(centroidOf(run, top));
        }
        first = last + 1;
    }
    return centroids;
}

} // namespace zel::msreader
