#pragma once

#include "common/ms_types/MsDataSourceInterface.h"
#include "tools/sources/ScanIndex.h"

namespace zel::msreader {

/// A data source over an index of scans: everything but the reading of points.
///
/// What it says on top of the contract:
/// - A query without `setD2` selects whole frames, as ids with `d1` alone. The spectrum of a frame
///   with mobility is the sum of its mobility scans: all points ascending in m/z, points of exactly
///   equal m/z added up. With `setD2` a query selects single mobility scans inside the range; a
///   scan without `d2` is then never selected.
/// - The spectrum of a query by conditions is the sum of the spectra of all scans that it selects;
///   empty when it selects none.
/// - `Centroid` asked of profile points is answered by peak picking (PeakPicker.h), on the sum of
///   the mobility scans where a whole frame is asked for; `Profile` asked of centroids gives the
///   centroids.
/// - An id that the source does not have is a kBadParameterError that names it.
/// - `d1Range` spans the numbers of all MS levels; `d1Range`, `d2Range` and `retentionTimeRange` of
///   a source without scans, and `d2Range` of one without mobility, are empty.
/// - `precursorInfo` fails with kBadParameterError for a scan without a precursor.
/// - `xics` without an MS level reads centroids of MS1.
/// - `scanInfo` of a whole frame that is stored scan by scan has the m/z range of all its scans and
///   no mobility.
/// - `basePeakPlot` reads all MS1 frames as stored, once; the answer is kept.
///
/// Not thread-safe.
class IndexedDataSource : public MsDataSourceInterface
{
public:
    ~IndexedDataSource() override;

    DataSourceInformation dataSourceInformation() const override;
    Result<math::Range<long long>> d1Range() override;
    Result<math::Range<long long>> d2Range() override;
    Result<math::ClosedMultiInterval<double, 6>> retentionTimeRange() override;
    Result<QList<MsScanId>> scanIds(const MsQuery& query) override;
    Result<QList<ScanInfoBasic>> scanInfoBasic(const QList<MsScanId>& ids) override;
    Result<ScanInfoBasic> scanInfoBasic(const MsScanId& id) override;
    Result<ScanInfo> scanInfo(const MsScanId& id) override;
    Result<PrecursorInfo> precursorInfo(const MsScanId& id) override;
    Result<bool> hasMobility() override;
    Result<QList<QList<QPointF>>> scanData(const QList<MsQuery>& queries) override;
    Result<QList<QPointF>> scanData(const MsQuery& query) override;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions) override;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions,
                                       int msLevel,
                                       PeakPickingFilter filter) override;
    Result<QList<QPointF>> basePeakPlot() override;

protected:
    using D2Range = math::ClosedMultiInterval<long long, 0>;

    /// \param name  what `dataSourceInformation` gives as the path
    IndexedDataSource(ScanIndex index, const QString& name);

    const ScanIndex& index() const { return m_index; }

    /// The points of one record as they are stored, ascending in m/z.
    /// \param recordIndex  into index().records()
    virtual Result<QList<QPointF>> readRecord(qsizetype recordIndex) = 0;

    // A record without `d2` may hold all mobility scans of its frame. A source that has such
    // records implements the following four; the others need none of them.

    virtual bool hasCombinedFrames() const;
    /// The extent of `d2` inside such a record; empty for any other.
    virtual Result<D2Range> combinedScans(qsizetype recordIndex);
    /// The points of one mobility scan inside such a record, as they are stored, ascending in m/z.
    virtual Result<QList<QPointF>> readCombinedScan(qsizetype recordIndex, long long d2);
    /// The mobility of that scan.
    virtual Result<double> combinedMobility(long long d2);

private:
    /// What an id stands for: consecutive records, or one mobility scan inside a record.
    struct Selection
    {
        qsizetype first = 0;
        qsizetype count = 0;
        std::optional<long long> combinedScan;
    };

    Result<Selection> find(const MsScanId& id);
    Result<QList<QPointF>> readSelection(const Selection& selection);
    Result<QList<QPointF>> readScan(const MsScanId& id, PeakPickingFilter filter);
    Result<D2Range> d2RangeOf(const ScanIndex::Frame& frame);
    Error appendMobilityScans(const ScanIndex::Frame& frame,
                              const MsQuery& query,
                              QList<MsScanId>& ids);

    ScanIndex m_index;
    QString m_name;
    std::optional<QList<QPointF>> m_basePeakPlot;
};

} // namespace zel::msreader
