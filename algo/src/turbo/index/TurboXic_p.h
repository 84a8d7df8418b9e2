#pragma once

#include "turbo/index/MzDirectory_p.h"
#include "turbo/index/TurboXic.h"

#include <Eigen/Core>
#include <Eigen/SparseCore>

#include <span>
#include <utility>

namespace zel {

class TurboXic::Private
{
public:
    TurboXicSettings settings;
    QString dataFingerprint;
    bool initialized = false;
    Eigen::SparseMatrix<double> intensityMatrix; ///< rows m/z bins, columns scans
    Eigen::VectorXd scanTimes;                   ///< minutes, ascending, one a column
    MzDirectory mzDirectory;                     ///< of the matrix

    Error build(msreader::MsDataSourceInterface* source,
                const QString& fingerprint,
                const QSharedPointer<ProgressBarInterface>& progress);

    /// Takes over a finished index; the object is then initialized.
    /// \param matrix  compressed
    void setContent(Eigen::SparseMatrix<double>&& matrix, Eigen::VectorXd&& times);

    bool isValid() const { return intensityMatrix.rows() >= 2 && intensityMatrix.cols() >= 2; }
    Result<QList<QPointF>> retrieveXic(const XicDimensions& dimensions) const;
    Result<QList<QPointF>> retrieveXicPreGuava(const XicDimensions& dimensions) const;

    /// First and last column of a time window; a window beyond an end gives the column at that end.
    std::pair<int, int> scanIndexRange(double start, double end, double tolerance) const;
    /// The column nearest to `time`, the first of equally near ones; never the last.
    int nearestScanIndex(double time) const;
    Error checkScanIndex(int scanIndex) const;

private:
    int rowCount() const { return static_cast<int>(intensityMatrix.rows()); }
    int columnCount() const { return static_cast<int>(intensityMatrix.cols()); }
    std::span<const double> times() const;

    /// One point for each column from `firstColumn` to `lastColumn`, with the sum of its rows from
    /// `firstRow` to `lastRow`. Both ends are included; no row gives sums of 0.
    QList<QPointF> sumBlock(int firstRow, int lastRow, int firstColumn, int lastColumn) const;
};

} // namespace zel
