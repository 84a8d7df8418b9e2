#include "tools/simulate/RandomStream.h"

#include <gtest/gtest.h>

#include <array>
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
}

TEST(RandomStreamTest, GivesEachPathAStreamOfItsOwn)
{
    const auto first = [](std::uint64_t seed, std::initializer_list<std::uint64_t> path) {
        return RandomStream(seed, path).uniform();
    };
    EXPECT_EQ(first(1, {2, 3}), first(1, {2, 3}));
    EXPECT_NE(first(1, {2, 3}), first(1, {3, 2}));
    EXPECT_NE(first(1, {2, 3}), first(2, {2, 3}));
    EXPECT_NE(first(1, {2, 3}), first(1, {2, 3, 0}));
    // Neighbouring streams are independent.
    std::uint64_t index = 0;
    const Moments moments = momentsOf(20'000, [&] { return first(5, {index++}); });
    EXPECT_NEAR(moments.mean, 0.5, 0.01);
    EXPECT_NEAR(moments.variance, 1.0 / 12.0, 0.005);
}

TEST(RandomStreamTest, HasTheMomentsOfEachDistribution)
{
    constexpr int count = 200'000;
    RandomStream random(3, {});
    const Moments normal = momentsOf(count, [&] { return random.normal(); });
    EXPECT_NEAR(normal.mean, 0.0, 0.01);
    EXPECT_NEAR(normal.variance, 1.0, 0.015);
    const Moments fourth = momentsOf(count, [&] { return std::pow(random.normal(), 4); });
    EXPECT_NEAR(fourth.mean, 3.0, 0.15);
    const Moments bounded = momentsOf(count, [&] { return random.boundedNormal(); });
    EXPECT_NEAR(bounded.variance, 0.9733, 0.015); // of a normal cut at three sigma

    for (const double mean : {0.01, 0.7, 5.0, 64.0, 65.0, 1e4}) {
        const Moments poisson = momentsOf(count, [&] { return random.poisson(mean); });
        // Four standard errors of mean and variance.
        EXPECT_NEAR(poisson.mean, mean, 4.0 * std::sqrt(mean / count)) << mean;
        EXPECT_NEAR(poisson.variance, mean, 4.0 * std::sqrt((mean + 2.0 * mean * mean) / count))
            << mean;
    }
    EXPECT_EQ(random.poisson(0.0), 0.0);
    EXPECT_EQ(random.poisson(-1.0), 0.0);
}

TEST(RandomStreamTest, DrawsWholeNumbersEvenly)
{
    RandomStream random(9, {});
    std::array<int, 7> counts{};
    for (int i = 0; i < 70'000; ++i) {
        ++counts.at(random.below(counts.size()));
    }
    for (const int count : counts) {
        EXPECT_NEAR(count, 10'000, 400); // four standard deviations
    }
    EXPECT_EQ(random.below(1), 0u);
    // Of three quarters of all numbers a plain remainder would give the lowest third twice as
    // often.
    const std::uint64_t large = 3ULL << 62;
    int low = 0;
    for (int i = 0; i < 10'000; ++i) {
        low += random.below(large) < large / 3 ? 1 : 0;
    }
    EXPECT_NEAR(low, 3333, 200);
}

} // namespace zel::simulate
