#include "common/core_mini/src/algo/EigenUtilities.h"
#include "tests/support/SparseMatrices.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <set>

namespace zel {

using ::testing::ElementsAreArray;
using Apex = EigenUtilities::MatrixApexIndex;
using RowMajorMatrix = Eigen::SparseMatrix<double, Eigen::RowMajor>;

void PrintTo(const Apex& apex, std::ostream* os)
{
    *os << apex.value << " at " << apex.row << ", " << apex.column;
}

namespace {

/// Each column convolved by the definition, beyond its ends taken as 0.
Eigen::MatrixXd convolvedColumns(const Eigen::MatrixXd& m, const Eigen::VectorXd& kernel)
{
    Eigen::MatrixXd result = Eigen::MatrixXd::Zero(m.rows(), m.cols());
    for (Eigen::Index row = 0; row < m.rows(); ++row) {
        for (Eigen::Index k = 0; k < kernel.size(); ++k) {
            const Eigen::Index source = row + kernel.size() / 2 - k;
            if (source >= 0 && source < m.rows()) {
                result.row(row) += kernel[k] * m.row(source);
            }
        }
    }
    return result;
}

/// Whole numbers without a symmetry, some of them 0 or negative.
Eigen::VectorXd kernelOf(int size)
{
    return Eigen::VectorXd::NullaryExpr(
        size, [](Eigen::Index i) { return static_cast<double>((i * i * 7 + 3 * i) % 11) - 4.0; });
}

bool isWellFormed(const Eigen::SparseMatrix<double>& m)
{
    for (Eigen::Index column = 0; column < m.cols(); ++column) {
        for (int i = m.outerIndexPtr()[column] + 1; i < m.outerIndexPtr()[column + 1]; ++i) {
            if (m.innerIndexPtr()[i - 1] >= m.innerIndexPtr()[i]) {
                return false;
            }
        }
    }
    return m.isCompressed() && m.outerIndexPtr()[m.cols()] == m.nonZeros();
}

/// The cells of the plateau around a cell; empties the list when a neighbour is higher.
std::set<std::pair<int, int>> plateauOf(const Eigen::MatrixXd& m, int row, int column)
{
    std::set<std::pair<int, int>> cells{{column, row}};
    std::vector<std::pair<int, int>> open{{column, row}};
    bool isMaximum = true;
    while (!open.empty()) {
        const auto [c, r] = open.back();
        open.pop_back();
        for (int nc = std::max(c - 1, 0); nc <= std::min<int>(c + 1, int(m.cols()) - 1); ++nc) {
            for (int nr = std::max(r - 1, 0); nr <= std::min<int>(r + 1, int(m.rows()) - 1); ++nr) {
                isMaximum = isMaximum && m(nr, nc) <= m(r, c);
                if (m(nr, nc) == m(r, c) && cells.insert({nc, nr}).second) {
                    open.emplace_back(nc, nr);
                }
            }
        }
    }
    return isMaximum ? cells : std::set<std::pair<int, int>>();
}

QList<Apex> apexesByDefinition(const Eigen::MatrixXd& m)
{
    QList<Apex> apexes;
    for (int column = 0; column < m.cols(); ++column) {
        for (int row = 0; row < m.rows(); ++row) {
            if (m(row, column) <= 1e-12) {
                continue;
            }
            const auto plateau = plateauOf(m, row, column);
            if (!plateau.empty() && *plateau.begin() == std::pair(column, row)) {
                apexes.append({row, column, m(row, column)});
            }
        }
    }
    return apexes;
}

} // namespace

TEST(EigenUtilitiesSparseTest, KernelsEqualTheDenseConvolution)
{
    for (const int entryCount : {0, 3, 60, 900}) { // lone entries up to nearly full columns
        Eigen::SparseMatrix<double> m = test::randomSparseMatrix(60, 17, entryCount, 1000, 31);
        const Eigen::MatrixXd dense(m);
        if (entryCount == 60) {
            test::uncompress(&m);
            ASSERT_FALSE(m.isCompressed());
        }
        for (const int kernelSize : {0, 1, 2, 5, 9, 40, 150}) {
            const Eigen::VectorXd kernel = kernelOf(kernelSize);
            const auto context = ::testing::Message()
                                 << entryCount << " entries, kernel of " << kernelSize;
            for (const bool prune : {true, false}) {
                const auto columnWise =
                    EigenUtilities::applyKernelColumnWiseToMatrix(m, kernel, prune);
                const auto rowWise =
                    EigenUtilities::applyKernelRowWiseToMatrix(RowMajorMatrix(m), kernel, prune);
                EXPECT_TRUE(isWellFormed(columnWise)) << context;
                EXPECT_TRUE(isWellFormed(rowWise)) << context;
                EXPECT_EQ(Eigen::MatrixXd(columnWise), convolvedColumns(dense, kernel)) << context;
                EXPECT_EQ(Eigen::MatrixXd(rowWise),
                          convolvedColumns(dense.transpose(), kernel).transpose())
                    << context;
            }
        }
    }
}

TEST(EigenUtilitiesSparseTest, ApexesEqualTheDefinition)
{
    for (const int greatestValue : {2, 3, 10, 100000}) { // few values: many plateaus
        for (const int entryCount : {0, 1, 20, 150, 600}) {
            Eigen::SparseMatrix<double> m =
                test::randomSparseMatrix(25, 12, entryCount, greatestValue, 33);
            if (entryCount == 150) {
                test::uncompress(&m);
            }
            EXPECT_THAT(EigenUtilities::findSparseMatrixApexes(m),
                        ElementsAreArray(apexesByDefinition(Eigen::MatrixXd(m))))
                << entryCount << " entries up to " << greatestValue;
        }
    }
}

} // namespace zel
