#include "ms_feature/segmentation/MsFeatureFinderStage1.h"

#include "common/stable/MathUtils.h"
#include "common/stable/PlotBase.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

constexpr double kHalf = 0.5;

/// Where the curve reaches the height `y`, walking from `startIndex` in the direction `step` (-1 or
/// +1): on the chord from the start point to the first point at which `y` lies between the two; at
/// the end of the list when it never does.
Result<QPointF> constantYIntersection(const QList<QPointF>& points,
                                      double y,
                                      int startIndex,
                                      int step)
{
    if (startIndex < 0 || startIndex >= points.size()) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("Invalid index for plot[%1] given: %2")
                             .arg(points.size())
                             .arg(startIndex));
    }
    const QPointF& start = points[startIndex];
    const qsizetype endIndex = step < 0 ? 0 : points.size() - 1;
    for (qsizetype i = startIndex; i >= 0 && i < points.size(); i += step) {
        const QPointF& point = points[i];
        if (i == endIndex) {
            return QPointF(point.x(), y);
        }
        if (MathUtils::between(start.y(), point.y(), y)) {
            return MathUtils::lerp(start, point, MathUtils::linearStep(start.y(), point.y(), y));
        }
    }
    ZEL_RETURN_ERROR(kError, "Internal error: This line should be unreachable");
}

/// True when the point is strictly higher than both neighbours; beyond the ends stands 0.
bool isLocalMaximum(const QList<QPointF>& points, qsizetype i)
{
    const double before = i == 0 ? 0.0 : points[i - 1].y();
    const double after = i == points.size() - 1 ? 0.0 : points[i + 1].y();
    return points[i].y() > before && points[i].y() > after;
}

/// The peak whose apex is the point at `apexIndex`.
Result<MsFeatureFinderStage1::Peak> peakAt(const QList<QPointF>& points,
                                           int apexIndex,
                                           double widthFactor)
{
    const QPointF& apex = points[apexIndex];
    const double halfHeight = apex.y() * kHalf;
    ZEL_ASSIGN_OR_RETURN(const QPointF left,
                         constantYIntersection(points, halfHeight, apexIndex, -1));
    ZEL_ASSIGN_OR_RETURN(const QPointF right,
                         constantYIntersection(points, halfHeight, apexIndex, 1));
    const double fwhm = std::abs(right.x() - left.x());
    const double margin = fwhm * widthFactor;
    const auto cut = [&points](double time) {
        return MathUtils::clamp(points.constFirst().x(), points.constLast().x(), time);
    };
    return MsFeatureFinderStage1::Peak{
        {cut(apex.x() - margin), cut(apex.x() + margin)}, apex, fwhm};
}

} // namespace

Error MsFeatureFinderStage1::findHalfMaxRange(const PlotBase& plot,
                                              const QPointF& apex,
                                              double* left,
                                              double* right)
{
    *left = apex.x();
    *right = apex.x();
    if (apex.y() <= 0.0) {
        return kNoError;
    }
    const double halfHeight = apex.y() * kHalf;
    const auto [leftCrossing, rightCrossing] =
        plot.constantYIntersectionsAroundX(halfHeight, apex.x());
    *left = leftCrossing ? leftCrossing->x() : apex.x();
    *right = rightCrossing ? rightCrossing->x() : apex.x();
    return kNoError;
}

Error MsFeatureFinderStage1::findHalfMaxRange(const PlotBase& plot,
                                              const QPointF& apex,
                                              double start,
                                              double end,
                                              double* left,
                                              double* right)
{
    Error e;
    ZEL_RETURN_IF_ERROR(findHalfMaxRange(plot, apex, left, right));
    *left = std::max(start, *left);
    *right = std::min(end, *right);
    return e;
}

Error MsFeatureFinderStage1::findApexAndFWHM(const PlotBase& plot,
                                             QPointF* apex,
                                             double* left,
                                             double* right)
{
    Error e;
    *apex = plot.getMaxPoint();
    ZEL_RETURN_IF_ERROR(findHalfMaxRange(plot, *apex, left, right));
    return e;
}

Error MsFeatureFinderStage1::getAreaUnderCurve(const PlotBase& plot,
                                               double start,
                                               double end,
                                               double* auc)
{
    if (start > end) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("The area from %1 to %2 min was asked for").arg(start).arg(end));
    }
    *auc = plot.computeAreaSecondsUnit(start, end, ComputeAreaTrapezoid);
    return kNoError;
}

Result<MsFeatureFinderStage1::Peak> MsFeatureFinderStage1::findMajorPeak(const PlotBase& plot,
                                                                         double widthFactor)
{
    const QList<QPointF>& points = plot.getPointList();
    if (points.size() < 2) {
        ZEL_RETURN_ERROR(kBadParameterError, "Need at least 2 points to find a peak.");
    }
    Peak best;
    best.interval = {points.constFirst().x(), points.constLast().x()};
    for (int i = 0; i < plot.getPointListSize(); ++i) {
        const QPointF& point = points[i];
        if (!isLocalMaximum(points, i)) {
            continue;
        }
        const bool isInBestWindow =
            best.interval.start <= point.x() && point.x() <= best.interval.end;
        if (isInBestWindow && point.y() < best.apex.y()) {
            continue;
        }
        ZEL_ASSIGN_OR_RETURN(const Peak candidate, peakAt(points, i, widthFactor));
        if (candidate.apex.y() * candidate.fwhm > best.apex.y() * best.fwhm) {
            best = candidate;
        }
    }
    return best;
}

} // namespace zel
