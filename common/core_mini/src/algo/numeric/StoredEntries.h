#pragma once

#include "common/stable/LargePages.h"

#include <Eigen/SparseCore>

#include <algorithm>
#include <cstddef>
#include <span>

namespace zel {

/// A view of the stored entries of one inner vector of a sparse matrix: a column of a column-major
/// matrix (indices are rows), a row of a row-major one (indices are columns), or a sparse vector.
/// Indices are ascending. Lives as long as the matrix is not changed.
struct StoredEntries
{
    std::span<const int> indices;
    std::span<const double> values; ///< parallel to `indices`

    std::size_t size() const { return indices.size(); }

    /// The entries whose index lies in [first, last]. \note O(log n).
    StoredEntries between(int first, int last) const
    {
        const auto begin = std::lower_bound(indices.begin(), indices.end(), first);
        const auto end = std::upper_bound(begin, indices.end(), last);
        const auto offset = static_cast<std::size_t>(begin - indices.begin());
        const auto count = static_cast<std::size_t>(end - begin);
        return {indices.subspan(offset, count), values.subspan(offset, count)};
    }

    /// The value at `index`; 0 where nothing is stored. \note O(log n).
    double valueAt(int index) const
    {
        const auto found = std::lower_bound(indices.begin(), indices.end(), index);
        return found == indices.end() || *found != index
                   ? 0.0
                   : values[static_cast<std::size_t>(found - indices.begin())];
    }
};

/// The entries of the column (column-major) or row (row-major) `outer`; compressed or not.
template <int Options>
StoredEntries storedEntries(const Eigen::SparseMatrix<double, Options, int>& matrix,
                            Eigen::Index outer)
{
    const int start = matrix.outerIndexPtr()[outer];
    const int count = matrix.isCompressed() ? matrix.outerIndexPtr()[outer + 1] - start
                                            : matrix.innerNonZeroPtr()[outer];
    const auto size = static_cast<std::size_t>(count);
    return {{matrix.innerIndexPtr() + start, size}, {matrix.valuePtr() + start, size}};
}

template <int Options>
StoredEntries storedEntries(const Eigen::SparseVector<double, Options, int>& vector)
{
    const auto size = static_cast<std::size_t>(vector.nonZeros());
    return {{vector.innerIndexPtr(), size}, {vector.valuePtr(), size}};
}

/// Gives a compressed matrix room for `count` entries, whose places and values are then to be
/// written through its pointers, in large pages where they pay.
template <int Options>
void allocateEntries(Eigen::SparseMatrix<double, Options, int>* matrix, Eigen::Index count)
{
    matrix->resizeNonZeros(count);
    adviseLargePages(matrix->innerIndexPtr(), static_cast<std::size_t>(count) * sizeof(int));
    adviseLargePages(matrix->valuePtr(), static_cast<std::size_t>(count) * sizeof(double));
}

} // namespace zel
