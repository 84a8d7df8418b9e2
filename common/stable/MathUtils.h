#pragma once

#include "common/stable/Export.h"

#include <QPointF>

#include <vector>

namespace zel {

/// Scalar helpers that several subsystems share.
class ZEL_EXPORT MathUtils
{
public:
    /// True when |a - b| is at most 1e-12 times the greatest of 1, |a| and |b|. False when either
    /// is NaN.
    static bool nearlyEqual(double a, double b);

    /// `value` held inside [low, high]; mind the order of the arguments. With low above high the
    /// result is `low` for a value below it, else `high`.
    static double clamp(double low, double high, double value);

    /// True when `value` lies between `a` and `b`, which may come in either order; both ends
    /// belong.
    static bool between(double a, double b, double value);

    /// The position of `value` on the way from `a` (0) to `b` (1), not limited to that range; 0
    /// when the way has no length.
    static double linearStep(double a, double b, double value);

    /// The point at this fraction of the straight way from `a` (0) to `b` (1).
    static QPointF lerp(const QPointF& a, const QPointF& b, double fraction);

    /// The whole number next to `value` on the way to zero. One beyond the range of `int` becomes
    /// the end of that range; NaN becomes 0.
    static int truncateToInt(double value);

    /// The middle one of the values, or the mean of the two middle ones; 0 when there is none. NaN
    /// does not count. \note O(n).
    static double median(std::vector<double> values);
};

} // namespace zel
