#include "FrameSum_p.h"
#include "common/core_mini/src/algo/StoredEntries.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <utility>

namespace zel {

namespace {

/// A cell whose sum fell below this part of its scale is summed anew: of the 53 bits of a double,
/// 33 are right before that.
constexpr double kCancellation = 0x1p-20;

/// 2^32 over the golden ratio: multiplied by it, rows in sequence spread over the upper bits
/// (Knuth, The Art of Computer Programming 3, 6.4).
constexpr std::uint32_t kHashFactor = 2654435769U;

constexpr std::size_t kFewestSlots = 16;

} // namespace

std::size_t FrameSum::Column::slotOf(int row) const
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = (static_cast<std::uint32_t>(row) * kHashFactor) >> m_shift;
    while (m_slots[slot] >= 0 && m_cells[static_cast<std::size_t>(m_slots[slot])].row != row) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

FrameSum::Cell& FrameSum::Column::cellAt(int row)
{
    if (2 * (m_cells.size() + 1) > m_slots.size()) {
        rebuild(std::max(kFewestSlots, 2 * m_slots.size()));
    }
    const std::size_t slot = slotOf(row);
    if (m_slots[slot] < 0) {
        m_slots[slot] = static_cast<int>(m_cells.size());
        m_cells.push_back({row, 0, 0.0, 0.0});
        ++m_deadCount;
    }
    Cell& cell = m_cells[static_cast<std::size_t>(m_slots[slot])];
    m_deadCount -= cell.frameCount == 0 ? 1 : 0;
    return cell;
}

template <typename SumAnew>
void FrameSum::Column::subtract(int row, double value, SumAnew sumAnew)
{
    const int index = m_slots.empty() ? -1 : m_slots[slotOf(row)];
    if (index < 0) {
        return; // the frame was never added
    }
    Cell& cell = m_cells[static_cast<std::size_t>(index)];
    if (--cell.frameCount == 0) {
        cell.sum = cell.scale = 0.0;
        ++m_deadCount;
        return;
    }
    cell.sum -= value;
    if (!(std::abs(cell.sum) > cell.scale * kCancellation)) {
        cell.sum = sumAnew(row);
        cell.scale = std::abs(cell.sum);
    }
}

void FrameSum::Column::removeDeadCells()
{
    if (2 * m_deadCount > m_cells.size()) {
        std::erase_if(m_cells, [](const Cell& cell) { return cell.frameCount == 0; });
        m_deadCount = 0;
        rebuild(std::max(kFewestSlots, std::bit_ceil(2 * m_cells.size() + 2)));
    }
}

void FrameSum::Column::rebuild(std::size_t slotCount)
{
    m_slots.assign(slotCount, -1);
    m_shift = 32 - static_cast<int>(std::bit_width(slotCount - 1));
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        m_slots[slotOf(m_cells[i].row)] = static_cast<int>(i);
    }
}

void FrameSum::reset(int rows, int columns)
{
    m_rows = rows;
    m_columns.assign(static_cast<std::size_t>(columns), Column());
}

void FrameSum::add(const Matrix& frame)
{
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const StoredEntries entries = storedEntries(frame, static_cast<Eigen::Index>(i));
        for (std::size_t k = 0; k < entries.size(); ++k) {
            Cell& cell = m_columns[i].cellAt(entries.indices[k]);
            ++cell.frameCount;
            cell.sum += entries.values[k];
            cell.scale = std::max({cell.scale, std::abs(cell.sum), std::abs(entries.values[k])});
        }
    }
}

void FrameSum::subtract(const Matrix& frame, const std::deque<Matrix>& others)
{
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const auto column = static_cast<Eigen::Index>(i);
        const auto sumAnew = [&others, column](int row) {
            double sum = 0.0;
            for (const Matrix& other : others) {
                sum += storedEntries(other, column).valueAt(row);
            }
            return sum;
        };
        const StoredEntries entries = storedEntries(frame, column);
        for (std::size_t k = 0; k < entries.size(); ++k) {
            m_columns[i].subtract(entries.indices[k], entries.values[k], sumAnew);
        }
        m_columns[i].removeDeadCells();
    }
}

std::vector<double> FrameSum::values() const
{
    std::vector<double> sums;
    for (const Column& column : m_columns) {
        for (const Cell& cell : column.cells()) {
            if (cell.sum > 0.0) {
                sums.push_back(cell.sum);
            }
        }
    }
    return sums;
}

void FrameSum::cellsAbove(double threshold, Matrix* out) const
{
    std::vector<std::pair<int, double>> cells;
    Matrix matrix(m_rows, columns());
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const auto first = static_cast<std::ptrdiff_t>(cells.size());
        for (const Cell& cell : m_columns[i].cells()) {
            if (cell.sum > threshold) {
                cells.emplace_back(cell.row, cell.sum);
            }
        }
        std::sort(cells.begin() + first, cells.end());
        matrix.outerIndexPtr()[i + 1] = static_cast<int>(cells.size());
    }
    allocateEntries(&matrix, static_cast<Eigen::Index>(cells.size()));
    for (std::size_t i = 0; i < cells.size(); ++i) {
        matrix.innerIndexPtr()[i] = cells[i].first;
        matrix.valuePtr()[i] = cells[i].second;
    }
    out->swap(matrix);
}

} // namespace zel
