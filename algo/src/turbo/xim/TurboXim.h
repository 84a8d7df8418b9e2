#pragma once

#include "common/ms_types/Interval.h"
#include "common/ms_types/TurboXicSettings.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QMap>
#include <QPointF>

#include <memory>

namespace zel {

/// An index of the peaks of one frame, from which extracted ion mobilograms (XIMs) are cut: the
/// summed intensity of an m/z window in each mobility scan.
///
/// Reading from several threads is safe once `init` has returned.
class ZEL_EXPORT TurboXim
{
public:
    /// \param settings  `granularity` and `maxIonCount` are used
    explicit TurboXim(const TurboXicSettings& settings);
    ~TurboXim();
    Q_DISABLE_COPY_MOVE(TurboXim)

    /// Builds the index again; after a failure the object is as before. Of each spectrum the
    /// `maxIonCount` most intense peaks are kept; of peaks in one m/z bin the last counts.
    /// \param mobilityScans  spectra as (m/z, intensity), ascending in m/z, by the number of their
    ///                       mobility scan, at least 0
    /// \return kError for an empty map or without a single peak, kBadParameterError for a scan
    ///         number that has no column
    Error init(const QMap<int, QList<QPointF>>& mobilityScans);

    /// True when the index has at least two m/z bins and two mobility scans.
    bool isValid() const;

    /// The greatest mobility scan number plus 1; 0 before `init`.
    int matrixColumnCount() const;

    /// The mobilogram of an m/z window: one point (scan number, summed intensity) for each mobility
    /// scan from `scans.start` up to, not including, `scans.end`.
    /// \param mz  from the bin nearest to the start to the bin nearest to the end, both included
    /// \return an empty list when a part of the m/z window or of the scans lies outside the index;
    /// kError when the index is not valid, kBadParameterError for a window or a range of (0, 0)
    Result<QList<QPointF>> retrieveXim(const Interval<double>& mz, Interval<int> scans) const;

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace zel
