#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "turbo/index/MzDirectory_p.h"

#include <algorithm>
#include <limits>
#include <span>
#include <utility>

namespace zel {

namespace {

constexpr Eigen::Index kEntriesPerRange = 16;

/// The first and the last row that hold an entry; at least one does. Rows ascend in each column.
std::pair<int, int> rowLimits(const Eigen::SparseMatrix<double>& matrix)
{
    int lowest = std::numeric_limits<int>::max();
    int highest = 0;
    for (Eigen::Index column = 0; column < matrix.cols(); ++column) {
        const std::span<const int> rows = storedEntries(matrix, column).indices;
        if (!rows.empty()) {
            lowest = std::min(lowest, rows.front());
            highest = std::max(highest, rows.back());
        }
    }
    return {lowest, highest};
}

} // namespace

MzDirectory::MzDirectory(const Eigen::SparseMatrix<double>& matrix)
    : m_columnCount(matrix.cols())
{
    const int* const rows = matrix.innerIndexPtr();
    const int* const outer = matrix.outerIndexPtr();
    if (matrix.nonZeros() > 0) {
        const auto [lowest, highest] = rowLimits(matrix);
        const Eigen::Index wantedRanges = matrix.nonZeros() / matrix.cols() / kEntriesPerRange + 1;
        m_firstRow = lowest;
        while ((static_cast<Eigen::Index>(highest - lowest) >> m_shift) >= wantedRanges) {
            ++m_shift;
        }
        m_rangeCount = rangeOf(highest) + 1;
    }
    m_starts.resize(static_cast<std::size_t>((m_rangeCount + 1) * m_columnCount));
    for (Eigen::Index column = 0; column < matrix.cols(); ++column) {
        int range = 0;
        for (int place = outer[column]; place < outer[column + 1]; ++place) {
            for (; range <= rangeOf(rows[place]); ++range) {
                startsOf(range)[column] = place;
            }
        }
        for (; range <= m_rangeCount; ++range) {
            startsOf(range)[column] = outer[column + 1];
        }
    }
}

MzDirectory::Places MzDirectory::places(int row) const
{
    // Rows before the first range end where that starts, rows after the last start where it
    // ends.
    const int range = row < m_firstRow ? 0 : std::min(rangeOf(row), m_rangeCount);
    const int* const starts = m_starts.data() + range * m_columnCount;
    const bool isInside = row >= m_firstRow && range < m_rangeCount;
    return {starts, isInside ? starts + m_columnCount : starts};
}

} // namespace zel
