#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QPointF>

namespace zel {

/// Operations on lists of points that ask for no order of x. For lists ascending in x see also
/// common/stable/PointList.h.
class ZEL_EXPORT Point2dListUtils
{
public:
    /// The points with start <= x <= end, in their order. \note O(n).
    static QList<QPointF> extractPoints(const QList<QPointF>& points, double start, double end);

    /// Rounds each y to the nearest value in single precision, in place.
    static void roundYToFloat(QList<QPointF>& points);
};

} // namespace zel
