#pragma once

#include <Eigen/SparseCore>

#include <vector>

namespace zel {

/// Tells where in each column of a matrix the entries of an m/z range start, without a search: for
/// every 2^n rows it holds the place of the first entry of each column at or after them. The
/// places of one range follow each other by column, so that a walk over the columns reads
/// memory in its order and can fetch entries ahead.
///
/// Ranges are chosen to hold about 16 entries of a column on average, which costs a quarter of a
/// byte for each entry of the matrix.
class MzDirectory
{
public:
    MzDirectory() = default;
    /// \param matrix  compressed; rows are m/z bins
    explicit MzDirectory(const Eigen::SparseMatrix<double>& matrix);

    /// For each column the place, in the arrays of the whole matrix, of the first entry of the
    /// range that `row` lies in, and of the first entry after that range.
    struct Places
    {
        const int* starts; ///< one a column
        const int* ends;
    };
    Places places(int row) const;

private:
    int rangeOf(int row) const { return (row - m_firstRow) >> m_shift; }
    int* startsOf(int range) { return m_starts.data() + range * m_columnCount; }

    int m_firstRow = 0;
    int m_shift = 0;
    int m_rangeCount = 0;
    std::ptrdiff_t m_columnCount = 0;
    std::vector<int> m_starts; ///< m_rangeCount + 1 times one a column
};

} // namespace zel
