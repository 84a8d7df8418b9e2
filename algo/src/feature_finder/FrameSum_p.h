#pragma once

#include "common/core_mini/src/algo/StoredEntries.h"

#include <Eigen/SparseCore>
#include <QSharedData>

#include <deque>
#include <vector>

namespace zel {

/// The sum of a window of sparse frames of one shape. A frame is added, or taken away again, for
/// the cost of its own entries, and the strongest cells of the sum are told for the cost of about
/// their number, however long the window is.
///
/// Each column is a hash table of its cells by row. A cell knows how many frames are in its sum, so
/// that it is gone, without a remainder of rounding, when the last one is; and whether its sum was
/// ever rounded, in which case a subtraction sums it anew from the frames that stay. Values in
/// single precision seldom need that, as their sums have 29 bits to spare. Cells above a bound are
/// listed; the bound is set anew when the list no longer suits what is asked for.
class FrameSum : public QSharedData
{
public:
    using Matrix = Eigen::SparseMatrix<double>;

    /// Makes the sum one of no frames, of this shape.
    void reset(int rows, int columns);

    void add(const Matrix& frame);

    /// Takes away the first of these frames, all of which but the last are in the sum, and adds the
    /// last.
    void replaceFirstByLast(const std::deque<Matrix>& frames);

    int rows() const { return m_rows; }
    int columns() const { return static_cast<int>(m_columns.size()); }

    /// The cells of a sum above 0 that exceed the noise, which is `noiseFloor` times the median of
    /// them all; and of more than `maxCount` of these, those that exceed the one of this rank, the
    /// strongest being of rank 0, so that equal ones at the limit all go.
    /// \param noiseFloor  0: no noise
    /// \param out         becomes a compressed matrix of this shape
    void strongestCells(double noiseFloor, std::size_t maxCount, Matrix* out);

private:
    struct Cell
    {
        int row;
        unsigned frameCount : 30; ///< frames in the sum; without any the cell counts as not there
        unsigned isRounded : 1;
        unsigned isListed : 1; ///< among the strong cells of its column
        double sum;

        void add(double value);
    };

    /// What all cells together are.
    struct Census
    {
        double strongBound = 0.0;      ///< cells above this are listed
        std::size_t positiveCount = 0; ///< cells above 0
    };

    /// The cells of a column, found by open addressing with linear probing. Cells without frames
    /// stay in place until they are as many as the others.
    class Column
    {
    public:
        void add(const StoredEntries& entries, Census* census);
        /// \param sumAnew  gives a cell with the sum of what stays in a row
        template <typename SumAnew>
        void subtract(const StoredEntries& entries, Census* census, SumAnew sumAnew);

        const std::vector<Cell>& cells() const { return m_cells; }

        /// Lists the cells above the bound anew.
        void relist(double strongBound);
        /// Calls `use(row, sum)` for the cells above the bound, and takes the others off the list.
        template <typename Use>
        void forEachStrong(double strongBound, Use use);

    private:
        std::size_t slotOf(int row) const;
        std::size_t cellAt(int row);
        void countIn(std::size_t index, double sumBefore, Census* census);
        void rebuild(std::size_t slotCount);
        void removeDeadCells();

        std::vector<Cell> m_cells;
        std::vector<int> m_slots; ///< index of a cell, or -1; a power of two
        int m_shift = 0;          ///< hash bits that are not used
        std::size_t m_deadCount = 0;
        std::vector<int> m_strong; ///< indices of the listed cells
    };

    std::vector<double> strongSums();
    std::vector<double> positiveSums() const;
    void setStrongBound(std::size_t wantedCount);
    bool isNoiseBelow(double limit, double noiseFloor, const std::vector<double>& strong) const;

    int m_rows = 0;
    std::vector<Column> m_columns;
    Census m_census;
};

} // namespace zel
