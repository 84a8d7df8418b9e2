#pragma once

#include <Eigen/SparseCore>
#include <QList>
#include <QPointF>

namespace zel {

/// Builds a matrix of intensities, rows m/z bins and columns spectra, column by column from the
/// first. The entries go straight to their place in the compressed matrix.
///
/// A peak takes the row FeatureFinderUtilities::hashMz(mz, granularity); one without a row is left
/// out. Of several peaks of a spectrum in one row the last stays. A peak of intensity 0 is stored.
class SpectrumMatrixBuilder
{
public:
    /// \param rows, columns    the shape, none negative
    /// \param entriesPerColumn for how many entries a column room is reserved in advance; more is
    ///                         made as needed
    SpectrumMatrixBuilder(int rows, int columns, int granularity, int entriesPerColumn);

    /// Fills the next column. \return false when the matrix would hold 2^31 entries
    [[nodiscard]] bool appendColumn(const QList<QPointF>& spectrum);
    /// Leaves the columns up to, not including, `column` empty.
    void skipToColumn(int column);

    Eigen::Index entryCount() const { return m_entryCount; }
    /// How many peaks gave way to a later one of their spectrum in the same row.
    Eigen::Index replacedCount() const { return m_replacedCount; }

    /// Hands the matrix over, its remaining columns empty, and all but a small part of the room
    /// that was not used released.
    void finish(Eigen::SparseMatrix<double>* result);

private:
    void makeRoomFor(Eigen::Index entryCount);
    /// Moves the entries so far to memory with this room.
    void moveTo(Eigen::Index room);

    Eigen::SparseMatrix<double> m_matrix;
    int m_granularity;
    int m_nextColumn = 0;
    Eigen::Index m_entryCount = 0;
    Eigen::Index m_replacedCount = 0;
};

} // namespace zel
