#include "tools/sources/decorators/WatchedDataSource.h"

#include "BulkXicExtractor.h"

#include <algorithm>
#include <utility>

namespace zel::msreader {

WatchedDataSource::WatchedDataSource(QSharedPointer<MsDataSourceInterface> source,
                                     QSharedPointer<ScanProgress> progress)
    : ForwardingDataSource(std::move(source))
    , m_progress(std::move(progress))
{}

WatchedDataSource::~WatchedDataSource() = default;

Result<QList<MsScanId>> WatchedDataSource::scanIds(const MsQuery& query)
{
    if (m_progress->isCanceled()) {
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    return source().scanIds(query);
}

Result<ScanInfo> WatchedDataSource::scanInfo(const MsScanId& id)
{
    if (m_progress->isCanceled()) {
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    return source().scanInfo(id);
}

Result<QList<QList<QPointF>>> WatchedDataSource::scanData(const QList<MsQuery>& queries)
{
    QList<QList<QPointF>> spectra;
    spectra.reserve(queries.size());
    for (const MsQuery& query : queries) {
        ZEL_ASSIGN_OR_RETURN(QList<QPointF> spectrum, scanData(query));
        spectra.append(std::move(spectrum));
    }
    return spectra;
}

Result<QList<QPointF>> WatchedDataSource::scanData(const MsQuery& query)
{
    if (m_progress->isCanceled()) {
        ZEL_RETURN_ERROR(kOperationCanceledError);
    }
    Result<QList<QPointF>> spectrum = source().scanData(query);
    if (spectrum.isOk()) {
        m_progress->scanRead();
    } else {
        noteFailure(spectrum.error());
    }
    return spectrum;
}

Result<QList<QList<QPointF>>> WatchedDataSource::xics(const QList<XicDimensions>& dimensions)
{
    return xics(dimensions, 1, PeakPickingFilter::Centroid);
}

Result<QList<QList<QPointF>>> WatchedDataSource::xics(const QList<XicDimensions>& dimensions,
                                                      int msLevel,
                                                      PeakPickingFilter filter)
{
    Result<QList<QList<QPointF>>> found =
        BulkXicExtractor(this).xic(dimensions, msLevel, filter, nullptr);
    if (!found.isOk()) {
        noteFailure(found.error());
    }
    return found;
}

Result<QList<QPointF>> WatchedDataSource::basePeakPlot()
{
    if (!m_basePeakPlot) {
        ZEL_ASSIGN_OR_RETURN(const QList<MsScanId> ids, scanIds(MsQuery::createByMsLevel(1)));
        ZEL_ASSIGN_OR_RETURN(const QList<ScanInfoBasic> scans, scanInfoBasic(ids));
        QList<QPointF> plot;
        for (const ScanInfoBasic& scan : scans) {
            ZEL_ASSIGN_OR_RETURN(const QList<QPointF> points,
                                 scanData(MsQuery(scan.scanId, PeakPickingFilter::Profile)));
            double highest = 0.0;
            for (const QPointF& point : points) {
                highest = std::max(highest, point.y());
            }
            plot.append(QPointF(scan.retentionTimeMinutes, highest));
        }
        m_basePeakPlot = plot;
    }
    return *m_basePeakPlot;
}

void WatchedDataSource::noteFailure(const Error& failure)
{
    if (!m_firstFailure.hasError() && !failure.equals(kOperationCanceledError)) {
        m_firstFailure = failure;
    }
}

} // namespace zel::msreader
