#include "tools/sources/IndexedDataSource.h"

#include "BulkXicExtractor.h"
#include "tools/sources/PeakPicker.h"
#include "tools/sources/SpectrumUtils.h"

#include <algorithm>

namespace zel::msreader {

namespace {

double highestIntensity(const QList<QPointF>& points)
{
    double highest = 0.0;
    for (const QPointF& point : points) {
        highest = std::max(highest, point.y());
    }
    return highest;
}

} // namespace

IndexedDataSource::IndexedDataSource(ScanIndex index, const QString& name)
    : m_index(std::move(index))
    , m_name(name)
{}

IndexedDataSource::~IndexedDataSource() = default;

DataSourceInformation IndexedDataSource::dataSourceInformation() const
{
    return DataSourceInformation(m_name);
}

Result<math::Range<long long>> IndexedDataSource::d1Range()
{
    if (m_index.frames().empty()) {
        return math::Range<long long>(math::Range<long long>::Base());
    }
    const auto [lowest, highest] =
        std::ranges::minmax_element(m_index.frames(), {}, &ScanIndex::Frame::d1);
    return math::Range<long long>(lowest->d1, highest->d1);
}

Result<math::Range<long long>> IndexedDataSource::d2Range()
{
    math::Range<long long>::Base range;
    for (const ScanIndex::Frame& frame : m_index.frames()) {
        const std::span<const ScanRecord> scans = m_index.recordsOf(frame);
        if (scans.front().info.scanId.d2) {
            const long long lowest = *scans.front().info.scanId.d2;
            const long long highest = *scans.back().info.scanId.d2;
            range = {std::min(lowest, range.minimum().value_or(lowest)),
                     std::max(highest, range.maximum().value_or(highest))};
        }
    }
    return math::Range<long long>(range);
}

Result<math::ClosedMultiInterval<double, 6>> IndexedDataSource::retentionTimeRange()
{
    if (m_index.records().empty()) {
        return math::ClosedMultiInterval<double, 6>();
    }
    return math::ClosedMultiInterval<double, 6>(m_index.records().front().info.retentionTimeMinutes,
                                                m_index.records().back().info.retentionTimeMinutes);
}

Result<QList<MsScanId>> IndexedDataSource::scanIds(const MsQuery& query)
{
    if (query.scanId()) {
        ZEL_ASSIGN_OR_RETURN([[maybe_unused]] const Selection selection, find(*query.scanId()));
        return QList<MsScanId>{*query.scanId()};
    }
    QList<MsScanId> ids;
    for (const ScanIndex::Frame& frame : m_index.frames()) {
        if (query.d2Range()) {
            appendMobilityScans(frame, query, ids);
        } else if (isSelected(frame, query)) {
            ids.append(MsScanId(frame.d1));
        }
    }
    return ids;
}

Result<QList<ScanInfoBasic>> IndexedDataSource::scanInfoBasic(const QList<MsScanId>& ids)
{
    QList<ScanInfoBasic> infos;
    infos.reserve(ids.size());
    for (const MsScanId& id : ids) {
        ZEL_ASSIGN_OR_RETURN(const ScanInfoBasic info, scanInfoBasic(id));
        infos.append(info);
    }
    return infos;
}

Result<ScanInfoBasic> IndexedDataSource::scanInfoBasic(const MsScanId& id)
{
    ZEL_ASSIGN_OR_RETURN(const ScanRecord* const record, firstRecordOf(id));
    return ScanInfoBasic{id, record->info.retentionTimeMinutes};
}

Result<ScanInfo> IndexedDataSource::scanInfo(const MsScanId& id)
{
    ZEL_ASSIGN_OR_RETURN(const ScanRecord* const record, firstRecordOf(id));
    ScanInfo info = record->info;
    if (info.scanId != id) { // a whole frame has the range of all its scans, and no one mobility
        info.scanId = id;
        info.mobility = 0.0;
        for (const ScanRecord& scan : m_index.recordsOf(*m_index.frameOf(*id.d1))) {
            info.acquiredMzRange.unite(scan.info.acquiredMzRange);
        }
    }
    return info;
}

Result<PrecursorInfo> IndexedDataSource::precursorInfo(const MsScanId& id)
{
    ZEL_ASSIGN_OR_RETURN(const ScanRecord* const record, firstRecordOf(id));
    if (record->precursor.isolationMz <= 0.0 && record->precursor.selectedIonMz <= 0.0) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("Scan %1 has no precursor").arg(id.toString()));
    }
    return record->precursor;
}

Result<bool> IndexedDataSource::hasMobility()
{
    return m_index.hasMobility();
}

Result<QList<QList<QPointF>>> IndexedDataSource::scanData(const QList<MsQuery>& queries)
{
    QList<QList<QPointF>> spectra;
    spectra.reserve(queries.size());
    for (const MsQuery& query : queries) {
        ZEL_ASSIGN_OR_RETURN(QList<QPointF> spectrum, scanData(query));
        spectra.append(std::move(spectrum));
    }
    return spectra;
}

Result<QList<QPointF>> IndexedDataSource::scanData(const MsQuery& query)
{
    ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids, scanIds(query));
    QList<QList<QPointF>> spectra;
    spectra.reserve(ids.size());
    for (const MsScanId& id : ids) {
        ZEL_ASSIGN_OR_RETURN(QList<QPointF> spectrum, readScan(id, query.peakPickingFilter()));
        restrictToMz(spectrum, query.mzInterval());
        spectra.append(std::move(spectrum));
    }
    return mergeSpectra(std::move(spectra));
}

Result<QList<QList<QPointF>>> IndexedDataSource::xics(const QList<XicDimensions>& dimensions)
{
    return xics(dimensions, 1, PeakPickingFilter::Centroid);
}

Result<QList<QList<QPointF>>> IndexedDataSource::xics(const QList<XicDimensions>& dimensions,
                                                      int msLevel,
                                                      PeakPickingFilter filter)
{
    return BulkXicExtractor(this).xic(dimensions, msLevel, filter, nullptr);
}

Result<QList<QPointF>> IndexedDataSource::basePeakPlot()
{
    if (!m_basePeakPlot) {
        QList<QPointF> plot;
        for (const ScanIndex::Frame& frame : m_index.frames()) {
            const ScanInfo& info = m_index.record(frame.first).info;
            if (info.msLevel == 1) {
                ZEL_ASSIGN_OR_RETURN(const QList<QPointF> points,
                                     readSelection({frame.first, frame.count}));
                plot.append(QPointF(info.retentionTimeMinutes, highestIntensity(points)));
            }
        }
        m_basePeakPlot = plot;
    }
    return *m_basePeakPlot;
}

Result<IndexedDataSource::Selection> IndexedDataSource::find(const MsScanId& id) const
{
    const ScanIndex::Frame* const frame = id.d1 ? m_index.frameOf(*id.d1) : nullptr;
    if (frame != nullptr && !id.d2) {
        return Selection{frame->first, frame->count};
    }
    if (frame != nullptr) {
        if (const std::optional<qsizetype> scan = m_index.mobilityScanOf(*frame, *id.d2)) {
            return Selection{*scan, 1};
        }
    }
    ZEL_RETURN_ERROR(kBadParameterError,
                     QStringLiteral("There is no scan %1 in %2").arg(id.toString(), m_name));
}

Result<const ScanRecord*> IndexedDataSource::firstRecordOf(const MsScanId& id) const
{
    ZEL_ASSIGN_OR_RETURN(const Selection selection, find(id));
    return &m_index.record(selection.first);
}

/// The sum of the points as they are stored.
Result<QList<QPointF>> IndexedDataSource::readSelection(const Selection& selection)
{
    QList<QList<QPointF>> spectra;
    spectra.reserve(selection.count);
    for (qsizetype i = selection.first; i < selection.first + selection.count; ++i) {
        ZEL_ASSIGN_OR_RETURN(QList<QPointF> points, readRecord(i));
        spectra.append(std::move(points));
    }
    return mergeSpectra(std::move(spectra));
}

Result<QList<QPointF>> IndexedDataSource::readScan(const MsScanId& id, PeakPickingFilter filter)
{
    ZEL_ASSIGN_OR_RETURN(const Selection selection, find(id));
    ZEL_ASSIGN_OR_RETURN(QList<QPointF> points, readSelection(selection));
    const PeakPickingFilter storedAs = m_index.record(selection.first).info.storedAs;
    const bool mustPick =
        filter == PeakPickingFilter::Centroid && storedAs == PeakPickingFilter::Profile;
    return mustPick ? pickPeaks(points) : std::move(points);
}

bool IndexedDataSource::isSelected(const ScanIndex::Frame& frame, const MsQuery& query) const
{
    const ScanInfo& info = m_index.record(frame.first).info;
    return (!query.msLevel() || *query.msLevel() == info.msLevel) &&
           query.timeInterval().contains(info.retentionTimeMinutes);
}

void IndexedDataSource::appendMobilityScans(const ScanIndex::Frame& frame,
                                            const MsQuery& query,
                                            QList<MsScanId>& ids) const
{
    if (query.msLevel() && *query.msLevel() != m_index.record(frame.first).info.msLevel) {
        return;
    }
    for (const ScanRecord& scan : m_index.recordsOf(frame)) {
        const std::optional<long long>& d2 = scan.info.scanId.d2;
        if (d2 && query.d2Range()->contains(*d2) &&
            query.timeInterval().contains(scan.info.retentionTimeMinutes)) {
            ids.append(scan.info.scanId);
        }
    }
}

} // namespace zel::msreader
