#pragma once

#include <Eigen/SparseCore>
#include <QSharedData>

#include <deque>
#include <vector>

namespace zel {

/// The sum of a window of sparse frames of one shape, to which frames are added and from which they
/// are taken away again, each for the cost of its own entries.
///
/// Each column is a hash table of its cells by row. A cell knows how many frames are in its sum, so
/// that it is gone, without a remainder of rounding, when the last one is. Where a subtraction
/// cancels most of a cell's digits, the cell is summed anew.
class FrameSum : public QSharedData
{
public:
    using Matrix = Eigen::SparseMatrix<double>;

    /// Makes the sum one of no frames, of this shape.
    void reset(int rows, int columns);

    void add(const Matrix& frame);

    /// Takes away a frame that was added. \param others  the frames that stay in the sum
    void subtract(const Matrix& frame, const std::deque<Matrix>& others);

    int rows() const { return m_rows; }
    int columns() const { return static_cast<int>(m_columns.size()); }

    /// All sums above 0, by column and inside a column in an order of no meaning.
    std::vector<double> values() const;

    /// The cells whose sum exceeds `threshold`, which is at least 0.
    /// \param out  becomes a compressed matrix of this shape
    void cellsAbove(double threshold, Matrix* out) const;

private:
    struct Cell
    {
        int row;
        int frameCount; ///< frames in the sum; without any the cell counts as not there
        double sum;
        double scale; ///< greatest magnitude since the sum was last known without rounding errors
    };

    /// The cells of a column, found by open addressing with linear probing. Cells without frames
    /// stay in place until they are as many as the others.
    class Column
    {
    public:
        /// The cell of a row; made when there is none.
        Cell& cellAt(int row);
        /// Takes a value out of a cell. \param sumAnew  gives the sum of what stays in a row
        template <typename SumAnew>
        void subtract(int row, double value, SumAnew sumAnew);
        void removeDeadCells();

        const std::vector<Cell>& cells() const { return m_cells; }

    private:
        std::size_t slotOf(int row) const;
        void rebuild(std::size_t slotCount);

        std::vector<Cell> m_cells;
        std::vector<int> m_slots; ///< index of a cell, or -1; a power of two
        int m_shift = 0;          ///< hash bits that are not used
        std::size_t m_deadCount = 0;
    };

    int m_rows = 0;
    std::vector<Column> m_columns;
};

} // namespace zel
