#pragma once

#include <Eigen/SparseCore>

#include <random>
#include <vector>

namespace zel::test {

/// A matrix with about `entryCount` entries at random places. Values are whole numbers from 1 to
/// `greatestValue`, so that sums are exact and small limits make many equal neighbours.
inline Eigen::SparseMatrix<double> randomSparseMatrix(
    int rows, int columns, int entryCount, int greatestValue, unsigned seed)
{
    std::mt19937 generator(seed);
    std::uniform_int_distribution<int> row(0, rows - 1);
    std::uniform_int_distribution<int> column(0, columns - 1);
    std::uniform_int_distribution<int> value(1, greatestValue);
    std::vector<Eigen::Triplet<double>> entries;
    for (int i = 0; i < entryCount; ++i) {
        const int entryRow = row(generator);
        const int entryColumn = column(generator);
        entries.emplace_back(entryRow, entryColumn, value(generator));
    }
    Eigen::SparseMatrix<double> matrix(rows, columns);
    matrix.setFromTriplets(
        entries.begin(), entries.end(), [](double /*first*/, double last) { return last; });
    return matrix;
}

/// Gives each column some unused room behind its entries. (A copy would be compressed again.)
inline void uncompress(Eigen::SparseMatrix<double>* matrix)
{
    matrix->reserve(Eigen::VectorXi::Constant(matrix->cols(), 2));
}

} // namespace zel::test
