#pragma once

#include "common/core_mini/src/algo/EigenUtilities.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"
#include "feature_finder/records/Hill.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>
#include <QList>

namespace zel {

class MatrixRows;

/// Finds the hills of a signal matrix: its local ridges, each an apex with the limits of its slopes
/// along both axes.
///
/// Rows are m/z bins, `mzHashFactor` to the Th; columns are the second axis, which is mobility (D2)
/// for a frame, and retention (D1) for a whole run without mobility. The work is the same:
/// 1. smooth along m/z, then along the columns, each with a Gaussian;
/// 2. take all local maxima, strongest first;
/// 3. from each, climb down both ways along both axes, until the signal has fallen to a part of the
///    apex, or exceeds the apex by more than 1 %, or its slope over five steps turns; the place
///    that ended the way still belongs to the hill;
/// 4. drop the hills whose apex lies within the limits, both ends included, of a stronger one;
/// 5. drop those that are too narrow along the columns.
///
/// Step 3 runs in parallel on the global thread pool when there are 20,000 maxima and more, on at
/// most as many threads as the machine has or as the environment variable
/// ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY says. The result does not depend on it. Holds no state
/// between calls. Hills come strongest first.
class ZEL_EXPORT ScanIteratorV2HillBuilder
{
public:
    using Matrix = Eigen::SparseMatrix<double, 0, int>;

    /// Takes the settings of grid, kernels, limits and widths.
    /// \return kError for an m/z kernel of less than 3 points, or one of either that is absurdly
    ///         wide
    Error init(const SettableFeatureFinderParameters& params);
    bool isInit() const { return m_isInit; }

    /// The hills of the frame of number `d1`. Their limits along D2 are column numbers; those in D2
    /// units are left at 0. \return kError before `init`
    Result<QList<HillD2>> buildHills(const Matrix& frame, int d1) const;

    /// The hills of a whole run. Their limits along D1 are column numbers; those in scan numbers
    /// are left at 0.
    /// \param matrix  is left smoothed
    /// \return kError before `init` or for a null matrix
    Result<QList<HillD1>> buildHills(Matrix* matrix) const;

private:
    void smoothDimensionMz(Matrix* matrix) const;
    void smoothDimensionD2(MatrixRows* rows, Matrix* matrix) const;
    QList<HillD2> findHillLimitsFromApexes(const QList<EigenUtilities::MatrixApexIndex>& apexes,
                                           const Matrix& matrix,
                                           const MatrixRows& rows,
                                           int d1) const;

    SettableFeatureFinderParameters m_params;
    Eigen::VectorXd m_mzKernel;
    Eigen::VectorXd m_d2Kernel;
    bool m_isInit = false;
};

} // namespace zel
