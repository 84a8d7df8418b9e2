#include "tools/sources/memory/InMemoryDataSource.h"

#include "tools/sources/SpectrumUtils.h"

namespace zel::msreader {

Result<QSharedPointer<InMemoryDataSource>> InMemoryDataSource::create(QList<InMemoryScan> scans,
                                                                      const QString& name)
{
    std::vector<ScanRecord> records;
    QList<QList<QPointF>> spectra;
    records.reserve(static_cast<std::size_t>(scans.size()));
    spectra.reserve(scans.size());
    for (InMemoryScan& scan : scans) {
        const QString fault = firstFaultOf(scan.points);
        if (!fault.isEmpty()) {
            ZEL_RETURN_ERROR(kBadParameterError,
                             QStringLiteral("Scan %1: %2").arg(scan.info.scanId.toString(), fault));
        }
        records.push_back({scan.info, scan.precursor});
        spectra.append(std::move(scan.points));
    }
    ZEL_ASSIGN_OR_RETURN(ScanIndex index, ScanIndex::create(std::move(records)));
    return QSharedPointer<InMemoryDataSource>(
        new InMemoryDataSource(std::move(index), std::move(spectra), name));
}

InMemoryDataSource::InMemoryDataSource(ScanIndex index,
                                       QList<QList<QPointF>> spectra,
                                       const QString& name)
    : IndexedDataSource(std::move(index), name)
    , m_spectra(std::move(spectra))
{}

Result<QList<QPointF>> InMemoryDataSource::readRecord(qsizetype recordIndex)
{
    return m_spectra[recordIndex];
}

} // namespace zel::msreader
