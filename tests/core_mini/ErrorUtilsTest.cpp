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

Error failure()
{
    return Error(kBadParameterError, "wanted");
}

struct Check
{
    const char* name;
    Error outcome;
    bool passes;
};

/// Above 1e3 the values that count as nearly equal to `value` reach 1e-12 * value.
double justBelow(double value)
{
    return value * (1.0 - 0.5e-12);
}

} // namespace

TEST(ErrorUtilsTest, PassesWithoutAFrameOrFailsWithItsOwnOnTop)
{
    using U = ErrorUtils;
    const Check checks[] = {
        {"NotEmpty", U::emptyCheckReturn(QList<int>{1}, failure()), true},
        {"Empty", U::emptyCheckReturn(QList<int>(), failure()), false},
        {"Equal", U::equal(3, 3, failure()), true},
        {"EqualOfDifferent", U::equal(3, 4, failure()), false},
        {"NotEqual", U::notEqual(3, 4, failure()), true},
        {"NotEqualOfSame", U::notEqual(3, 3, failure()), false},
        {"AboveInclusiveOnBound", U::aboveThreshold(3, 3, kInclusive, failure()), true},
        {"AboveExclusiveOnBound", U::aboveThreshold(3, 3, kExclusive, failure()), false},
        {"AboveBelow", U::aboveThreshold(2, 3, kInclusive, failure()), false},
        // Only the upper bound of doubles knows nearly equal.
        {"AboveExclusiveJustAbove",
         U::aboveThreshold(1000.0, justBelow(1000.0), kExclusive, failure()),
         true},
        {"BelowInclusiveOnBound", U::belowThreshold(3, 3, kInclusive, failure()), true},
        {"BelowExclusiveInfinity", U::belowThreshold(1.0, HUGE_VAL, kExclusive, failure()), false},
        {"BelowExclusiveOnBound", U::belowThreshold(3, 3, kExclusive, failure()), false},
        {"BelowExclusiveBelow", U::belowThreshold(2, 3, kExclusive, failure()), true},
        {"BelowAbove", U::belowThreshold(4, 3, kInclusive, failure()), false},
        {"BelowExclusiveNearlyEqual",
         U::belowThreshold(justBelow(1000.0), 1000.0, kExclusive, failure()),
         false},
        {"BelowExclusiveNotNearlyEqual",
         U::belowThreshold(1000.0 * (1.0 - 2e-12), 1000.0, kExclusive, failure()),
         true},
        {"BelowInclusiveNearlyEqual",
         U::belowThreshold(justBelow(1000.0), 1000.0, kInclusive, failure()),
         true},
        {"BelowInclusiveJustAbove",
         U::belowThreshold(1000.0, justBelow(1000.0), kInclusive, failure()),
         false},
        {"BelowExclusiveNaN", U::belowThreshold(kNaN, 1.0, kExclusive, failure()), false},
        {"AboveNaN", U::aboveThreshold(kNaN, 1.0, kInclusive, failure()), false}};
    for (const auto& [name, outcome, passes] : checks) {
        EXPECT_EQ(outcome.hasError(), !passes) << name;
        EXPECT_EQ(outcome.frames().size(), passes ? 0 : 1) << name;
        EXPECT_TRUE(passes || outcome.equals(kBadParameterError)) << name;
    }
}

} // namespace zel
