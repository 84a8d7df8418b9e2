#pragma once

#include "common/core_mini/src/algo/numeric/StoredEntries.h"

#include <Eigen/SparseCore>
#include <QSharedData>

#include <deque>
#include <vector>

namespace zel {

/// A window of sparse frames of one shape and their sum. A frame is added, or taken away again, for
/// the cost of its own entries, and the strongest cells of the sum are known for the cost of about
/// their number, however long the window is.
///
/// Each column is a hash table of its cells by row, and a frame remembers the cells that it went
/// to. A cell knows how many frames are in its sum, so that it is gone, without a remainder of
/// rounding, when the last one is; and whether its sum was ever rounded, in which case it is summed
/// again from the frames that stay. Values in single precision seldom need that, as their sums have
/// 29 bits to spare. Cells above a bound are listed; the bound is set again when the list no longer
/// suits what is asked for.
class FrameSum : public QSharedData
{
public:
    using Matrix = Eigen::SparseMatrix<double>;

    /// Empties the window and gives it this shape.
    void reset(int rows, int columns);

    int rows() const { return m_rows; }
    int columns() const { return static_cast<int>(m_columns.size()); }
    /// The frames in the sum.
    int frameCount() const { return static_cast<int>(m_frames.size()); }

    /// Adds a frame, which is compressed and is taken over.
    void append(Matrix* frame);
    /// The same, and takes the oldest one away.
    void slide(Matrix* frame);

    /// The cells of a sum above 0 that exceed the noise, which is `noiseFloor` times the median of
    /// them all; and of more than `maxCount` of these, those that exceed the one of this rank, the
    /// strongest being of rank 0, so that equal ones at the limit all go.
    /// \param noiseFloor  0: no noise
    /// \param out         becomes a compressed matrix of this shape
    void strongestCells(double noiseFloor, std::size_t maxCount, Matrix* out);

private:
    struct Frame
    {
        Matrix entries;         ///< compressed
        std::vector<int> cells; ///< parallel to the entries: the index of the cell in its column

        StoredEntries entriesOf(Eigen::Index column) const
        {
            return storedEntries(entries, column);
        }
        int* cellsOf(Eigen::Index column) { return cells.data() + entries.outerIndexPtr()[column]; }
    };

    struct Cell
    {
        int row;
        unsigned frameCount : 29; ///< frames in the sum; without any the cell counts as not there
        unsigned isRounded : 1;
        unsigned isListed : 1; ///< among the strong cells of its column
        unsigned isFree : 1;   ///< among the free cells of its column
        double sum;

        void add(double value);
    };

    /// What all cells together are.
    struct Census
    {
        double strongBound = 0.0;      ///< cells above this are listed
        std::size_t positiveCount = 0; ///< cells above 0
    };

    /// The cells of a column, found by open addressing with linear probing. A cell without frames
    /// keeps its row until another row takes its place; a slot that led to it then leads to a cell
    /// of another row, which a search passes by.
    class Column
    {
    public:
        /// \param cells  gets the index of the cell of each entry
        void add(const StoredEntries& entries, int* cells, Census* census);
        /// \param cells    the index of the cell of each entry
        /// \param freshSum  gives a cell with the sum of what stays in a row
        template <typename SumAnew>
        void subtract(const StoredEntries& entries,
                      const int* cells,
                      Census* census,
                      SumAnew freshSum);

        const std::vector<Cell>& cells() const { return m_cells; }

        /// Lists the cells above the bound again.
        void relist(double strongBound);
        /// Calls `use(row, sum)` for the cells above the bound, and takes the others off the list.
        template <typename Use>
        void forEachStrong(double strongBound, Use use);

    private:
        std::size_t firstSlotOf(int row) const;
        std::size_t slotOf(int row) const;
        int cellAt(int row);
        int newCell(int row);
        void countIn(int index, double sumBefore, Census* census);
        void rebuild();

        std::vector<Cell> m_cells;
        std::vector<int> m_slots; ///< index of a cell, or -1; a power of two
        int m_shift = 0;          ///< hash bits that are not used
        std::size_t m_usedSlotCount = 0;
        std::vector<int> m_free;   ///< indices of the cells without frames, and of some that have
        std::vector<int> m_strong; ///< indices of the listed cells
    };

    void takeOver(Matrix* frame);
    std::vector<double> strongSums();
    std::vector<double> positiveSums() const;
    void setStrongBound(std::size_t wantedCount);
    bool isNoiseBelow(double limit, double noiseFloor, const std::vector<double>& strong) const;

    int m_rows = 0;
    std::deque<Frame> m_frames; ///< oldest first
    std::vector<Column> m_columns;
    Census m_census;
};

} // namespace zel
