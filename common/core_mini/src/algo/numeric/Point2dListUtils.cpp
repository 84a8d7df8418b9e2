#include "common/core_mini/src/algo/numeric/Point2dListUtils.h"

#include <algorithm>
#include <iterator>

namespace zel {

QList<QPointF> Point2dListUtils::extractPoints(const QList<QPointF>& points,
                                               double start,
                                               double end)
{
    QList<QPointF> inside;
    std::copy_if(
        points.cbegin(),
        points.cend(),
        std::back_inserter(inside),
        [start, end](const QPointF& point) { return start <= point.x() && point.x() <= end; });
    return inside;
}

void Point2dListUtils::roundYToFloat(QList<QPointF>& points)
{
    for (QPointF& point : points) {
        point.setY(static_cast<double>(static_cast<float>(point.y())));
    }
}

} // namespace zel
