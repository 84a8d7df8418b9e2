#pragma once

#include "common/ms_types/MsQuery.h"
#include "common/ms_types/ScanInfo.h"
#include "common/ms_types/XicDimensions.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

namespace zel::msreader {

/// The one way in which spectra reach the library: implement it over a file, a database or data in
/// memory.
///
/// The library calls a source through a raw pointer that its caller owns, from the calling thread
/// only, and never deletes it. A source need not be thread-safe. All times are in minutes. Spectra
/// are lists of (m/z, intensity), sorted ascending by m/z, since they are searched by bisection;
/// they may be empty. Every failure goes back to the caller of the library; nothing is retried.
class ZEL_EXPORT MsDataSourceInterface
{
public:
    virtual ~MsDataSourceInterface();

    /// The identity of the source.
    virtual DataSourceInformation dataSourceInformation() const = 0;

    /// The extent of `d1`.
    virtual Result<math::Range<long long>> d1Range() = 0;

    /// The extent of `d2`.
    virtual Result<math::Range<long long>> d2Range() = 0;

    /// The time span of the source. Also serves as a probe that the source is usable.
    virtual Result<math::ClosedMultiInterval<double, 6>> retentionTimeRange() = 0;

    /// The ids that the query selects, in acquisition order (ascending time). No scan selected is
    /// no failure.
    virtual Result<QList<MsScanId>> scanIds(const MsQuery& query) = 0;

    /// One record for each id, in the same order.
    virtual Result<QList<ScanInfoBasic>> scanInfoBasic(const QList<MsScanId>& ids) = 0;

    /// The record of one scan.
    virtual Result<ScanInfoBasic> scanInfoBasic(const MsScanId& id) = 0;

    /// The full record of one scan.
    virtual Result<ScanInfo> scanInfo(const MsScanId& id) = 0;

    /// The precursor of a fragment spectrum; a failure means that there is none.
    virtual Result<PrecursorInfo> precursorInfo(const MsScanId& id) = 0;

    /// True when the source has a `d2` axis.
    virtual Result<bool> hasMobility() = 0;

    /// One spectrum for each query, in query order, of the kind that the query's filter names.
    virtual Result<QList<QList<QPointF>>> scanData(const QList<MsQuery>& queries) = 0;

    /// The spectrum of one query.
    virtual Result<QList<QPointF>> scanData(const MsQuery& query) = 0;

    /// One chromatogram for each box, in the source's native way and peak picking.
    virtual Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions) = 0;

    /// The same at an MS level and with a filter. BulkXicExtractor can serve both.
    virtual Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions,
                                               int msLevel,
                                               PeakPickingFilter filter) = 0;

    /// The base peak chromatogram of the whole source: for each MS1 scan (time, highest intensity).
    virtual Result<QList<QPointF>> basePeakPlot() = 0;
};

} // namespace zel::msreader
