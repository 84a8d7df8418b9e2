#include "common/ms_types/ClosedMultiInterval.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <set>
#include <vector>

namespace zel::math {

namespace {

using TimeSet = ClosedMultiInterval<double, 6>;
using MzSet = ClosedMultiInterval<double, 10>;

using Pieces = std::vector<std::pair<double, double>>;

Pieces piecesOf(const TimeSet& set)
{
    Pieces pieces;
    for (const Interval<double>& piece : set.intervals()) {
        pieces.emplace_back(piece.start, piece.end);
    }
    return pieces;
}

TimeSet setOf(const Pieces& pieces)
{
    TimeSet set;
    for (const auto& [start, end] : pieces) {
        set.unite({start, end});
    }
    return set;
}

} // namespace

TEST(ClosedMultiIntervalTest, KnowsTheEmptyAndTheUnboundedSet)
{
    TimeSet empty;
    EXPECT_TRUE(empty.isEmpty());
    EXPECT_EQ(empty.minimum(), std::nullopt);
    EXPECT_FALSE(empty.contains(0.0));
    EXPECT_EQ(TimeSet(2.0, 1.0), empty);
    empty.grow(1.0);
    EXPECT_TRUE(empty.isEmpty());

    TimeSet all = TimeSet::unbounded();
    all.grow(5.0);
    EXPECT_EQ(all, TimeSet::unbounded());
    EXPECT_TRUE(all.contains(-1e300));
    EXPECT_FALSE(all.contains(std::numeric_limits<double>::quiet_NaN()));

    EXPECT_EQ(*Range<long long>().minimum(), -9223372036854775807LL);

    ClosedMultiInterval<int, 0> extremes(0, std::numeric_limits<int>::max());
    extremes.unite({-std::numeric_limits<int>::max(), -2});
    EXPECT_FALSE(extremes.contains(-1)) << "no overflow joins them";
}

TEST(ClosedMultiIntervalTest, ToleratesTheLastDecimalAtItsEnds)
{
    const TimeSet time(1.0, 2.0);
    EXPECT_TRUE(time.contains(2.0000005));
    EXPECT_TRUE(time.contains(0.9999995));
    EXPECT_FALSE(time.contains(2.0001));
    const MzSet mz(500.0, 501.0);
    EXPECT_TRUE(mz.contains(501.0 + 0.9e-10));
    EXPECT_FALSE(mz.contains(501.0 + 1e-9));
}

TEST(ClosedMultiIntervalTest, MergesWhatOverlapsOrTouches)
{
    EXPECT_EQ(piecesOf(setOf({{1, 2}, {2.0000001, 3}})), (Pieces{{1, 3}}));
    EXPECT_EQ(piecesOf(setOf({{1, 2}, {2.00001, 3}})), (Pieces{{1, 2}, {2.00001, 3}}));

    TimeSet grown = setOf({{1, 2}, {3, 4}, {8, 9}});
    grown.grow(0.5);
    EXPECT_EQ(piecesOf(grown), (Pieces{{0.5, 4.5}, {7.5, 9.5}}));
    grown.grow(-1.5);
    EXPECT_EQ(piecesOf(grown), (Pieces{{2, 3}}))
        << "an interval that shrinks to nothing is removed";
}

// Against a plain std::set of integers, and the one-merge union against one union after the other.
TEST(ClosedMultiIntervalTest, EqualsAPlainSetForRandomUnions)
{
    std::mt19937 random(20240117);
    for (int round = 0; round < 200; ++round) {
        ClosedMultiInterval<int, 0> set;
        std::vector<ClosedMultiInterval<int, 0>> parts;
        std::set<int> plain;
        for (int i = 0; i < 8; ++i) {
            const int start = static_cast<int>(random() % 60);
            const int end = start + static_cast<int>(random() % 6) - 1; // some are empty
            parts.emplace_back(start, end);
            set.unite(parts.back());
            for (int value = start; value <= end; ++value) {
                plain.insert(value);
            }
        }
        for (int value = -1; value < 70; ++value) {
            ASSERT_EQ(set.contains(value), plain.contains(value))
                << "round " << round << ", value " << value;
        }
        ASSERT_EQ((ClosedMultiInterval<int, 0>::unionOf(parts)), set) << "round " << round;
        for (std::size_t i = 1; i < set.intervals().size(); ++i) {
            ASSERT_LT(set.intervals()[i - 1].end + 1, set.intervals()[i].start) << round;
        }
    }
}

} // namespace zel::math
