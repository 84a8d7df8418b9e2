#include "tools/sources/decorators/CachedDataSource.h"

#include "BulkXicExtractor.h"

namespace zel::msreader {

CachedDataSource::CachedDataSource(QSharedPointer<MsDataSourceInterface> source, qsizetype maxBytes)
    : ForwardingDataSource(std::move(source))
    , m_spectra(maxBytes)
{}

CachedDataSource::~CachedDataSource() = default;

Result<QList<QList<QPointF>>> CachedDataSource::scanData(const QList<MsQuery>& queries)
{
    QList<QList<QPointF>> spectra;
    spectra.reserve(queries.size());
    for (const MsQuery& query : queries) {
        ZEL_ASSIGN_OR_RETURN(QList<QPointF> spectrum, scanData(query));
        spectra.append(std::move(spectrum));
    }
    return spectra;
}

Result<QList<QPointF>> CachedDataSource::scanData(const MsQuery& query)
{
    if (!query.scanId() || !query.mzInterval().isUnbounded()) {
        return source().scanData(query);
    }
    const Key key(*query.scanId(), static_cast<int>(query.peakPickingFilter()));
    if (const QList<QPointF>* const kept = m_spectra.object(key)) {
        return *kept;
    }
    constexpr qsizetype overheadBytes = 128;
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> spectrum, source().scanData(query));
    const auto bytes = static_cast<qsizetype>(sizeof(QPointF)) * spectrum.size() + overheadBytes;
    m_spectra.insert(key, new QList<QPointF>(spectrum), bytes);
    return spectrum;
}

Result<QList<QList<QPointF>>> CachedDataSource::xics(const QList<XicDimensions>& dimensions)
{
    return xics(dimensions, 1, PeakPickingFilter::Centroid);
}

Result<QList<QList<QPointF>>> CachedDataSource::xics(const QList<XicDimensions>& dimensions,
                                                     int msLevel,
                                                     PeakPickingFilter filter)
{
    return BulkXicExtractor(this).xic(dimensions, msLevel, filter, nullptr);
}

} // namespace zel::msreader
