#pragma once

#include "common/stable/Error.h"

#include <Eigen/SparseCore>
#include <queue>

#include <optional>
#include <span>
#include <utility>
#include <vector>

namespace zel {

/// A hill as a point of a matrix of hills: its bin of m/z, its column and its height.
struct HillPoint
{
    int row = 0;
    int column = 0;
    double intensity = 0.0;
};

/// Writes the points of hills into two matrices of SpectraSubtractomatic::clusterRows() rows and 20
/// columns more than the last apex needs. Intensities of points in one cell are summed, in the
/// order of the list.
/// \param points     inside the matrix: rows below clusterRows(), columns not negative
/// \param hillIndex  where a point is, its number in the list; of several in one cell the last
void buildHillMatrices(std::span<const HillPoint> points,
                       Eigen::SparseMatrix<double, 0, int>* frameRaw,
                       Eigen::SparseMatrix<int, 0, int>* hillIndex);

/// Stored values of a magnitude above 1e-12.
int countPoints(const Eigen::SparseMatrix<double, 0, int>& frameRaw);

/// A matrix of hills while clusters are taken out of it: finds the strongest point, cuts the
/// spectrum around it, and subtracts. Rows are cluster bins of m/z.
class ClusterFrame
{
public:
    struct Point
    {
        int row = 0;
        int column = 0;
    };

    /// \param frameRaw           compressed; borrowed. What is taken away stays stored as 0
    /// \param halfWidthColumns   columns to each side of a point that belong to its spectrum
    ClusterFrame(Eigen::SparseMatrix<double, 0, int>* frameRaw, int halfWidthColumns);

    /// Points of a magnitude above 1e-12.
    int pointCount() const { return m_pointCount; }

    /// The place of the greatest value, among equals the first by column and then row; nothing when
    /// none exceeds 1e-12. \note O(log n), as values only ever fall.
    std::optional<Point> strongestPoint();

    /// The sum of the columns around a point, as a slice with the point in its middle.
    Error profileAt(const Point& point, Eigen::SparseVector<double, 0, int>* profile) const;

    /// Subtracts the columns of a model; its middle column belongs to that of the point. What is
    /// then not above 0 is gone.
    void subtract(const Eigen::SparseMatrix<double, 0, int>& model, const Point& point);

    void remove(const Point& point);

    int halfWidthColumns() const { return m_halfWidthColumns; }

private:
    struct Candidate
    {
        double value;
        int column;
        int row;
        int entry; ///< place among the stored entries

        /// The heap gives the greatest value first, among equal ones the first place.
        friend bool operator<(const Candidate& a, const Candidate& b)
        {
            return a.value != b.value ? a.value < b.value
                                      : std::pair(a.column, a.row) > std::pair(b.column, b.row);
        }
    };

    void setValue(int entry, double value);
    void dropNegativeValues();

    Eigen::SparseMatrix<double, 0, int>* m_frameRaw;
    int m_halfWidthColumns;
    int m_pointCount = 0;
    bool m_mayHoldNegatives = false;
    std::priority_queue<Candidate> m_candidates; ///< each point once, with a value it had
};

} // namespace zel
