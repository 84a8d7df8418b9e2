#include "XicIntegratorResult.h"

#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/core_mini/src/algo/ErrorUtils.h"
#include "common/core_mini/src/algo/numeric/Point2dListUtils.h"
#include "common/stable/SharedNumbers.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

/// The part of their union that two peaks may share.
constexpr double kMaxOverlap = 0.2;

/// A straight line through five points takes off noise, but leaves an apex where it is.
constexpr int kSmoothingWindow = 5;
constexpr int kSmoothingOrder = 1;

bool contains(const Interval<double>& limits, double time)
{
    return limits.start <= time && time <= limits.end;
}

bool overlaps(const Interval<double>& a, const Interval<double>& b)
{
    const double shared = std::max(0.0, std::min(a.end, b.end) - std::max(a.start, b.start));
    const double joined = (b.end - b.start) + (a.end - a.start) - shared;
    return (std::abs(joined) > kNegligible && shared / joined > kMaxOverlap) ||
           (b.start >= a.start && a.end >= b.end) || (a.start >= b.start && b.end >= a.end);
}

Result<QList<Interval<double>>> applySplitPoints(const XicIntegratorResult::XicPeak& peak,
                                                 double minPeakWidth)
{
    if (peak.splits.isEmpty()) {
        return QList<Interval<double>>{peak.limits};
    }
    Error e;
    QList<double> boundaries;
    for (const std::pair<double, double>& split : peak.splits) {
        boundaries.append(split.first);
    }
    std::sort(boundaries.begin(), boundaries.end());
    boundaries.prepend(peak.limits.start);
    boundaries.append(peak.limits.end);

    QList<Interval<double>> pieces;
    for (qsizetype i = 1; i < boundaries.size(); ++i) {
        const Interval<double> piece{boundaries[i - 1], boundaries[i]};
        ZEL_RETURN_IF_ERROR(ErrorUtils::belowThreshold<double>(
            piece.start,
            piece.end,
            ErrorUtilsParam::Inclusive,
            Error(kBadParameterError, "Start is greater than end")));
        if (!XicIntegratorResult::checkIfPeakOverlaps(piece, pieces) &&
            !(piece.end - piece.start < minPeakWidth)) {
            pieces.append(piece);
        }
    }
    return pieces;
}

} // namespace

XicIntegratorResult::XicIntegratorResult(double retentionTime,
                                         const QList<QPointF>& xic,
                                         double minPeakWidth)
    : m_retentionTime(retentionTime)
    , m_xic(xic)
    , m_minPeakWidth(minPeakWidth)
{}

void XicIntegratorResult::addXicPeak(const Interval<double>& limits,
                                     const QList<std::pair<double, double>>& splits)
{
    QList<Interval<double>> earlier;
    for (const XicPeak& peak : std::as_const(m_peaks)) {
        earlier.append(peak.limits);
    }
    if (checkIfPeakOverlaps(limits, earlier) || limits.end - limits.start < m_minPeakWidth) {
        return;
    }
    m_peaks.append({limits, splits});
    m_containsRetentionTime = m_containsRetentionTime || contains(limits, m_retentionTime);
}

XicIntegratorResult::XicPeak XicIntegratorResult::peaksLimitsAndSplitsContainingRetentionTime()
    const
{
    for (const XicPeak& peak : m_peaks) {
        if (contains(peak.limits, m_retentionTime)) {
            return peak;
        }
    }
    return {};
}

Result<QList<Interval<double>>> XicIntegratorResult::allPeakLimitsSplitsApplied() const
{
    QList<Interval<double>> all;
    for (const XicPeak& peak : m_peaks) {
        ZEL_ASSIGN_OR_RETURN(const QList<Interval<double>> pieces,
                             applySplitPoints(peak, m_minPeakWidth));
        all.append(pieces);
    }
    return all;
}

Result<QList<Interval<double>>> XicIntegratorResult::peakLimitsWithRetentionTimeSplitsApplied()
    const
{
    if (!m_containsRetentionTime) {
        return QList<Interval<double>>();
    }
    ZEL_ASSIGN_OR_RETURN(
        QList<Interval<double>> pieces,
        applySplitPoints(peaksLimitsAndSplitsContainingRetentionTime(), m_minPeakWidth));
    return pieces;
}

Result<Interval<double>> XicIntegratorResult::peakLimitContainingRetentionTime() const
{
    ZEL_ASSIGN_OR_RETURN(const QList<Interval<double>> pieces,
                         peakLimitsWithRetentionTimeSplitsApplied());
    for (const Interval<double>& piece : pieces) {
        if (contains(piece, m_retentionTime)) {
            return piece;
        }
    }
    return Interval<double>();
}

Result<QPointF> XicIntegratorResult::apexPointByPeakLimits(const Interval<double>& limits) const
{
    Error e;
    const QList<QPointF> points = Point2dListUtils::extractPoints(m_xic, limits.start, limits.end);
    if (points.isEmpty()) {
        return QPointF(0.0, 0.0);
    }
    Eigen::VectorXd heights(points.size());
    for (qsizetype i = 0; i < points.size(); ++i) {
        heights[i] = points[i].y();
    }
    if (points.size() > kSmoothingWindow) {
        Eigen::VectorXd kernel;
        ZEL_RETURN_IF_ERROR(EigenUtilities::buildSavitzkyGolayKernel(
            kSmoothingWindow, kSmoothingOrder, 0, 1, &kernel));
        ZEL_RETURN_IF_ERROR(EigenUtilities::savitzkyGolaySmooth(kernel, &heights));
    }
    const double greatest = heights.maxCoeff();
    const int apex = EigenUtilities::returnIndexNearestToCutoffF(heights, greatest, 1).constFirst();
    return QPointF(points[apex].x(), greatest);
}

bool XicIntegratorResult::checkIfPeakOverlaps(const Interval<double>& candidate,
                                              const QList<Interval<double>>& others)
{
    return std::any_of(others.begin(), others.end(), [&candidate](const Interval<double>& other) {
        return overlaps(candidate, other);
    });
}

} // namespace zel
