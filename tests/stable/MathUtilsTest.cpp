#include "common/stable/MathUtils.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <limits>

namespace zel {

TEST(MathUtilsTest, TakesTheMiddleOfAnOddAndTheMeanOfTheMiddleTwoOfAnEvenCount)
{
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(MathUtils::median({}), 0.0);
    EXPECT_EQ(MathUtils::median({9.0, 1.0, 5.0}), 5.0);
    EXPECT_EQ(MathUtils::median({7.0, 1.0, 100.0, 3.0}), 5.0);
    EXPECT_EQ(MathUtils::median({nan, 2.0, nan, 4.0, nan}), 3.0);
    EXPECT_EQ(MathUtils::median({1.7e308, 1.7e308}), 1.7e308) << "the sum overflows";
}

TEST(MathUtilsTest, ComparesRelativeToTheGreaterOrToOne)
{
    EXPECT_TRUE(MathUtils::nearlyEqual(0.0, 1e-13));
    EXPECT_FALSE(MathUtils::nearlyEqual(0.0, 2e-12));
    EXPECT_TRUE(MathUtils::nearlyEqual(1e6, 1e6 + 1e-7));
    EXPECT_FALSE(MathUtils::nearlyEqual(1e6, 1e6 + 1e-5));
}

TEST(MathUtilsTest, CutsTowardZeroWithinTheRangeOfInt)
{
    EXPECT_EQ(MathUtils::truncateToInt(2.999), 2);
    EXPECT_EQ(MathUtils::truncateToInt(-2.999), -2);
    EXPECT_EQ(MathUtils::truncateToInt(1e300), std::numeric_limits<int>::max());
    EXPECT_EQ(MathUtils::truncateToInt(-1e300), std::numeric_limits<int>::min());
    EXPECT_EQ(MathUtils::truncateToInt(std::numeric_limits<double>::quiet_NaN()), 0);
}

TEST(MathUtilsTest, FindsTheCrossingOfALineWithAHeight)
{
    const QPointF a(10.0, 8.0);
    const QPointF b(14.0, 2.0);
    EXPECT_EQ(MathUtils::lerp(a, b, MathUtils::linearStep(8.0, 2.0, 5.0)), QPointF(12.0, 5.0));
    EXPECT_EQ(MathUtils::linearStep(a.y(), b.y(), 11.0), -0.5) << "not limited to the way";
    // A way of no length: the start, not NaN.
    EXPECT_EQ(MathUtils::lerp(a, b, MathUtils::linearStep(8.0, 8.0, 8.0)), a);
}

} // namespace zel
