#pragma once

#include "common/ms_types/MsDataSourceInterface.h"

#include <QSharedPointer>

namespace zel::msreader {

/// A data source that passes every call on to another one. Base of those that add something on the
/// way.
class ForwardingDataSource : public MsDataSourceInterface
{
public:
    explicit ForwardingDataSource(QSharedPointer<MsDataSourceInterface> source);
    ~ForwardingDataSource() override;

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
    MsDataSourceInterface& source() const { return *m_source; }

private:
    QSharedPointer<MsDataSourceInterface> m_source;
};

} // namespace zel::msreader
