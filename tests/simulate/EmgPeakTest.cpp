#include "tools/simulate/EmgPeak.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace zel::simulate {

namespace {

struct Shape
{
    double sigma;
    double tau;
};

constexpr Shape kShapes[] = {{1.0, 0.0},
                             {1.0, 1e-8},
                             {1.0, 1e-3},
                             {1.0, 0.04},
                             {1.0, 0.3},
                             {1.0, 1.0},
                             {1.0, 5.0},
                             {0.05, 3.0}};

/// The Gaussian folded with the exponential by the midpoint rule; 0 at the Gaussian's centre.
double foldedNumerically(const Shape& shape, double t)
{
    const double step = shape.tau / 2000.0;
    double sum = 0.0;
    for (int i = 0; i < 60000; ++i) {
        const double delay = (i + 0.5) * step;
        const double x = (t - delay) / shape.sigma;
        sum += std::exp(-0.5 * x * x - delay / shape.tau) * step;
    }
    return sum / (shape.tau * shape.sigma * std::sqrt(2.0 * std::numbers::pi));
}

struct Moments
{
    double area = 0.0;
    double mean = 0.0;
    double variance = 0.0;
};

Moments momentsOf(const Shape& shape, const EmgPeak& peak)
{
    constexpr int stepCount = 50'000;
    const double low = -12.0 * shape.sigma;
    const double step = (24.0 * shape.sigma + 40.0 * shape.tau) / stepCount;
    Moments moments;
    double square = 0.0;
    for (int i = 0; i <= stepCount; ++i) {
        const double t = low + i * step;
        const double share = peak.height(t) * step;
        moments.area += share;
        moments.mean += share * t;
        square += share * t * t;
    }
    moments.variance = square - moments.mean * moments.mean;
    return moments;
}

} // namespace

TEST(EmgPeakTest, HasTheMomentsOfItsParts)
{
    for (const Shape& shape : kShapes) {
        const Moments moments = momentsOf(shape, EmgPeak(shape.sigma, shape.tau));
        const double variance = shape.sigma * shape.sigma + shape.tau * shape.tau;
        EXPECT_NEAR(moments.area, 1.0, 1e-6) << shape.tau;
        EXPECT_NEAR(moments.variance, variance, 1e-5 * variance) << shape.tau;
    }
}

TEST(EmgPeakTest, IsTheFoldOfGaussianAndDecay)
{
    for (const Shape& shape : {Shape{1.0, 0.3}, Shape{1.0, 1.0}, Shape{0.5, 4.0}}) {
        const EmgPeak peak(shape.sigma, shape.tau);
        // The mean of the fold lies tau behind the centre of the Gaussian.
        const double centre = momentsOf(shape, peak).mean - shape.tau;
        for (const double t : {-3.0, -1.0, 0.0, 0.7, 2.0, 6.0, 15.0}) {
            const double expected = foldedNumerically(shape, t);
            EXPECT_NEAR(peak.height(centre + t), expected, 1e-5 * expected + 1e-12)
                << shape.tau << " " << t;
        }
    }
}

TEST(EmgPeakTest, HasItsApexAtZeroAndItsLimitsWhereAsked)
{
    for (const Shape& shape : kShapes) {
        const EmgPeak peak(shape.sigma, shape.tau);
        const double top = peak.height(0.0);
        for (const double t : {0.01, 0.1, 1.0}) {
            EXPECT_LT(peak.height(t * shape.sigma), top) << shape.tau;
            EXPECT_LT(peak.height(-t * shape.sigma), top) << shape.tau;
        }
        for (const double fraction : {0.5, 0.01, 1e-6}) {
            EXPECT_LT(peak.start(fraction), 0.0);
            EXPECT_GT(peak.end(fraction), 0.0);
            EXPECT_NEAR(peak.height(peak.start(fraction)) / top / fraction, 1.0, 1e-6) << shape.tau;
            EXPECT_NEAR(peak.height(peak.end(fraction)) / top / fraction, 1.0, 1e-6) << shape.tau;
        }
    }
}

TEST(EmgPeakTest, StaysSmoothWhereItsTwoFormsMeet)
{
    // Far left of a long tail and right of a short one the naive formula overflows.
    for (const Shape& shape : kShapes) {
        const EmgPeak peak(shape.sigma, shape.tau);
        double before = peak.height(-40.0 * shape.sigma);
        for (double t = -40.0; t < 60.0; t += 0.01) {
            const double height = peak.height(t * shape.sigma);
            ASSERT_TRUE(std::isfinite(height) && height >= 0.0) << shape.tau << " " << t;
            ASSERT_NEAR(height, before, 0.011 * peak.height(0.0)) << shape.tau << " " << t;
            before = height;
        }
    }
}

} // namespace zel::simulate
