#include "common/core_mini/src/algo/ErrorUtils.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

constexpr auto kExclusive = ErrorUtilsParam::Exclusive;
constexpr auto kInclusive = ErrorUtilsParam::Inclusive;
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
const Error kFailure(kBadParameterError, "wanted");

template <typename T>
Error above(T value, T bound, ErrorUtilsParam param)
{
    return ErrorUtils::aboveThreshold(value, bound, param, kFailure);
}

template <typename T>
Error below(T value, T bound, ErrorUtilsParam param)
{
    return ErrorUtils::belowThreshold(value, bound, param, kFailure);
}

} // namespace

TEST(ErrorUtilsTest, PassesWithoutAFrameOrFailsWithItsOwnOnTop)
{
    // Above 1e3 the values that count as nearly equal to a value reach 1e-12 of it.
    constexpr double justBelow = 1000.0 * (1.0 - 0.5e-12);
    const Error passes[] = {ErrorUtils::emptyCheckReturn(QList<int>{1}, kFailure),
                            ErrorUtils::equal(3, 3, kFailure),
                            ErrorUtils::notEqual(3, 4, kFailure),
                            above(3, 3, kInclusive),
                            // Only the upper bound of doubles knows nearly equal.
                            above(1000.0, justBelow, kExclusive),
                            below(3, 3, kInclusive),
                            below(2, 3, kExclusive),
                            below(1000.0 * (1.0 - 2e-12), 1000.0, kExclusive),
                            below(justBelow, 1000.0, kInclusive)};
    const Error failures[] = {ErrorUtils::emptyCheckReturn(QList<int>(), kFailure),
                              ErrorUtils::equal(3, 4, kFailure),
                              ErrorUtils::notEqual(3, 3, kFailure),
                              above(3, 3, kExclusive),
                              above(2, 3, kInclusive),
                              above(kNaN, 1.0, kInclusive),
                              below(3, 3, kExclusive),
                              below(4, 3, kInclusive),
                              below(1.0, HUGE_VAL, kExclusive),
                              below(justBelow, 1000.0, kExclusive),
                              below(1000.0, justBelow, kInclusive),
                              below(kNaN, 1.0, kExclusive)};
    for (const Error& e : passes) {
        EXPECT_THAT(e, IsOk()) << &e - passes;
        EXPECT_TRUE(e.frames().isEmpty()) << &e - passes;
    }
    for (const Error& e : failures) {
        EXPECT_THAT(e, HasError(kBadParameterError)) << &e - failures;
        EXPECT_EQ(e.frames().size(), 1) << &e - failures;
    }
}

} // namespace zel
