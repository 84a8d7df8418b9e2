#include "tools/sources/decorators/ForwardingDataSource.h"

#include <utility>

namespace zel::msreader {

ForwardingDataSource::ForwardingDataSource(QSharedPointer<MsDataSourceInterface> source)
    : m_source(std::move(source))
{}

ForwardingDataSource::~ForwardingDataSource() = default;

DataSourceInformation ForwardingDataSource::dataSourceInformation() const
{
    return m_source->dataSourceInformation();
}

Result<math::Range<long long>> ForwardingDataSource::d1Range()
{
    return m_source->d1Range();
}

Result<math::Range<long long>> ForwardingDataSource::d2Range()
{
    return m_source->d2Range();
}

Result<math::ClosedMultiInterval<double, 6>> ForwardingDataSource::retentionTimeRange()
{
    return m_source->retentionTimeRange();
}

Result<QList<MsScanId>> ForwardingDataSource::scanIds(const MsQuery& query)
{
    return m_source->scanIds(query);
}

Result<QList<ScanInfoBasic>> ForwardingDataSource::scanInfoBasic(const QList<MsScanId>& ids)
{
    return m_source->scanInfoBasic(ids);
}

Result<ScanInfoBasic> ForwardingDataSource::scanInfoBasic(const MsScanId& id)
{
    return m_source->scanInfoBasic(id);
}

Result<ScanInfo> ForwardingDataSource::scanInfo(const MsScanId& id)
{
    return m_source->scanInfo(id);
}

Result<PrecursorInfo> ForwardingDataSource::precursorInfo(const MsScanId& id)
{
    return m_source->precursorInfo(id);
}

Result<bool> ForwardingDataSource::hasMobility()
{
    return m_source->hasMobility();
}

Result<QList<QList<QPointF>>> ForwardingDataSource::scanData(const QList<MsQuery>& queries)
{
    return m_source->scanData(queries);
}

Result<QList<QPointF>> ForwardingDataSource::scanData(const MsQuery& query)
{
    return m_source->scanData(query);
}

Result<QList<QList<QPointF>>> ForwardingDataSource::xics(const QList<XicDimensions>& dimensions)
{
    return m_source->xics(dimensions);
}

Result<QList<QList<QPointF>>> ForwardingDataSource::xics(const QList<XicDimensions>& dimensions,
                                                         int msLevel,
                                                         PeakPickingFilter filter)
{
    return m_source->xics(dimensions, msLevel, filter);
}

Result<QList<QPointF>> ForwardingDataSource::basePeakPlot()
{
    return m_source->basePeakPlot();
}

} // namespace zel::msreader
