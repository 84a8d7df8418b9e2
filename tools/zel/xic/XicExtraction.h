#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "tools/sources/decorators/WatchedDataSource.h"
#include "tools/zel/xic/ChromatogramPlot.h"
#include "tools/zel/xic/XicWindows.h"

#include <QStringList>

namespace zel::tool {

// The roads from windows to chromatograms.

/// How scans are read.
struct ScanSelection
{
    int msLevel = 1;
    msreader::PeakPickingFilter filter = msreader::PeakPickingFilter::Centroid;
};

/// In one pass over the scans.
Result<QList<NamedXic>> extractInBulk(const QList<XicTarget>& targets,
                                      const ScanSelection& scans,
                                      msreader::WatchedDataSource* source,
                                      const QSharedPointer<ProgressBarInterface>& progress);

/// Most peaks of a scan that an index keeps: it reserves room for as many in every scan.
inline constexpr int kMostIons = 1'000'000;

/// How an index is made.
struct IndexOptions
{
    int maxIonCount = 0;       ///< most peaks kept of a scan; 0: all, up to kMostIons
    qsizetype largestScan = 0; ///< points that the largest MS1 scan announces
    QString cacheDirectory;    ///< where indexes are kept between runs; empty: nowhere
    QString selection;         ///< RunSelection::name() of the source
};

/// Out of an index of the run's MS1 centroids. Like the bulk road it gives the scans inside the
/// times of a window and no others.
/// \param notes  receives lines for the user: what was left out, where the index came from
Result<QList<NamedXic>> extractFromIndex(const QList<XicTarget>& targets,
                                         const IndexOptions& options,
                                         msreader::WatchedDataSource* source,
                                         const QSharedPointer<msreader::ScanProgress>& progress,
                                         QStringList* notes);

/// An ion whose isotopes are folded into one chromatogram.
struct IsotopeTarget
{
    double neutralMass = 0.0; ///< monoisotopic, Da
    int charge = 0;
    double ppm = 10.0;
    math::ClosedMultiInterval<double, 6> time; ///< minutes
    double isotopeShare = 0.0; ///< isotopes are taken until their shares of the pattern exceed this
    bool harmonicMean = false; ///< else the sum
    bool isDeamidated = false;
};

/// Without a scan in the times the chromatogram has no points.
Result<QList<NamedXic>> extractIsotopes(const IsotopeTarget& target,
                                        msreader::WatchedDataSource* source,
                                        const QSharedPointer<msreader::ScanProgress>& progress);

} // namespace zel::tool
