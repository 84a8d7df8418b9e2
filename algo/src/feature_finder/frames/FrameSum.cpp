#include "common/stable/MathUtils.h"
#include "common/stable/SharedNumbers.h"
#include "feature_finder/frames/FrameMatrix_p.h"
#include "feature_finder/frames/FrameSum_p.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>

namespace zel {

namespace {

/// 2^32 over the golden ratio: multiplied by it, rows in sequence spread over the upper bits
/// (Knuth, The Art of Computer Programming 3, 6.4).
constexpr std::uint32_t kHashFactor = 2654435769U;

/// Slots for each cell after a rebuild; half of them are used before the next one.
constexpr std::size_t kSlotsPerCell = 4;
constexpr std::size_t kFewestSlots = 16;

/// The list of strong cells starts with this many times the cells that are wanted of it, and is
/// made again when it has grown to as many again.
constexpr std::size_t kListReserve = 2;

/// How many entries ahead memory is asked for: rows are spread all over a column, and each look
/// that had to wait would hold up the next.
constexpr std::size_t kAhead = 12;

/// Whether a + b is `sum` without rounding; NaN never is.
bool isExactSum(double a, double b, double sum)
{
    return sum - a == b && sum - b == a;
}

/// The value of a rank, counted from 0 for the greatest; there are more values than that.
double valueOfRank(std::vector<double> values, std::size_t rank)
{
    const auto ranked = values.begin() + static_cast<std::ptrdiff_t>(rank);
    std::nth_element(values.begin(), ranked, values.end(), std::greater<>());
    return *ranked;
}

/// The median of the values that are not zero.
double medianOf(std::vector<double> values)
{
    std::erase_if(values, [](double value) { return std::abs(value) <= kNegligible; });
    return MathUtils::median(std::move(values));
}

} // namespace

void FrameSum::Cell::add(double value)
{
    const double before = sum;
    sum += value;
    ++frameCount;
    if (!isExactSum(before, value, sum)) {
        isRounded = 1;
    }
}

std::size_t FrameSum::Column::firstSlotOf(int row) const
{
    return (static_cast<std::uint32_t>(row) * kHashFactor) >> m_shift;
}

std::size_t FrameSum::Column::slotOf(int row) const
{
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = firstSlotOf(row);
    while (m_slots[slot] >= 0 && m_cells[static_cast<std::size_t>(m_slots[slot])].row != row) {
        slot = (slot + 1) & mask;
    }
    return slot;
}

/// The index of the cell of a row; made when there is none.
int FrameSum::Column::cellAt(int row)
{
    if (2 * (m_usedSlotCount + 1) > m_slots.size()) {
        rebuild();
    }
    int& index = m_slots[slotOf(row)];
    if (index < 0) {
        index = newCell(row);
        ++m_usedSlotCount;
    }
    return index;
}

int FrameSum::Column::newCell(int row)
{
    while (!m_free.empty()) {
        const int index = m_free.back();
        m_free.pop_back();
        Cell& cell = m_cells[static_cast<std::size_t>(index)];
        cell.isFree = 0;
        if (cell.frameCount == 0) { // else its own row has come back meanwhile
            cell.row = row;
            return index;
        }
    }
    m_cells.push_back({row, 0, 0, 0, 0, 0.0});
    return static_cast<int>(m_cells.size()) - 1;
}

/// Counts and lists a cell after its sum has changed.
void FrameSum::Column::countIn(int index, double sumBefore, Census* census)
{
    Cell& cell = m_cells[static_cast<std::size_t>(index)];
    census->positiveCount += (cell.sum > 0.0 ? 1 : 0) - (sumBefore > 0.0 ? 1 : 0);
    if (cell.sum > census->strongBound && cell.isListed == 0) {
        cell.isListed = 1;
        m_strong.push_back(index);
    }
}

void FrameSum::Column::add(const StoredEntries& entries, int* cells, Census* census)
{
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i + kAhead < entries.size() && !m_slots.empty()) {
            __builtin_prefetch(&m_slots[firstSlotOf(entries.indices[i + kAhead])]);
        }
        const int index = cellAt(entries.indices[i]);
        Cell& cell = m_cells[static_cast<std::size_t>(index)];
        const double before = cell.sum;
        cell.add(entries.values[i]);
        countIn(index, before, census);
        cells[i] = index;
    }
}

template <typename SumAnew>
void FrameSum::Column::subtract(const StoredEntries& entries,
                                const int* cells,
                                Census* census,
                                SumAnew freshSum)
{
    for (std::size_t i = 0; i < entries.size(); ++i) {
        if (i + kAhead < entries.size()) {
            __builtin_prefetch(&m_cells[static_cast<std::size_t>(cells[i + kAhead])]);
        }
        Cell& cell = m_cells[static_cast<std::size_t>(cells[i])];
        const double before = cell.sum;
        cell.sum -= entries.values[i];
        --cell.frameCount;
        if (cell.frameCount == 0) {
            cell.sum = 0.0;
            cell.isRounded = 0;
            if (cell.isFree == 0) {
                cell.isFree = 1;
                m_free.push_back(cells[i]);
            }
        } else if (cell.isRounded != 0 || !isExactSum(cell.sum, entries.values[i], before)) {
            const Cell fresh = freshSum(cell.row);
            cell.sum = fresh.sum;
            cell.isRounded = fresh.isRounded & 1U;
        }
        countIn(cells[i], before, census);
    }
}

/// Makes the slots again, from those cells only that have frames.
void FrameSum::Column::rebuild()
{
    m_usedSlotCount = static_cast<std::size_t>(std::count_if(
        m_cells.begin(), m_cells.end(), [](const Cell& cell) { return cell.frameCount > 0; }));
    const std::size_t slotCount =
        std::max(kFewestSlots, std::bit_ceil(kSlotsPerCell * m_usedSlotCount));
    m_slots.assign(slotCount, -1);
    m_shift = 32 - static_cast<int>(std::bit_width(slotCount - 1));
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        if (m_cells[i].frameCount > 0) {
            m_slots[slotOf(m_cells[i].row)] = static_cast<int>(i);
        }
    }
}

void FrameSum::Column::relist(double strongBound)
{
    m_strong.clear();
    for (std::size_t i = 0; i < m_cells.size(); ++i) {
        m_cells[i].isListed = m_cells[i].sum > strongBound ? 1 : 0;
        if (m_cells[i].isListed != 0) {
            m_strong.push_back(static_cast<int>(i));
        }
    }
}

template <typename Use>
void FrameSum::Column::forEachStrong(double strongBound, Use use)
{
    std::erase_if(m_strong, [this, strongBound, &use](int index) {
        Cell& cell = m_cells[static_cast<std::size_t>(index)];
        if (cell.sum > strongBound) {
            use(cell.row, cell.sum);
            return false;
        }
        cell.isListed = 0;
        return true;
    });
}

void FrameSum::reset(int rows, int columns)
{
    m_rows = rows;
    m_frames.clear();
    m_columns.assign(static_cast<std::size_t>(columns), Column());
    m_census = Census();
}

/// Takes a frame into the window.
void FrameSum::takeOver(Matrix* frame)
{
    m_frames.emplace_back().entries.swap(*frame);
    m_frames.back().cells.resize(static_cast<std::size_t>(m_frames.back().entries.nonZeros()));
}

void FrameSum::append(Matrix* frame)
{
    takeOver(frame);
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const auto column = static_cast<Eigen::Index>(i);
        m_columns[i].add(
            m_frames.back().entriesOf(column), m_frames.back().cellsOf(column), &m_census);
    }
}

void FrameSum::slide(Matrix* frame)
{
    takeOver(frame);
    for (std::size_t i = 0; i < m_columns.size(); ++i) { // both while the column is at hand
        const auto column = static_cast<Eigen::Index>(i);
        const auto freshSum = [this, column](int row) {
            Cell cell = {row, 0, 0, 0, 0, 0.0};
            for (auto stays = m_frames.begin() + 1; stays != m_frames.end() - 1; ++stays) {
                const double value = stays->entriesOf(column).valueAt(row);
                if (value != 0.0) { // zeros are not stored
                    cell.add(value);
                }
            }
            return cell;
        };
        Frame& oldest = m_frames.front();
        Frame& newest = m_frames.back();
        m_columns[i].subtract(
            oldest.entriesOf(column), oldest.cellsOf(column), &m_census, freshSum);
        m_columns[i].add(newest.entriesOf(column), newest.cellsOf(column), &m_census);
    }
    m_frames.pop_front();
}

std::vector<double> FrameSum::positiveSums() const
{
    std::vector<double> sums;
    sums.reserve(m_census.positiveCount);
    for (const Column& column : m_columns) {
        for (const Cell& cell : column.cells()) {
            if (cell.sum > 0.0) {
                sums.push_back(cell.sum);
            }
        }
    }
    return sums;
}

std::vector<double> FrameSum::strongSums()
{
    std::vector<double> sums;
    for (Column& column : m_columns) {
        column.forEachStrong(m_census.strongBound,
                             [&sums](int /*row*/, double sum) { sums.push_back(sum); });
    }
    return sums;
}

/// Sets the bound so that this many cells are listed, or somewhat less when there are equal ones;
/// all of them when there are no more.
void FrameSum::setStrongBound(std::size_t wantedCount)
{
    m_census.strongBound =
        m_census.positiveCount > wantedCount ? valueOfRank(positiveSums(), wantedCount) : 0.0;
    for (Column& column : m_columns) {
        column.relist(m_census.strongBound);
    }
}

/// Whether more than half of the cells say that the noise lies below the limit. False tells
/// nothing.
bool FrameSum::isNoiseBelow(double limit,
                            double noiseFloor,
                            const std::vector<double>& strong) const
{
    const auto isBelow = [=](double sum) { return sum * noiseFloor < limit; };
    const std::size_t weakCount =
        isBelow(m_census.strongBound) ? m_census.positiveCount - strong.size() : 0;
    const auto below =
        weakCount + static_cast<std::size_t>(std::count_if(strong.begin(), strong.end(), isBelow));
    return 2 * below > m_census.positiveCount;
}

void FrameSum::strongestCells(double noiseFloor, std::size_t maxCount, Matrix* out)
{
    std::vector<double> strong = strongSums();
    const bool isTooShort = m_census.strongBound > 0.0 && strong.size() <= maxCount;
    if (isTooShort || strong.size() > 2 * kListReserve * maxCount) {
        setStrongBound(kListReserve * maxCount);
        strong = strongSums();
    }
    // A list that is still too short stops at equal cells, of which one has the rank.
    double limit = strong.size() > maxCount ? valueOfRank(strong, maxCount) : m_census.strongBound;
    // Of both limits the higher one counts: when it is that of the rank, all cells above it exceed
    // the noise too, and when it is that of the noise, no more than wanted are left.
    if (std::abs(noiseFloor) > kNegligible && !isNoiseBelow(limit, noiseFloor, strong)) {
        limit = std::max(limit, medianOf(positiveSums()) * noiseFloor);
    }

    std::vector<std::pair<int, double>> cells;
    Matrix matrix(m_rows, columns());
    for (std::size_t i = 0; i < m_columns.size(); ++i) {
        const auto first = static_cast<std::ptrdiff_t>(cells.size());
        m_columns[i].forEachStrong(m_census.strongBound, [&cells, limit](int row, double sum) {
            if (sum > limit) {
                cells.emplace_back(row, sum);
            }
        });
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
