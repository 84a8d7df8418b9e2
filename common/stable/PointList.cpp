#include "common/stable/PointList.h"

#include "common/stable/PlotBase.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zel {

namespace {

/// y for comparisons: NaN lies below everything, which makes the order total.
double rankedY(const QPointF& point)
{
    return std::isnan(point.y()) ? -std::numeric_limits<double>::infinity() : point.y();
}

bool higher(const QPointF& a, const QPointF& b)
{
    return rankedY(a) > rankedY(b);
}

} // namespace

void getPointsInBetween(
    const QList<QPointF>& in, double start, double end, QList<QPointF>& out, bool inclusive)
{
    const auto first = inclusive ? std::ranges::lower_bound(in, start, {}, &QPointF::x)
                                 : std::ranges::upper_bound(in, start, {}, &QPointF::x);
    const auto last = inclusive ? std::ranges::upper_bound(in, end, {}, &QPointF::x)
                                : std::ranges::lower_bound(in, end, {}, &QPointF::x);
    out = first < last ? QList<QPointF>(first, last) : QList<QPointF>();
}

double getYMaxBetween(const QList<QPointF>& in, double start, double end, bool interpolateAtLimits)
{
    const auto first = std::ranges::lower_bound(in, start, {}, &QPointF::x);
    const auto last = std::ranges::upper_bound(first, in.cend(), end, {}, &QPointF::x);
    const auto highest = std::ranges::max_element(first, last, {}, &QPointF::y);
    double yMax = highest == last ? 0.0 : highest->y();
    if (interpolateAtLimits && start <= end) {
        const PlotBase plot(in);
        yMax = std::max({yMax, plot.evaluate(start, 1, 0), plot.evaluate(end, 1, 0)});
    }
    return yMax;
}

int removeLowIntensePoints(QList<QPointF>& points, int maxCount, bool keepOrder)
{
    const qsizetype keptCount = std::max(maxCount, 0);
    const qsizetype removedCount = points.size() - keptCount;
    if (!keepOrder) {
        std::stable_sort(points.begin(), points.end(), higher);
    }
    if (removedCount <= 0) {
        return 0;
    }
    if (!keepOrder || keptCount == 0) {
        points.resize(keptCount);
        return static_cast<int>(removedCount);
    }

    // The lowest y that is kept, and how many of the points that have it.
    std::vector<double> heights(static_cast<std::size_t>(points.size()));
    std::transform(points.cbegin(), points.cend(), heights.begin(), rankedY);
    const auto lowestKept = heights.begin() + (keptCount - 1);
    std::nth_element(heights.begin(), lowestKept, heights.end(), std::greater<>());
    const double threshold = *lowestKept;
    auto tiesLeft = keptCount - std::count_if(heights.begin(), lowestKept, [threshold](double y) {
                        return y > threshold;
                    });

    const auto isLow = [threshold, &tiesLeft](const QPointF& point) {
        const double y = rankedY(point);
        return y < threshold || (y == threshold && tiesLeft-- <= 0);
    };
    // A plain loop: std::remove_if may copy its predicate, which counts.
    auto kept = points.begin();
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (!isLow(*point)) {
            *kept++ = *point;
        }
    }
    points.erase(kept, points.end());
    return static_cast<int>(removedCount);
}

Error gaussianSmooth(PlotBase& plot, double sigma)
{
    if (!(sigma > 0.0) || !std::isfinite(sigma)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("Sigma must be positive, but is %1").arg(sigma));
    }
    constexpr double cutOffSigmas = 4.0;
    const QList<QPointF> raw = plot.getPointList();
    QList<QPointF>& smooth = plot.getPointList();
    auto windowStart = raw.cbegin();
    for (qsizetype i = 0; i < raw.size(); ++i) {
        const double x = raw[i].x();
        while (windowStart->x() < x - cutOffSigmas * sigma) {
            ++windowStart;
        }
        double weightedSum = 0.0;
        double weightSum = 0.0;
        for (auto point = windowStart;
             point != raw.cend() && point->x() <= x + cutOffSigmas * sigma;
             ++point) {
            const double distance = (point->x() - x) / sigma;
            const double weight = std::exp(-0.5 * distance * distance);
            weightedSum += weight * point->y();
            weightSum += weight;
        }
        smooth[i].setY(weightedSum / weightSum);
    }
    return kNoError;
}

} // namespace zel
