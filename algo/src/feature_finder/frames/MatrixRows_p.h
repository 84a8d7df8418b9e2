#pragma once

#include "common/core_mini/src/algo/numeric/StoredEntries.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>

#include <cstdint>
#include <vector>

namespace zel {

/// A sparse matrix by rows, for work along them. A frame has a million and a half rows of m/z, of
/// which a few thousand hold something: only those are kept here, numbered by their rank, so that
/// all work costs the stored entries and not the rows.
class MatrixRows
{
public:
    explicit MatrixRows(const Eigen::SparseMatrix<double>& matrix);

    /// The entries of a row of the matrix; none for a row that holds nothing.
    StoredEntries row(int row) const;

    /// Each row convolved with the kernel; see EigenUtilities::applyKernelRowWiseToMatrix with
    /// `pruneZeros`.
    void convolve(const Eigen::VectorXd& kernel);

    /// The matrix by columns again.
    void toColumns(Eigen::SparseMatrix<double>* matrix) const;

private:
    bool isOccupied(int row) const;
    std::size_t rankOf(int row) const;

    std::vector<std::uint64_t> m_occupied; ///< one bit for each row of the matrix
    std::vector<int> m_ranks;              ///< rank of the first row of each word of bits
    std::vector<int> m_rows;               ///< by rank, ascending
    Eigen::Index m_rowCount;               ///< of the matrix
    /// Transposed, so that the columns of this are the occupied rows.
    Eigen::SparseMatrix<double> m_entries;
};

} // namespace zel
