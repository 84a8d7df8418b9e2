#include "common/ms_types/ScanReading.h"

namespace zel::msreader {

Result<QList<QList<QPointF>>> readScans(MsDataSourceInterface* source,
                                        const QList<ScanInfoBasic>& scans,
                                        qsizetype first,
                                        qsizetype end,
                                        PeakPickingFilter filter)
{
    QList<MsQuery> queries;
    queries.reserve(end - first);
    for (qsizetype scan = first; scan < end; ++scan) {
        queries.append(MsQuery(scans[scan].scanId, filter));
    }
    ZEL_ASSIGN_OR_RETURN(QList<QList<QPointF>> spectra, source->scanData(queries));
    if (spectra.size() != queries.size()) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("The data source gave %1 spectra for %2 queries")
                             .arg(spectra.size())
                             .arg(queries.size()));
    }
    return spectra;
}

} // namespace zel::msreader
