#include "common/core_mini/src/algo/numeric/Point2dListUtils.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

namespace zel {

using ::testing::ElementsAre;

TEST(Point2dListUtilsTest, ExtractsAClosedRangeInTheOrderOfTheList)
{
    const QList<QPointF> points{{3.0, 1.0}, {1.0, 2.0}, {2.0, 3.0}, {3.1, 4.0}, {0.9, 5.0}};
    EXPECT_THAT(Point2dListUtils::extractPoints(points, 1.0, 3.0),
                ElementsAre(QPointF(3.0, 1.0), QPointF(1.0, 2.0), QPointF(2.0, 3.0)));
    EXPECT_TRUE(Point2dListUtils::extractPoints(points, 3.0, 1.0).isEmpty());
}

TEST(Point2dListUtilsTest, RoundsYButNotXToSinglePrecision)
{
    QList<QPointF> points{{0.1, 0.1}, {0.2, 16777217.0}};
    Point2dListUtils::roundYToFloat(points);
    EXPECT_THAT(points,
                ElementsAre(QPointF(0.1, static_cast<double>(0.1F)), QPointF(0.2, 16777216.0)));
}

} // namespace zel
