#include "tools/sources/PeakPicker.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace zel::msreader {

using test::NearPpm;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

struct Peak
{
    double mz;
    double height;
    double sigma;
};

double valueAt(const QList<Peak>& peaks, double mz)
{
    double sum = 0.0;
    for (const Peak& peak : peaks) {
        const double distance = (mz - peak.mz) / peak.sigma;
        sum += peak.height * std::exp(-0.5 * distance * distance);
    }
    return sum;
}

/// Samples the peaks on a grid whose step grows as m/z^1.5, the law of an orbital trap, and leaves
/// out the samples below `threshold` as instruments do.
QList<QPointF> sampled(const QList<Peak>& peaks, double stepAt500, double threshold)
{
    QList<QPointF> samples;
    for (double mz = 400.0; mz < 1000.0; mz += stepAt500 * std::pow(mz / 500.0, 1.5)) {
        const double y = valueAt(peaks, mz);
        if (y >= threshold) {
            samples.append(QPointF(mz, y));
        }
    }
    return samples;
}

} // namespace

TEST(PeakPickerTest, FindsGaussianPeaksExactly)
{
    // Random places relative to the grid, full width at half height of 2.4 to 9.4 samples.
    std::mt19937 random(7);
    std::uniform_real_distribution<double> jitter(0.0, 0.01);
    QList<Peak> peaks;
    for (int i = 0; i < 50; ++i) {
        peaks.append({420.0 + 11.0 * i + jitter(random), 1000.0 * (1 + i % 7), 0.004 + 0.0001 * i});
    }
    const QList<QPointF> centroids = pickPeaks(sampled(peaks, 0.002, 1.0));
    ASSERT_EQ(centroids.size(), peaks.size());
    for (qsizetype i = 0; i < peaks.size(); ++i) {
        EXPECT_THAT(centroids[i].x(), NearPpm(peaks[i].mz, 1e-6));
        EXPECT_NEAR(centroids[i].y(), peaks[i].height, 1e-6 * peaks[i].height);
    }
}

TEST(PeakPickerTest, SeparatesPeaksByTheValleyBetween)
{
    // Equal peaks 3 sigma apart have a valley of 65 % of the top, 2.2 sigma apart one of 97 %.
    const auto picked = [](double sigmas) {
        return pickPeaks(
            sampled({{500.0, 100.0, 0.01}, {500.0 + sigmas * 0.01, 100.0, 0.01}}, 0.002, 0.1));
    };
    EXPECT_EQ(picked(3.0).size(), 2);
    EXPECT_EQ(picked(2.2).size(), 1);
}

TEST(PeakPickerTest, GivesTheseCentroids)
{
    struct Row
    {
        const char* name;
        QList<QPointF> profile;
        QList<QPointF> expected;
    };
    const Row rows[] = {
        {"Empty", {}, {}},
        {"LoneSample", {{100, 5}}, {{100, 5}}},
        {"TwoSamples", {{100, 30}, {101, 10}}, {{100.25, 30}}},
        {"TopAtTheEnd", {{100, 1}, {101, 10}, {102, 30}}, {{101.75, 30}}},
        // The fit would be 7.3 times as high; more than 1.19 is not believed.
        {"TopOfTwo", {{99, 1e-6}, {100, 8}, {101, 8}, {102, 1e-6}}, {{100.5, 9.52}}},
        {"FlatTop", {{99, 1}, {100, 8}, {101, 8}, {102, 8}, {103, 2}}, {{101, 8}}},
        {"ZeroBetween",
         {{100, 1}, {101, 5}, {102, 1}, {103, 0}, {104, 1}, {105, 5}, {106, 1}},
         {{101, 5}, {105, 5}}},
        {"GapBetween", {{100, 3}, {101, 5}, {104, 5}, {105, 3}}, {{100.625, 5}, {104.375, 5}}},
        {"OneSampleMissing", {{100, 1}, {101, 4}, {103, 4}, {104, 1}}, {{102, 4 * 1.19}}},
        {"NoiseOnTheFlanks",
         {{100, 10}, {101, 20}, {102, 19}, {103, 80}, {104, 19}, {105, 21}, {106, 10}},
         {{103, 80}}},
        {"EqualMz", {{100, 1}, {101, 2}, {101, 3}, {102, 1}}, {{101, 5}}}};
    for (const auto& [name, profile, expected] : rows) {
        const QList<QPointF> centroids = pickPeaks(profile);
        ASSERT_EQ(centroids.size(), expected.size()) << name;
        for (qsizetype i = 0; i < centroids.size(); ++i) {
            EXPECT_NEAR(centroids[i].x(), expected[i].x(), 1e-9) << name;
            EXPECT_NEAR(centroids[i].y(), expected[i].y(), 1e-9) << name;
        }
    }
}

} // namespace zel::msreader
