#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "turbo/index/SpectrumMatrixBuilder_p.h"

#include <algorithm>
#include <limits>

namespace zel {

namespace {

constexpr Eigen::Index kMaxEntryCount = std::numeric_limits<int>::max();

/// How many entries are reserved in advance at most, 1.5 GiB of address space: a limit on the peaks
/// of a scan that is meant as none must not ask for more memory than there is.
constexpr Eigen::Index kMaxReservedCount = Eigen::Index{1} << 27;

/// What part of the room may stay unused, as giving it back means a copy of all entries.
constexpr Eigen::Index kUnusedPart = 16;

/// Stores a value at a row that is not beyond the last of the ascending rows: in the place of the
/// value there, or between its neighbours. Returns by how many entries they have grown.
int putBetween(int row, double value, int* rows, double* values, Eigen::Index size)
{
    const Eigen::Index place = std::lower_bound(rows, rows + size, row) - rows;
    const bool isNew = rows[place] != row;
    if (isNew) {
        std::copy_backward(rows + place, rows + size, rows + size + 1);
        std::copy_backward(values + place, values + size, values + size + 1);
    }
    rows[place] = row;
    values[place] = value;
    return isNew ? 1 : 0;
}

} // namespace

SpectrumMatrixBuilder::SpectrumMatrixBuilder(int rows,
                                             int columns,
                                             int granularity,
                                             int entriesPerColumn)
    : m_matrix(rows, columns)
    , m_granularity(granularity)
{
    const auto wanted = static_cast<Eigen::Index>(columns) * std::max(entriesPerColumn, 0);
    allocateEntries(&m_matrix, std::min(wanted, kMaxReservedCount));
}

bool SpectrumMatrixBuilder::appendColumn(const QList<QPointF>& spectrum)
{
    if (spectrum.size() > kMaxEntryCount - m_entryCount) {
        return false;
    }
    makeRoomFor(m_entryCount + spectrum.size());
    const auto rowCount = static_cast<int>(m_matrix.rows());
    int* const rows = m_matrix.innerIndexPtr() + m_entryCount;
    double* const values = m_matrix.valuePtr() + m_entryCount;
    Eigen::Index size = 0;
    int lastRow = -1;
    for (const QPointF& peak : spectrum) {
        const int row = FeatureFinderUtilities::hashMz(peak.x(), m_granularity);
        if (row < 0 || row >= rowCount) {
            continue;
        }
        if (row > lastRow) { // as nearly always: peaks come in ascending m/z
            rows[size] = lastRow = row;
            values[size++] = peak.y();
        } else {
            const int grown = putBetween(row, peak.y(), rows, values, size);
            size += grown;
            m_replacedCount += 1 - grown;
        }
    }
    m_entryCount += size;
    m_matrix.outerIndexPtr()[++m_nextColumn] = static_cast<int>(m_entryCount);
    return true;
}

void SpectrumMatrixBuilder::skipToColumn(int column)
{
    while (m_nextColumn < column) {
        m_matrix.outerIndexPtr()[++m_nextColumn] = static_cast<int>(m_entryCount);
    }
}

void SpectrumMatrixBuilder::finish(Eigen::SparseMatrix<double>* result)
{
    skipToColumn(static_cast<int>(m_matrix.cols()));
    const Eigen::Index unused = m_matrix.data().allocatedSize() - m_entryCount;
    if (unused > m_entryCount / kUnusedPart) {
        moveTo(m_entryCount);
    }
    m_matrix.resizeNonZeros(m_entryCount);
    result->swap(m_matrix);
}

void SpectrumMatrixBuilder::makeRoomFor(Eigen::Index entryCount)
{
    const Eigen::Index room = m_matrix.data().size();
    if (entryCount > room) {
        moveTo(std::min(std::max(entryCount, 2 * room), kMaxEntryCount));
    }
}

void SpectrumMatrixBuilder::moveTo(Eigen::Index room)
{
    Eigen::SparseMatrix<double> moved(m_matrix.rows(), m_matrix.cols());
    allocateEntries(&moved, room);
    std::copy_n(m_matrix.innerIndexPtr(), m_entryCount, moved.innerIndexPtr());
    std::copy_n(m_matrix.valuePtr(), m_entryCount, moved.valuePtr());
    std::copy_n(m_matrix.outerIndexPtr(), m_nextColumn + 1, moved.outerIndexPtr());
    m_matrix.swap(moved);
}

} // namespace zel
