#pragma once

#include "tools/sources/InMemoryScan.h"
#include "tools/sources/IndexedDataSource.h"

#include <QSharedPointer>

namespace zel::msreader {

/// The data source over scans held in memory, as tests and the simulator make them. See
/// IndexedDataSource for what it does beyond the contract.
class InMemoryDataSource : public IndexedDataSource
{
public:
    /// Checks the scans and takes them over.
    /// \param scans  in acquisition order: ids with `d1`, unique, the mobility scans of a frame
    ///               next to each other and ascending in `d2`; times finite and ascending; m/z
    ///               finite, positive and ascending; intensities finite and not negative. May be
    ///               empty.
    /// \param name   what `dataSourceInformation` gives as the path
    /// \return kBadParameterError that says which scan is wrong and why
    static Result<QSharedPointer<InMemoryDataSource>> create(QList<InMemoryScan> scans,
                                                             const QString& name);

protected:
    Result<QList<QPointF>> readRecord(qsizetype recordIndex) override;

private:
    InMemoryDataSource(ScanIndex index, QList<QList<QPointF>> spectra, const QString& name);

    QList<QList<QPointF>> m_spectra; ///< parallel to index().records()
};

} // namespace zel::msreader
