#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"

#include "tests/support/Matchers.h"
#include "tests/support/SparseMatrices.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace zel {

using test::HasError;
using test::IsOk;
using Utilities = FeatureFinderUtilities;

namespace {

constexpr int kIntMin = std::numeric_limits<int>::min();
constexpr int kIntMax = std::numeric_limits<int>::max();
constexpr double kGreatest = std::numeric_limits<double>::max();
constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

double entryOrZero(const Eigen::SparseMatrix<double>& m, int row, int column)
{
    const bool inside = row >= 0 && row < m.rows() && column >= 0 && column < m.cols();
    return inside ? m.coeff(row, column) : 0.0;
}

} // namespace

TEST(FeatureFinderUtilitiesTest, PutsAValueIntoTheNearestBin)
{
    EXPECT_EQ(Utilities::hashMz(0.5, 1.0), 1);
    EXPECT_EQ(Utilities::hashMz(0.49, 1.0), 0);
    EXPECT_EQ(Utilities::hashMz(-0.5, 1.0), 0);
    EXPECT_EQ(Utilities::hashMz(-0.51, 1.0), -1);
    for (const double bins : {1.0, 500.0, 1000.0, 10000.0, 100000.0}) {
        for (int bin = 0; bin < 2000000; bin += 997) {
            ASSERT_EQ(Utilities::hashMz(Utilities::unHashMz(bin, bins), bins), bin) << bins;
        }
    }
}

TEST(FeatureFinderUtilitiesTest, SaturatesBeyondTheRangeOfInt)
{
    EXPECT_EQ(Utilities::hashMz(kGreatest, 10000), kIntMax);
    EXPECT_EQ(Utilities::hashMz(-kGreatest, 10000), kIntMin);
    EXPECT_EQ(Utilities::hashMz(2147483646.6, 1.0), kIntMax);
    EXPECT_EQ(Utilities::hashMz(-2147483648.7, 1.0), kIntMin);
    EXPECT_EQ(Utilities::hashMz(kNaN, 10000), kIntMin) << "no bin of any spectrum";

    using Bins = std::pair<int, int>;
    EXPECT_EQ(Utilities::hashMz(-kGreatest, kGreatest, 10000, 1e-10), Bins(kIntMin, kIntMax));
    EXPECT_EQ(Utilities::hashMz(500.0, kInfinity, 10000, 0.0), Bins(5000000, kIntMax));
    const Bins noStart = Utilities::hashMz(kNaN, 500.0, 10000, 0.0);
    const Bins noEnd = Utilities::hashMz(500.0, kNaN, 10000, 0.0);
    EXPECT_GT(noStart.first, noStart.second);
    EXPECT_GT(noEnd.first, noEnd.second);
}

TEST(FeatureFinderUtilitiesTest, FindsExactlyTheBinsWhoseMzLiesInTheWindow)
{
    constexpr unsigned seed = 11;
    std::mt19937 generator(seed);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    for (int i = 0; i < 20000; ++i) {
        const double bins = i % 2 == 0 ? 10000.0 : 3.0;
        const double tolerance = i % 3 == 0 ? 1e-10 : 0.0;
        double start = 100.0 + 900.0 * uniform(generator);
        if (i % 5 == 0) { // a limit on a bin, where products and quotients round apart
            start = Utilities::unHashMz(Utilities::hashMz(start, bins), bins);
        }
        const double end = i % 7 == 0 ? start : start + 2.0 * uniform(generator) / bins;
        const auto [first, last] = Utilities::hashMz(start, end, bins, tolerance);
        const int near = Utilities::hashMz(start, bins);
        for (int bin = near - 3; bin <= near + 5; ++bin) {
            const double mz = Utilities::unHashMz(bin, bins);
            const bool wanted = start - tolerance <= mz && mz <= end + tolerance;
            ASSERT_EQ(first <= bin && bin <= last, wanted)
                << "seed " << seed << ", window " << start << " to " << end << ", bin " << bin;
        }
    }
    const auto [first, last] = Utilities::hashMz(500.00003, 500.00006, 10000, 1e-10);
    EXPECT_GT(first, last) << "between two bins";
}

TEST(FeatureFinderUtilitiesTest, SlicesKeepTheirShapeAndCentreWhereverTheyLie)
{
    Eigen::SparseMatrix<double> frame = test::randomSparseMatrix(40, 9, 120, 50, 3);
    test::uncompress(&frame);
    const Eigen::SparseVector<double, Eigen::RowMajor, int> scan = frame.col(4).transpose();
    constexpr int rowHalf = 6;
    constexpr int columnHalf = 2;
    Eigen::SparseVector<double> part;
    Eigen::SparseMatrix<double> block;
    for (const int row : {-100, -7, -6, 0, 3, 20, 39, 45, 46}) {
        ASSERT_THAT(Utilities::sliceScan(scan, row, rowHalf, &part), IsOk());
        for (const int column : {-3, -2, 0, 4, 8, 11}) {
            ASSERT_THAT(Utilities::sliceFrame(frame, row, column, rowHalf, columnHalf, &block),
                        IsOk());
            Eigen::MatrixXd wanted(2 * rowHalf + 1, 2 * columnHalf + 1);
            for (int r = 0; r < wanted.rows(); ++r) {
                for (int c = 0; c < wanted.cols(); ++c) {
                    wanted(r, c) = entryOrZero(frame, row - rowHalf + r, column - columnHalf + c);
                }
            }
            ASSERT_EQ(Eigen::MatrixXd(block), wanted) << "centre " << row << ", " << column;
            if (column == 4) {
                ASSERT_EQ(Eigen::VectorXd(part), wanted.col(columnHalf)) << "centre " << row;
            }
        }
    }
    for (const int row : {kIntMin, kIntMax}) {
        ASSERT_THAT(Utilities::sliceScan(scan, row, rowHalf, &part), IsOk());
        EXPECT_EQ(part.nonZeros(), 0) << row;
    }
    for (const int halfWidth : {-1, kIntMax}) {
        EXPECT_THAT(Utilities::sliceScan(scan, 5, halfWidth, &part), HasError(kBadParameterError));
    }
    EXPECT_THAT(Utilities::sliceFrame(frame, 5, 2, 0, -1, &block), HasError(kBadParameterError));
}

} // namespace zel
