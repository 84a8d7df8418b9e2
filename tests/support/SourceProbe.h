#pragma once

#include "common/ms_types/MsDataSourceInterface.h"

#include <algorithm>
#include <functional>

namespace zel::test {

/// Passes every call on to another source, counts what is read, and can be told to misbehave.
class SourceProbe : public msreader::MsDataSourceInterface
{
public:
    explicit SourceProbe(msreader::MsDataSourceInterface* source)
        : m_source(source)
    {}

    QList<msreader::MsScanId> readIds;   ///< the id of each query of scanData, in order
    QList<qsizetype> xicCounts;          ///< boxes of each xics call
    QList<qsizetype> chunkSizes;         ///< queries of each scanData call
    int callCount = 0;                   ///< of all operations
    bool reverseScanIds = false;         ///< hand out the ids in descending time
    bool loseLastSpectrum = false;       ///< hand out one spectrum less than asked for
    Error failRangeWith;                 ///< fails retentionTimeRange
    Error failInfoWith;                  ///< fails scanInfoBasic
    Error failDataWith;                  ///< fails scanData
    std::function<void()> beforeReading; ///< called by scanData

    msreader::DataSourceInformation dataSourceInformation() const override
    {
        return m_source->dataSourceInformation();
    }
    Result<math::Range<long long>> d1Range() override { return m_source->d1Range(); }
    Result<math::Range<long long>> d2Range() override { return m_source->d2Range(); }
    Result<math::ClosedMultiInterval<double, 6>> retentionTimeRange() override
    {
        ++callCount;
        return failRangeWith.hasError() ? failRangeWith : m_source->retentionTimeRange();
    }
    Result<QList<msreader::MsScanId>> scanIds(const msreader::MsQuery& query) override
    {
        ++callCount;
        auto ids = m_source->scanIds(query);
        if (ids.isOk() && reverseScanIds) {
            std::reverse(ids.value().begin(), ids.value().end());
        }
        return ids;
    }
    Result<QList<msreader::ScanInfoBasic>> scanInfoBasic(
        const QList<msreader::MsScanId>& ids) override
    {
        ++callCount;
        return failInfoWith.hasError() ? failInfoWith : m_source->scanInfoBasic(ids);
    }
    Result<msreader::ScanInfoBasic> scanInfoBasic(const msreader::MsScanId& id) override
    {
        return m_source->scanInfoBasic(id);
    }
    Result<msreader::ScanInfo> scanInfo(const msreader::MsScanId& id) override
    {
        return m_source->scanInfo(id);
    }
    Result<msreader::PrecursorInfo> precursorInfo(const msreader::MsScanId& id) override
    {
        return m_source->precursorInfo(id);
    }
    Result<bool> hasMobility() override { return m_source->hasMobility(); }
    Result<QList<QList<QPointF>>> scanData(const QList<msreader::MsQuery>& queries) override
    {
        ++callCount;
        if (beforeReading) {
            beforeReading();
        }
        chunkSizes.append(queries.size());
        for (const msreader::MsQuery& query : queries) {
            readIds.append(query.scanId().value_or(msreader::MsScanId()));
        }
        if (failDataWith.hasError()) {
            return failDataWith;
        }
        auto spectra = m_source->scanData(queries);
        if (spectra.isOk() && loseLastSpectrum) {
            spectra.value().removeLast();
        }
        return spectra;
    }
    Result<QList<QPointF>> scanData(const msreader::MsQuery& query) override
    {
        return m_source->scanData(query);
    }
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes) override
    {
        xicCounts.append(boxes.size());
        return m_source->xics(boxes);
    }
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes,
                                       int msLevel,
                                       msreader::PeakPickingFilter filter) override
    {
        return m_source->xics(boxes, msLevel, filter);
    }
    Result<QList<QPointF>> basePeakPlot() override { return m_source->basePeakPlot(); }

private:
    msreader::MsDataSourceInterface* m_source;
};

} // namespace zel::test
