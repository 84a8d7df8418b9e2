#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "common/stable/SharedNumbers.h"

#include <Eigen/SparseCore>
#include <QList>
#include <QPointF>

#include <limits>
#include <utility>

namespace zel {

/// Binning of m/z, slices of binned signal, and figures of point lists.
///
/// A bin is one step of a regular grid: bin b stands for the m/z b / binsPerUnit and takes the
/// values nearest to it. All sparse spectra and frames of the library are indexed by such bins.
class ZEL_EXPORT FeatureFinderUtilities
{
public:
    /// The bin whose m/z is nearest to `mz`, of two the higher: floor(mz * binsPerUnit + 0.5).
    /// Ascending in `mz`. A result beyond the range of `int` becomes the end of that range; NaN
    /// becomes its lower end, which no spectrum has.
    static int hashMz(double mz, double binsPerUnit) { return floorToInt(mz * binsPerUnit + 0.5); }

    /// The m/z that a bin stands for.
    static double unHashMz(int bin, double binsPerUnit) { return bin / binsPerUnit; }

    /// The first and the last bin whose m/z lies in [start - tolerance, end + tolerance]. The first
    /// lies above the last when no bin does, such as in a window between two bins, or when a limit
    /// is NaN. Bins beyond the range of `int` become the end of that range.
    static std::pair<int, int> hashMz(double start,
                                      double end,
                                      double binsPerUnit,
                                      double tolerance);

    /// `ppm` parts per million of `value`, in its unit.
    static double calculatePPMTolerance(const double& value, const int& ppm)
    {
        return value * ppm * kPartsPerMillion;
    }

    /// The greatest y; 0 for an empty list. NaN does not count.
    static double findPoint2dListMaximum(const QList<QPointF>& points);

    /// The median of the y values; 0 for an empty list.
    static double calculateMedianPoint2dList(const QList<QPointF>& points);

    /// The mean of x, weighted by y; the plain mean when the weights sum to 0, and 0 for an empty
    /// list.
    static double calculatedWeightedRetentionTime(const QList<QPointF>& points);

    /// The part of a scan around a bin. Its shape does not depend on the scan: `out` gets the
    /// length 2 * halfWidth + 1, and `centerBin` stands at the index `halfWidth`. What lies outside
    /// the scan is empty.
    /// \return kBadParameterError, with `out` unchanged, for a half width below 0 or beyond half
    ///         the range of `int`
    /// \note O(log n + entries copied).
    static Error sliceScan(const Eigen::SparseVector<double, Eigen::RowMajor, int>& scan,
                           int centerBin,
                           int halfWidth,
                           Eigen::SparseVector<double>* out);

    /// The block of a frame around a cell, 2 * rowHalfWidth + 1 rows by 2 * columnHalfWidth + 1
    /// columns, with (centerRow, centerColumn) at the index (rowHalfWidth, columnHalfWidth). What
    /// lies outside the frame is empty. `out` may be the frame itself. Failures as for sliceScan.
    /// \note O(columns * log n + entries copied).
    static Error sliceFrame(const Eigen::SparseMatrix<double>& frame,
                            int centerRow,
                            int centerColumn,
                            int rowHalfWidth,
                            int columnHalfWidth,
                            Eigen::SparseMatrix<double>* out);

private:
    /// The greatest whole number not above `value`, held inside the range of `int`; NaN gives the
    /// lower end. Inline and without a call: it runs once for each peak of a run.
    static int floorToInt(double value)
    {
        if (!(value >= std::numeric_limits<int>::min())) {
            return std::numeric_limits<int>::min();
        }
        if (value >= std::numeric_limits<int>::max()) {
            return std::numeric_limits<int>::max();
        }
        const int truncated = static_cast<int>(value);
        return value < truncated ? truncated - 1 : truncated;
    }
};

} // namespace zel
