// A data source of one's own for the example of README.md, which is the other source of this
// program.
#include "BulkXicExtractor.h"

#include <QTextStream>

#include <cmath>

using namespace zel;
using namespace zel::msreader;

/// Sixty scans, one a second, with one ion at m/z 500 that elutes around half a minute.
class SyntheticSource : public MsDataSourceInterface
{
public:
    DataSourceInformation dataSourceInformation() const override
    {
        return DataSourceInformation(QStringLiteral("synthetic"));
    }
    Result<math::Range<long long>> d1Range() override
    {
        return math::Range<long long>(1, kScanCount);
    }
    Result<math::Range<long long>> d2Range() override { return Error(kError, "no mobility"); }
    Result<math::ClosedMultiInterval<double, 6>> retentionTimeRange() override
    {
        return math::ClosedMultiInterval<double, 6>(minutes(1), minutes(kScanCount));
    }
    Result<QList<MsScanId>> scanIds(const MsQuery& query) override
    {
        QList<MsScanId> ids;
        for (long long scan = 1; scan <= kScanCount; ++scan) {
            if (query.msLevel().value_or(1) == 1 && query.timeInterval().contains(minutes(scan))) {
                ids.append(MsScanId(scan));
            }
        }
        return ids;
    }
    Result<QList<ScanInfoBasic>> scanInfoBasic(const QList<MsScanId>& ids) override
    {
        QList<ScanInfoBasic> infos;
        for (const MsScanId& id : ids) {
            infos.append({id, minutes(*id.d1)});
        }
        return infos;
    }
    Result<ScanInfoBasic> scanInfoBasic(const MsScanId& id) override
    {
        return ScanInfoBasic{id, minutes(*id.d1)};
    }
    Result<ScanInfo> scanInfo(const MsScanId&) override { return Error(kError, "not needed here"); }
    Result<PrecursorInfo> precursorInfo(const MsScanId&) override
    {
        return Error(kError, "MS1 only");
    }
    Result<bool> hasMobility() override { return false; }
    Result<QList<QList<QPointF>>> scanData(const QList<MsQuery>& queries) override
    {
        QList<QList<QPointF>> spectra;
        for (const MsQuery& query : queries) {
            spectra.append(scanData(query).value());
        }
        return spectra;
    }
    Result<QList<QPointF>> scanData(const MsQuery& query) override
    {
        const double distance = (minutes(*query.scanId()->d1) - 0.5) / 0.05;
        return QList<QPointF>{{400.0, 50.0},
                              {500.0, 1000.0 * std::exp(-0.5 * distance * distance)}};
    }
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes) override
    {
        return xics(boxes, 1, PeakPickingFilter::Centroid);
    }
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes,
                                       int msLevel,
                                       PeakPickingFilter filter) override
    {
        return BulkXicExtractor(this).xic(boxes, msLevel, filter, {});
    }
    Result<QList<QPointF>> basePeakPlot() override { return Error(kError, "not needed here"); }

private:
    static constexpr long long kScanCount = 60;
    static double minutes(long long scan) { return static_cast<double>(scan) / 60.0; }
};

double apexMinutes(MsDataSourceInterface& source, double neutralMass, int charge);

int main()
{
    SyntheticSource source;
    const double apex = apexMinutes(source, 2.0 * (500.0 - 1.00727646688), 2);
    QTextStream(stdout) << "apex at " << apex << " min\n";
    return std::abs(apex - 0.5) < 1e-9 ? 0 : 1;
}
