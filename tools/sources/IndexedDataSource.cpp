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

bool isSelected(const ScanInfo& info, const MsQuery& query)
{
    return (!query.msLevel() || *query.msLevel() == info.msLevel) &&
           query.timeInterval().contains(info.retentionTimeMinutes);
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
    D2Range range;
    for (const ScanIndex::Frame& frame : m_index.frames()) {
        ZEL_ASSIGN_OR_RETURN(const D2Range inside, d2RangeOf(frame));
        if (!inside.isEmpty()) {
            range = {std::min(*inside.minimum(), range.minimum().value_or(*inside.minimum())),
                     std::max(*inside.maximum(), range.maximum().value_or(*inside.maximum()))};
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
    Error e;
    QList<MsScanId> ids;
    for (const ScanIndex::Frame& frame : m_index.frames()) {
        if (query.d2Range()) {
            ZEL_RETURN_IF_ERROR(appendMobilityScans(frame, query, ids));
        } else if (isSelected(m_index.record(frame.first).info, query)) {
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
    ZEL_ASSIGN_OR_RETURN(const Selection selection, find(id));
    return ScanInfoBasic{id, m_index.record(selection.first).info.retentionTimeMinutes};
}

Result<ScanInfo> IndexedDataSource::scanInfo(const MsScanId& id)
{
    ZEL_ASSIGN_OR_RETURN(const Selection selection, find(id));
    ScanInfo info = m_index.record(selection.first).info;
    if (selection.combinedScan) {
        ZEL_ASSIGN_OR_RETURN(info.mobility, combinedMobility(*selection.combinedScan));
    } else if (info.scanId != id) {
        info.mobility.reset();
        for (const ScanRecord& scan : m_index.recordsOf(*m_index.frameOf(*id.d1))) {
            info.acquiredMzRange.unite(scan.info.acquiredMzRange);
        }
    }
    info.scanId = id;
    return info;
}

Result<PrecursorInfo> IndexedDataSource::precursorInfo(const MsScanId& id)
{
    ZEL_ASSIGN_OR_RETURN(const Selection selection, find(id));
    const PrecursorInfo& precursor = m_index.record(selection.first).precursor;
    if (precursor.isolationMz <= 0.0 && precursor.selectedIonMz <= 0.0) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("Scan %1 has no precursor").arg(id.toString()));
    }
    return precursor;
}

Result<bool> IndexedDataSource::hasMobility()
{
    return m_index.hasMobility() || hasCombinedFrames();
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
                                     readSelection({frame.first, frame.count, {}}));
                plot.append(QPointF(info.retentionTimeMinutes, highestIntensity(points)));
            }
        }
        m_basePeakPlot = plot;
    }
    return *m_basePeakPlot;
}

bool IndexedDataSource::hasCombinedFrames() const
{
    return false;
}

Result<IndexedDataSource::D2Range> IndexedDataSource::combinedScans(qsizetype)
{
    return D2Range();
}

Result<QList<QPointF>> IndexedDataSource::readCombinedScan(qsizetype, long long)
{
    ZEL_RETURN_ERROR(kError, "The source has no combined frames");
}

Result<double> IndexedDataSource::combinedMobility(long long)
{
    ZEL_RETURN_ERROR(kError, "The source has no combined frames");
}

Result<IndexedDataSource::Selection> IndexedDataSource::find(const MsScanId& id)
{
    const ScanIndex::Frame* const frame = id.d1 ? m_index.frameOf(*id.d1) : nullptr;
    if (frame != nullptr && !id.d2) {
        return Selection{frame->first, frame->count, {}};
    }
    if (frame != nullptr) {
        if (const std::optional<qsizetype> scan = m_index.mobilityScanOf(*frame, *id.d2)) {
            return Selection{*scan, 1, {}};
        }
        ZEL_ASSIGN_OR_RETURN(const D2Range range, d2RangeOf(*frame));
        if (frame->count == 1 && range.contains(*id.d2)) {
            return Selection{frame->first, 1, id.d2};
        }
    }
    ZEL_RETURN_ERROR(kBadParameterError,
                     QStringLiteral("There is no scan %1 in %2").arg(id.toString(), m_name));
}

/// The sum of the points as they are stored.
Result<QList<QPointF>> IndexedDataSource::readSelection(const Selection& selection)
{
    if (selection.combinedScan) {
        return readCombinedScan(selection.first, *selection.combinedScan);
    }
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

/// The extent of `d2` inside a frame; empty when it has no mobility scans.
Result<IndexedDataSource::D2Range> IndexedDataSource::d2RangeOf(const ScanIndex::Frame& frame)
{
    const std::span<const ScanRecord> scans = m_index.recordsOf(frame);
    const std::optional<long long>& lowest = scans.front().info.scanId.d2;
    const std::optional<long long>& highest = scans.back().info.scanId.d2;
    return lowest && highest ? D2Range(*lowest, *highest) : combinedScans(frame.first);
}

/// Appends the ids of those mobility scans of the frame that the query selects.
Error IndexedDataSource::appendMobilityScans(const ScanIndex::Frame& frame,
                                             const MsQuery& query,
                                             QList<MsScanId>& ids)
{
    const ScanInfo& first = m_index.record(frame.first).info;
    if (first.scanId.d2) {
        for (const ScanRecord& scan : m_index.recordsOf(frame)) {
            if (isSelected(scan.info, query) && query.d2Range()->contains(*scan.info.scanId.d2)) {
                ids.append(scan.info.scanId);
            }
        }
    } else if (isSelected(first, query)) {
        ZEL_ASSIGN_OR_RETURN(const D2Range range, combinedScans(frame.first));
        for (long long d2 = range.minimum().value_or(0); range.contains(d2); ++d2) {
            if (query.d2Range()->contains(d2)) {
                ids.append(MsScanId(frame.d1, d2));
            }
        }
    }
    return kNoError;
}

} // namespace zel::msreader
