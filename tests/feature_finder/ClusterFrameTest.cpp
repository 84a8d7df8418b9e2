#include "common/core_mini/src/algo/clusters/SpectraSubtractomatic.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "feature_finder/clusters/ClusterFrame_p.h"
#include "tests/support/Matchers.h"
#include "tests/support/SparseMatrices.h"

#include <gtest/gtest.h>

#include <random>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

/// The same, slow and obvious, on a dense matrix.
class SlowFrame
{
public:
    explicit SlowFrame(const Eigen::SparseMatrix<double>& frame)
        : m_values(frame)
    {}

    std::optional<ClusterFrame::Point> strongestPoint() const
    {
        double greatest = 1e-12;
        std::optional<ClusterFrame::Point> found;
        for (int column = 0; column < m_values.cols(); ++column) {
            for (int row = 0; row < m_values.rows(); ++row) {
                if (m_values(row, column) > greatest) {
                    greatest = m_values(row, column);
                    found = ClusterFrame::Point{row, column};
                }
            }
        }
        return found;
    }

    void subtract(const Eigen::SparseMatrix<double>& model, int column)
    {
        for (int j = 0; j < model.cols(); ++j) {
            const auto place = column - model.cols() / 2 + j;
            if (place >= 0 && place < m_values.cols()) {
                m_values.col(place) -= Eigen::VectorXd(model.col(j));
            }
        }
        m_values = m_values.cwiseMax(0.0);
    }

    double sumAround(int row, int column, int half) const
    {
        double sum = 0.0;
        for (int c = std::max(0, column - half);
             c <= std::min<Eigen::Index>(column + half, m_values.cols() - 1);
             ++c) {
            sum += row >= 0 && row < m_values.rows() ? m_values(row, c) : 0.0;
        }
        return sum;
    }

    Eigen::MatrixXd m_values;
};

} // namespace

TEST(ClusterFrameTest, BuildsMatricesOutOfHills)
{
    const HillPoint points[] = {{500, 3, 1.5}, {700, 0, 4.0}, {500, 3, 2.0}, {400, 3, 8.0}};
    Eigen::SparseMatrix<double> frame;
    Eigen::SparseMatrix<int> numbers;
    buildHillMatrices(points, &frame, &numbers);
    EXPECT_EQ(frame.rows(), SpectraSubtractomatic::clusterRows());
    EXPECT_EQ(frame.cols(), 3 + 20);
    EXPECT_EQ(frame.nonZeros(), 3);
    EXPECT_EQ(frame.coeff(500, 3), 3.5) << "hills of one cell add up";
    EXPECT_EQ(numbers.coeff(500, 3), 2) << "and the last one names it";
    EXPECT_EQ(frame.coeff(700, 0), 4.0);
    EXPECT_EQ(numbers.coeff(400, 3), 3);
    buildHillMatrices({}, &frame, &numbers);
    EXPECT_EQ(frame.nonZeros(), 0);
}

TEST(ClusterFrameTest, EqualsASlowFrameStepByStep)
{
    // Whole numbers, so that sums are exact and many points are equal; some are negative.
    Eigen::SparseMatrix<double> sparse = test::randomSparseMatrix(60, 12, 150, 9, 7);
    sparse.coeffs() -= 1.0;
    SlowFrame slow(sparse);
    ClusterFrame frame(&sparse, 2);
    std::mt19937 random(3);
    std::uniform_int_distribution<int> width(0, 3);
    int steps = 0;
    while (const auto point = frame.strongestPoint()) {
        const auto wanted = slow.strongestPoint();
        ASSERT_TRUE(wanted);
        ASSERT_EQ(std::pair(point->row, point->column), std::pair(wanted->row, wanted->column));
        Eigen::SparseVector<double> profile;
        ASSERT_THAT(frame.profileAt(*point, &profile), IsOk());
        const int centre = g_immutableFeatureFinderParameters.clusterSliceCentre;
        for (int i = -70; i <= 70; ++i) {
            ASSERT_EQ(profile.coeff(centre + i), slow.sumAround(point->row + i, point->column, 2));
        }
        const Eigen::SparseMatrix<double> model = test::randomSparseMatrix(
            60, 2 * width(random) + 1, 60, 2, static_cast<unsigned>(random()));
        frame.subtract(model, *point);
        frame.remove(*point);
        slow.subtract(model, point->column);
        slow.m_values(point->row, point->column) = 0.0;
        ASSERT_EQ(frame.pointCount(), (slow.m_values.array().abs() > 1e-12).count());
        ++steps;
    }
    EXPECT_FALSE(slow.strongestPoint());
    EXPECT_GT(steps, 30);
}

TEST(ClusterFrameTest, IsNoWiderThanItsMatrix)
{
    Eigen::SparseMatrix<double> sparse = test::randomSparseMatrix(60, 12, 150, 9, 7);
    Eigen::SparseVector<double> all;
    Eigen::SparseVector<double> wide;
    ASSERT_THAT(ClusterFrame(&sparse, 12).profileAt({30, 4}, &all), IsOk());
    ASSERT_THAT(ClusterFrame(&sparse, 2'000'000'000).profileAt({30, 4}, &wide), IsOk());
    EXPECT_TRUE(wide.isApprox(all, 0.0));
    EXPECT_THAT(ClusterFrame(&sparse, -1).profileAt({30, 4}, &wide), HasError(kBadParameterError));
}

} // namespace zel
