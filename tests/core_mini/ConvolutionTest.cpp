#include "common/core_mini/src/algo/numeric/Convolution.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace zel {

using ::testing::Each;

namespace {

/// The definition, one result at a time.
double convolvedAt(const std::vector<double>& signal, const std::vector<double>& kernel, int i)
{
    const int last = static_cast<int>(signal.size()) - 1;
    const int center = static_cast<int>(kernel.size() / 2);
    double sum = 0.0;
    for (int k = 0; k < static_cast<int>(kernel.size()); ++k) {
        const int place = std::clamp(i + center - k, 0, last);
        sum += kernel[static_cast<std::size_t>(k)] * signal[static_cast<std::size_t>(place)];
    }
    return sum;
}

} // namespace

TEST(ConvolutionTest, EqualsTheDefinitionForAllSizes)
{
    std::mt19937 generator(7);
    std::uniform_int_distribution<int> value(-1000, 1000); // whole numbers: sums are exact
    for (const std::size_t signalSize : {1U, 2U, 7U, 8U, 9U, 40U}) {
        for (const std::size_t kernelSize : {1U, 2U, 3U, 8U, 91U}) {
            std::vector<double> signal(signalSize);
            std::vector<double> kernel(kernelSize);
            std::ranges::generate(signal, [&] { return value(generator); });
            std::ranges::generate(kernel, [&] { return value(generator); });
            std::vector<double> out;
            ASSERT_TRUE(core::conv(signal, kernel, 0, &out));
            ASSERT_EQ(out.size(), signalSize);
            for (int i = 0; i < static_cast<int>(signalSize); ++i) {
                ASSERT_EQ(out[static_cast<std::size_t>(i)], convolvedAt(signal, kernel, i))
                    << "signal " << signalSize << ", kernel " << kernelSize << ", at " << i;
            }
            ASSERT_TRUE(core::conv(signal, kernel, 0, &signal));
            EXPECT_EQ(signal, out) << "in place";
        }
    }
}

TEST(ConvolutionTest, LeavesAFlatSignalExactlyFlat)
{
    const std::vector<double> kernel = {0.3, -0.7, 0.1, 0.9, 1.0 / 3};
    std::vector<double> out;
    ASSERT_TRUE(core::conv(std::vector<double>(101, 0.1), kernel, 0, &out));
    EXPECT_THAT(out, Each(out.front()));
}

} // namespace zel
