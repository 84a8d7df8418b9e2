#pragma once

#include "tools/sources/decorators/ForwardingDataSource.h"
#include "tools/sources/decorators/ScanProgress.h"

#include <optional>

namespace zel::msreader {

/// Stands between a command and the source that it reads. Every spectrum read is reported to the
/// progress sink. Once that is canceled, every operation that lists or reads scans gives
/// kOperationCanceledError: so each road of the library ends within the time of one spectrum, also
/// where the library itself does not ask.
///
/// Lists of queries, chromatograms and the base peak plot are therefore taken apart into single
/// spectra. Their values are those of IndexedDataSource: `xics` without an MS level cuts centroids
/// of MS1, the base peak plot reads all MS1 frames as stored, once.
///
/// Where the library leaves a failure out (a search for features takes an XIC that failed for an
/// empty one), `firstFailure` still has it.
///
/// Not thread-safe.
class WatchedDataSource : public ForwardingDataSource
{
public:
    WatchedDataSource(QSharedPointer<MsDataSourceInterface> source,
                      QSharedPointer<ScanProgress> progress);
    ~WatchedDataSource() override;

    /// The first failure of reading or of a request for chromatograms, or kNoError. A cancellation
    /// is none.
    const Error& firstFailure() const { return m_firstFailure; }

    Result<QList<MsScanId>> scanIds(const MsQuery& query) override;
    Result<ScanInfo> scanInfo(const MsScanId& id) override;
    Result<QList<QList<QPointF>>> scanData(const QList<MsQuery>& queries) override;
    Result<QList<QPointF>> scanData(const MsQuery& query) override;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions) override;
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& dimensions,
                                       int msLevel,
                                       PeakPickingFilter filter) override;
    Result<QList<QPointF>> basePeakPlot() override;

private:
    void noteFailure(const Error& failure);

    QSharedPointer<ScanProgress> m_progress;
    Error m_firstFailure;
    std::optional<QList<QPointF>> m_basePeakPlot;
};

} // namespace zel::msreader
