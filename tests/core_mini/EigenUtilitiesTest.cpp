#include "common/core_mini/src/algo/EigenUtilities.h"

#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <tuple>

namespace zel {

using test::HasError;
using test::IsOk;
using ::testing::ElementsAre;

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

Eigen::VectorXd vectorOf(const std::vector<double>& values)
{
    return Eigen::Map<const Eigen::VectorXd>(values.data(),
                                             static_cast<Eigen::Index>(values.size()));
}

/// The sums as they come out of adding point by point in ascending intensity.
Eigen::VectorXd binnedStepByStep(QList<QPointF> points, int length, int binsPerUnit)
{
    std::stable_sort(points.begin(), points.end(), [](const QPointF& a, const QPointF& b) {
        return a.y() < b.y();
    });
    Eigen::VectorXd sums = Eigen::VectorXd::Zero(length);
    for (const QPointF& point : points) {
        const int bin = FeatureFinderUtilities::hashMz(point.x(), binsPerUnit);
        if (bin >= 0 && bin < length) {
            sums[bin] += point.y();
        }
    }
    return sums;
}

QList<QPointF> randomSpectrum(int pointCount, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> mz(0.0, 100.0);
    std::lognormal_distribution<double> intensity(5.0, 4.0);
    QList<QPointF> points;
    for (int i = 0; i < pointCount; ++i) {
        const double pointMz = mz(generator);
        points.append(QPointF(pointMz, intensity(generator)));
    }
    return points;
}

} // namespace

// Savitzky and Golay, Anal. Chem. 36 (1964) 1627, tables I, III and VI, with the corrections of
// Steinier et al., Anal. Chem. 44 (1972) 1906; the one at rate 10 is that of rate 1 times
// rate^derivative.
TEST(EigenUtilitiesTest, HasThePublishedSavitzkyGolayWeights)
{
    // Window, order of the polynomial, derivative, rate, divisor, weights.
    const std::tuple<int, int, int, int, double, std::vector<double>> rows[] = {
        {5, 1, 0, 1, 5, {1, 1, 1, 1, 1}},
        {5, 2, 0, 1, 35, {-3, 12, 17, 12, -3}},
        {7, 3, 0, 1, 21, {-2, 3, 6, 7, 6, 3, -2}},
        {9, 4, 0, 1, 429, {15, -55, 30, 135, 179, 135, 30, -55, 15}},
        {5, 3, 1, 1, 12, {1, -8, 0, 8, -1}},
        {5, 2, 2, 10, 0.07, {2, -1, -2, -1, 2}}};
    for (const auto& [windowSize, order, derivative, rate, divisor, weights] : rows) {
        Eigen::VectorXd kernel;
        ASSERT_THAT(
            EigenUtilities::buildSavitzkyGolayKernel(windowSize, order, derivative, rate, &kernel),
            IsOk());
        EXPECT_TRUE(kernel.isApprox(vectorOf(weights) / divisor, 1e-13)) << kernel.transpose();
    }
}

TEST(EigenUtilitiesTest, RefusesWindowsThatCannotBeFitted)
{
    constexpr int greatest = std::numeric_limits<int>::max();
    Eigen::VectorXd kernel = vectorOf({7.0});
    for (const auto& [windowSize, order, derivative] :
         {std::tuple(4, 1, 0), {-5, 1, 0}, {3, 2, 0}, {1, 0, 0}, {5, greatest, 0}, {5, 2, 3}}) {
        EXPECT_THAT(
            EigenUtilities::buildSavitzkyGolayKernel(windowSize, order, derivative, 1, &kernel),
            HasError(kBadParameterError))
            << windowSize << ' ' << order << ' ' << derivative;
    }
    EXPECT_EQ(kernel, vectorOf({7.0}));
}

TEST(EigenUtilitiesTest, SmoothsInPlaceAndKeepsTheLevelAtTheEnds)
{
    Eigen::VectorXd average;
    ASSERT_THAT(EigenUtilities::buildSavitzkyGolayKernel(5, 1, 0, 1, &average), IsOk());
    Eigen::VectorXd signal = vectorOf({10.0, 0.0, 0.0, 0.0, 0.0, 0.0, 5.0});
    ASSERT_THAT(EigenUtilities::savitzkyGolaySmooth(average, &signal), IsOk());
    EXPECT_LT((signal - vectorOf({6.0, 4.0, 2.0, 0.0, 1.0, 2.0, 3.0})).norm(), 1e-14)
        << signal.transpose();
    EXPECT_THAT(EigenUtilities::savitzkyGolaySmooth(Eigen::VectorXd(), &signal),
                HasError(kBadParameterError));
}

TEST(EigenUtilitiesTest, SumsPointsOfOneBinBitForBitInAscendingIntensity)
{
    constexpr int length = 900; // of 1000 bins
    for (const unsigned seed : {21U, 22U}) {
        QList<QPointF> points = randomSpectrum(5000, seed);
        const Eigen::VectorXd wanted = binnedStepByStep(points, length, 10);
        for (const bool sorted : {false, true}) {
            if (sorted) {
                std::ranges::sort(points, {}, &QPointF::x);
            }
            Eigen::SparseVector<double> binned(3);
            ASSERT_THAT(EigenUtilities::vectorizePoint2dList<double>(points, length, 10, &binned),
                        IsOk());
            ASSERT_EQ(binned.size(), length);
            for (int bin = 0; bin < length; ++bin) {
                ASSERT_EQ(binned.coeff(bin), wanted[bin]) << "seed " << seed << ", bin " << bin;
            }
        }
    }
}

TEST(EigenUtilitiesTest, BuildsASymmetricGaussian)
{
    for (const int size : {1, 2, 9, 10, 35}) {
        for (const double sigma : {1e-200, 0.01, 2.5, 1e200}) {
            const Eigen::VectorXd kernel = EigenUtilities::buildGaussianFilter1D(size, sigma, true);
            ASSERT_EQ(kernel.size(), size);
            EXPECT_NEAR(kernel.sum(), 1.0, 1e-14) << size << ", sigma " << sigma;
            EXPECT_EQ(kernel, kernel.reverse()) << size << ", sigma " << sigma;
        }
    }
    const Eigen::VectorXd kernel = EigenUtilities::buildGaussianFilter1D(9, 2.5, false);
    EXPECT_EQ(kernel[4], 1.0);
    EXPECT_NEAR(kernel[6], 0.7261490370736909, 1e-15); // exp(-0.32), two points from the middle
    EXPECT_EQ(EigenUtilities::buildGaussianFilter1D(5, 0.0, true), vectorOf({0, 0, 1, 0, 0}));
}

TEST(EigenUtilitiesTest, RanksIndicesByTheirDistanceFromTheCutoff)
{
    const Eigen::RowVectorXd values = vectorOf({5.0, 1.0, kNaN, 3.0, 1.0, 9.0}).transpose();
    using U = EigenUtilities;
    EXPECT_THAT(U::returnIndexNearestToCutoff(values, 2.0, 3), ElementsAre(1, 3, 4));
    EXPECT_THAT(U::returnIndexNearestToCutoff(values, 0.0, 99), ElementsAre(1, 4, 3, 0, 5, 2));
    // In single precision 2^24 + 1 becomes 2^24.
    const Eigen::RowVectorXd close = vectorOf({16777216.0, 16777217.0}).transpose();
    EXPECT_THAT(U::returnIndexNearestToCutoff(close, 16777217.0, 1), ElementsAre(1));
    EXPECT_THAT(U::returnIndexNearestToCutoffF(close, 16777217.0, 1), ElementsAre(0));
}

} // namespace zel
