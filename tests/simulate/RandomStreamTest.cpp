#include "tools/simulate/RandomStream.h"

#include <gtest/gtest.h>

#include <cmath>

namespace zel::simulate {

namespace {

struct Moments
{
    double mean = 0.0;
    double variance = 0.0;
};

template <typename Draw>
Moments momentsOf(int count, Draw draw)
{
    double sum = 0.0;
    double squares = 0.0;
    for (int i = 0; i < count; ++i) {
        const double value = draw();
        sum += value;
        squares += value * value;
    }
    const double mean = sum / count;
    return {mean, squares / count - mean * mean};
}

} // namespace

TEST(RandomStreamTest, GivesTheSameBitsEverywhere)
{
    // From an independent writing of the engine; runs of one seed change when these do.
    RandomStream random(42, {RandomStream::Scans, 1, 7});
    EXPECT_EQ(random.uniform(), 0x1.f2248601caf2p-1);
    EXPECT_EQ(random.below(1000), 483u);
    EXPECT_NEAR(random.normal(), 0.12062156562043402, 1e-14);
    EXPECT_NE(RandomStream(1, {2, 3}).uniform(), RandomStream(1, {3, 2}).uniform());
}

TEST(RandomStreamTest, HasTheMomentsOfEachDistribution)
{
    constexpr int count = 200'000;
    RandomStream random(3, {});
    EXPECT_NEAR(momentsOf(count, [&] { return random.normal(); }).variance, 1.0, 0.015);
    const Moments bounded = momentsOf(count, [&] { return random.boundedNormal(); });
    EXPECT_NEAR(bounded.variance, 0.9733, 0.015); // of a normal cut at three sigma
    for (const double mean : {0.7, 64.0, 65.0, 1e4}) {
        const Moments poisson = momentsOf(count, [&] { return random.poisson(mean); });
        EXPECT_NEAR(poisson.mean, mean, 4.0 * std::sqrt(mean / count)); // four standard errors
        EXPECT_NEAR(poisson.variance, mean, 4.0 * std::sqrt((mean + 2.0 * mean * mean) / count));
    }
    // Of three quarters of all numbers a plain remainder would give the lowest third twice as
    // often.
    const std::uint64_t large = 3ULL << 62;
    const Moments low = momentsOf(10'000, [&] { return random.below(large) < large / 3 ? 1 : 0; });
    EXPECT_NEAR(low.mean, 0.3333, 0.02);
}

} // namespace zel::simulate
