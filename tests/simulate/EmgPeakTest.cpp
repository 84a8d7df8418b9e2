#include "tools/simulate/EmgPeak.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <utility>

namespace zel::simulate {

namespace {

/// The Gaussian folded with the exponential by the midpoint rule; 0 at the Gaussian's centre.
double foldedNumerically(double sigma, double tau, double t)
{
    const double step = tau / 2000.0;
    double sum = 0.0;
    for (int i = 0; i < 60000; ++i) {
        const double delay = (i + 0.5) * step;
        const double x = (t - delay) / sigma;
        sum += std::exp(-0.5 * x * x - delay / tau) * step;
    }
    return sum / (tau * sigma * std::sqrt(2.0 * std::numbers::pi));
}

} // namespace

TEST(EmgPeakTest, IsTheFoldOfGaussianAndDecay)
{
    for (const auto& [sigma, tau] : {std::pair(1.0, 0.3), {1.0, 1.0}, {0.5, 4.0}}) {
        const EmgPeak peak(sigma, tau);
        double centre = -tau; // of the Gaussian: the mean of the fold lies tau after it
        for (double t = -20.0; t < 100.0; t += 1e-3) {
            centre += t * peak.height(t) * 1e-3;
        }
        for (const double t : {-3.0, -1.0, 0.0, 0.7, 2.0, 6.0, 15.0}) {
            const double expected = foldedNumerically(sigma, tau, t);
            EXPECT_NEAR(peak.height(centre + t), expected, 1e-5 * expected + 1e-12) << tau;
        }
    }
}

TEST(EmgPeakTest, HasItsApexAtZeroAndItsLimitsWhereAsked)
{
    for (const auto& [sigma, tau] :
         {std::pair(1.0, 0.0), {1.0, 1e-3}, {1.0, 0.04}, {1.0, 5.0}, {0.05, 3.0}}) {
        const EmgPeak peak(sigma, tau);
        const double top = peak.height(0.0);
        EXPECT_LT(peak.height(0.01 * sigma), top) << tau;
        EXPECT_LT(peak.height(-0.01 * sigma), top) << tau;
        for (const double fraction : {0.5, 1e-6}) {
            EXPECT_NEAR(peak.height(peak.start(fraction)) / top / fraction, 1.0, 1e-6) << tau;
            EXPECT_NEAR(peak.height(peak.end(fraction)) / top / fraction, 1.0, 1e-6) << tau;
        }
        // Far left of a long tail and right of a short one the naive formula overflows.
        EXPECT_LT(peak.height(-40.0 * sigma), 1e-300) << tau;
        EXPECT_LT(peak.height(60.0 * sigma), top) << tau;
    }
}

} // namespace zel::simulate
