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

void PrintTo(const Check& check, std::ostream* os)
{
    *os << check.name;
}

/// Above 1e3 the values that count as nearly equal to `value` reach 1e-12 * value.
double justBelow(double value)
{
    return value * (1.0 - 0.5e-12);
}

class ErrorUtilsTest : public ::testing::TestWithParam<Check>
{};

} // namespace

TEST_P(ErrorUtilsTest, PassesWithoutAFrameOrFailsWithItsOwnOnTop)
{
    const Check& check = GetParam();
    if (check.passes) {
        EXPECT_THAT(check.outcome, IsOk());
        EXPECT_TRUE(check.outcome.frames().isEmpty());
    } else {
        EXPECT_THAT(check.outcome, HasError(kBadParameterError, "wanted"));
        ASSERT_EQ(check.outcome.frames().size(), 1);
        EXPECT_TRUE(check.outcome.frames().first().file.endsWith(QStringLiteral("ErrorUtils.h")));
    }
}

using U = ErrorUtils;

INSTANTIATE_TEST_SUITE_P(
    Checks,
    ErrorUtilsTest,
    ::testing::Values(
        Check{"NotEmpty", U::emptyCheckReturn(QList<int>{1}, failure()), true},
        Check{"Empty", U::emptyCheckReturn(QList<int>(), failure()), false},
        Check{"Equal", U::equal(3, 3, failure()), true},
        Check{"EqualOfDifferent", U::equal(3, 4, failure()), false},
        Check{"NotEqual", U::notEqual(3, 4, failure()), true},
        Check{"NotEqualOfSame", U::notEqual(3, 3, failure()), false},
        Check{"AboveInclusiveOnBound", U::aboveThreshold(3, 3, kInclusive, failure()), true},
        Check{"AboveExclusiveOnBound", U::aboveThreshold(3, 3, kExclusive, failure()), false},
        Check{"AboveBelow", U::aboveThreshold(2, 3, kInclusive, failure()), false},
        // Only the upper bound of doubles knows nearly equal.
        Check{"AboveExclusiveJustAbove",
              U::aboveThreshold(1000.0, justBelow(1000.0), kExclusive, failure()),
              true},
        Check{"BelowInclusiveOnBound", U::belowThreshold(3, 3, kInclusive, failure()), true},
        Check{"BelowExclusiveOnBound", U::belowThreshold(3, 3, kExclusive, failure()), false},
        Check{"BelowExclusiveBelow", U::belowThreshold(2, 3, kExclusive, failure()), true},
        Check{"BelowAbove", U::belowThreshold(4, 3, kInclusive, failure()), false},
        Check{"BelowExclusiveNearlyEqual",
              U::belowThreshold(justBelow(1000.0), 1000.0, kExclusive, failure()),
              false},
        Check{"BelowExclusiveNotNearlyEqual",
              U::belowThreshold(1000.0 * (1.0 - 2e-12), 1000.0, kExclusive, failure()),
              true},
        Check{"BelowInclusiveNearlyEqual",
              U::belowThreshold(justBelow(1000.0), 1000.0, kInclusive, failure()),
              true},
        Check{"BelowInclusiveJustAbove",
              U::belowThreshold(1000.0, justBelow(1000.0), kInclusive, failure()),
              false},
        Check{"BelowExclusiveNaN", U::belowThreshold(kNaN, 1.0, kExclusive, failure()), false},
        Check{"AboveNaN", U::aboveThreshold(kNaN, 1.0, kInclusive, failure()), false}),
    [](const auto& test) { return test.param.name; });

} // namespace zel
