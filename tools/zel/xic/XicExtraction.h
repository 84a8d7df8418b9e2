#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "common/stable/Progress.h"
#include "tools/zel/xic/ChromatogramPlot.h"
#include "tools/zel/xic/XicWindows.h"

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
                                      msreader::MsDataSourceInterface* source,
                                      const QSharedPointer<ProgressBarInterface>& progress);

/// Out of an index of the run's MS1 centroids.
/// \param maxIonCount     most peaks kept of a scan
/// \param cacheDirectory  where the index is kept between runs; empty: it is built in memory
/// \param what            receives a sentence on where the index came from
Result<QList<NamedXic>> extractFromIndex(const QList<XicTarget>& targets,
                                         int maxIonCount,
                                         const QString& cacheDirectory,
                                         msreader::MsDataSourceInterface* source,
                                         const QSharedPointer<ProgressBarInterface>& progress,
                                         QString* what);

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

Result<QList<NamedXic>> extractIsotopes(const IsotopeTarget& target,
                                        msreader::MsDataSourceInterface* source);

} // namespace zel::tool
