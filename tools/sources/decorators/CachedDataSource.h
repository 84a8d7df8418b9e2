#pragma once

#include "tools/sources/decorators/ForwardingDataSource.h"

#include <QCache>

#include <utility>

namespace zel::msreader {

/// Keeps the spectra that were read last, for callers that ask for the same ones again and again,
/// such as one chromatogram after the other of ions that elute together. Kept are whole spectra of
/// single scans. `xics` cuts them out of kept spectra, as IndexedDataSource does out of read ones,
/// with the same values.
///
/// Not thread-safe.
class CachedDataSource : public ForwardingDataSource
{
public:
    /// \param maxBytes  about how much memory the spectra may take
    CachedDataSource(QSharedPointer<MsDataSourceInterface> source, qsizetype maxBytes);
    ~CachedDataSource() override;

    Result<QList<QList<QPointF>>> scanData(const QList<MsQuery>& queries) override;
    Result<QList<QPointF>> scanData(const MsQuery& query) override;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions) override;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions,
                                       int msLevel,
                                       PeakPickingFilter filter) override;

private:
    using Key = std::pair<MsScanId, int>; ///< the scan, and the form in which it was read

    QCache<Key, QList<QPointF>> m_spectra; ///< costs in bytes
};

} // namespace zel::msreader
