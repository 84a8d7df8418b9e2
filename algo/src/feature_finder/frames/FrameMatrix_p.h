#pragma once

#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/stable/MathUtils.h"

#include <Eigen/SparseCore>
#include <QList>
#include <QPointF>

#include <vector>

namespace zel {

/// More columns than any instrument records mobility scans; each costs memory, filled or not.
inline constexpr int kMaxFrameColumnCount = 1000000;

/// The column of a mobility scan, `d2HashFactor` of them to a column.
inline int columnOfD2(int d2, double d2HashFactor)
{
    return MathUtils::truncateToInt(FeatureFinderUtilities::unHashMz(d2, d2HashFactor));
}

/// The entries of a column of a frame, in ascending rows.
struct BinnedScan
{
    std::vector<int> rows;
    std::vector<double> values; ///< parallel to `rows`
};

/// Cuts the m/z of a scan to bins: the bin is the whole part of m/z * binsPerMz. Values are rounded
/// to single precision first. Points without a finite intensity above zero in magnitude, and those
/// outside the rows, are left out; of several in one bin the last is kept.
void binScan(const QList<QPointF>& points,
             double binsPerMz,
             Eigen::Index rowCount,
             BinnedScan* out);

/// Lays columns into a sparse matrix, in ascending order. Of several that go to one place the last
/// counts.
class FrameColumns
{
public:
    FrameColumns(Eigen::Index rows, Eigen::Index columns);

    void append(int column, const BinnedScan& scan);
    void finish(Eigen::SparseMatrix<double>* matrix);

private:
    Eigen::Index m_rowCount;
    std::vector<int> m_rows;
    std::vector<double> m_values;
    std::vector<int> m_ends; ///< by column; 0 for one that is empty
    int m_lastColumn = -1;
    std::size_t m_lastStart = 0;
};

} // namespace zel
