#pragma once

#include "common/stable/MathUtils.h"

#include <QList>
#include <QPointF>

#include <algorithm>

namespace zel {

/// The points of a plot between two places, found beforehand, and what is measured from place to
/// place; see PlotBase for the meaning of each. Finding the points is left to the caller: a single
/// look-up searches, a walk along a plot goes on from where it was.
struct PlotStretch
{
    using PointIterator = QList<QPointF>::const_iterator;

    /// y at `x` of the line through two points with a.x <= x <= b.x; of two points at one x the
    /// second counts.
    static double interpolate(const QPointF& a, const QPointF& b, double x)
    {
        return a.x() == b.x() ? b.y() : a.y() + (b.y() - a.y()) * ((x - a.x()) / (b.x() - a.x()));
    }

    /// The height at `x`, which is no NaN, of a plot that is not empty.
    /// \param above  the first point with x above `x`
    static double heightAt(
        const QList<QPointF>& points, double x, PointIterator above, int order, int beyond)
    {
        const QPointF& firstPoint = points.constFirst();
        const QPointF& lastPoint = points.constLast();
        if (x < firstPoint.x()) {
            return beyond == 1 || MathUtils::nearlyEqual(x, firstPoint.x()) ? firstPoint.y() : 0.0;
        }
        if (x > lastPoint.x()) {
            return beyond == 1 || MathUtils::nearlyEqual(x, lastPoint.x()) ? lastPoint.y() : 0.0;
        }
        const auto left = above - 1;
        return order == 0 || above == points.cend() ? left->y() : interpolate(*left, *above, x);
    }

    /// The area between the two places; 0 unless `start` is below `end`.
    double area(const QList<QPointF>& points, bool cutAtLimits) const
    {
        double sum = 0.0;
        if (!(start < end)) {
            return sum;
        }
        const auto addSegment = [&sum](const QPointF& a, const QPointF& b) {
            sum += (b.x() - a.x()) * (a.y() + b.y()) * 0.5;
        };
        const auto cut = [](const QPointF& a, const QPointF& b, double x) {
            return QPointF(x, interpolate(a, b, x));
        };
        const bool hasPointBefore = first != points.cbegin();
        const bool hasPointBehind = last != points.cend();
        if (first == last) { // it lies between two neighbouring points, or outside the plot
            if (cutAtLimits && hasPointBefore && hasPointBehind) {
                addSegment(cut(*(first - 1), *first, start), cut(*(first - 1), *first, end));
            }
            return sum;
        }
        if (cutAtLimits && hasPointBefore) {
            addSegment(cut(*(first - 1), *first, start), *first);
        }
        for (auto point = first; point + 1 != last; ++point) {
            addSegment(*point, *(point + 1));
        }
        if (cutAtLimits && hasPointBehind) {
            addSegment(*(last - 1), cut(*(last - 1), *last, end));
        }
        return sum;
    }

    double start = 0.0;
    double end = 0.0;
    PointIterator first; ///< the first point with x not below `start`
    PointIterator last;  ///< after the last point with x not above `end`, but not ahead of `first`
};

/// Walks along a plot from left to right in stretches, each of which starts and ends not ahead of
/// the one before. Borrows the points, which must not be empty. \note Amortised O(1) a point and
/// stretch.
class PlotWalk
{
public:
    explicit PlotWalk(const QList<QPointF>& points)
        : m_points(points)
        , m_stretch{0.0, 0.0, points.cbegin(), points.cbegin()}
        , m_aboveStart(points.cbegin())
        , m_aboveEnd(points.cbegin())
    {}

    /// Goes on to the stretch from `start` to `end`, no NaN.
    void goTo(double start, double end)
    {
        m_stretch.start = start;
        m_stretch.end = end;
        const auto plotEnd = m_points.cend();
        while (m_stretch.first != plotEnd && m_stretch.first->x() < start) {
            ++m_stretch.first;
        }
        m_aboveStart = std::max(m_aboveStart, m_stretch.first);
        while (m_aboveStart != plotEnd && !(start < m_aboveStart->x())) {
            ++m_aboveStart;
        }
        while (m_aboveEnd != plotEnd && !(end < m_aboveEnd->x())) {
            ++m_aboveEnd;
        }
        m_stretch.last = std::max(m_stretch.first, m_aboveEnd);
    }

    const PlotStretch& stretch() const { return m_stretch; }
    double area() const { return m_stretch.area(m_points, true); }
    double heightAtStart() const
    {
        return PlotStretch::heightAt(m_points, m_stretch.start, m_aboveStart, 1, 0);
    }
    double heightAtEnd() const
    {
        return PlotStretch::heightAt(m_points, m_stretch.end, m_aboveEnd, 1, 0);
    }

private:
    const QList<QPointF>& m_points;
    PlotStretch m_stretch;
    PlotStretch::PointIterator m_aboveStart;
    PlotStretch::PointIterator m_aboveEnd;
};

} // namespace zel
