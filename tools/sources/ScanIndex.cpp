#include "tools/sources/ScanIndex.h"

#include <algorithm>
#include <cmath>

namespace zel::msreader {

namespace {

Error badScan(const ScanInfo& info, const QString& why)
{
    return Error(kBadParameterError,
                 QStringLiteral("Scan %1: %2").arg(info.scanId.toString(), why));
}

Error checkRecord(const ScanInfo& info)
{
    if (!info.scanId.d1) {
        ZEL_RETURN_ERROR(badScan(info, QStringLiteral("the scan number d1 is missing")));
    }
    if (!std::isfinite(info.retentionTimeMinutes)) {
        ZEL_RETURN_ERROR(
            badScan(info, QStringLiteral("the retention time is not a finite number")));
    }
    if (info.msLevel < 1) {
        ZEL_RETURN_ERROR(badScan(
            info, QStringLiteral("the MS level must be at least 1, but is %1").arg(info.msLevel)));
    }
    return kNoError;
}

/// Checks the order of two records that follow each other.
Error checkOrder(const ScanInfo& previous, const ScanInfo& info)
{
    if (info.retentionTimeMinutes < previous.retentionTimeMinutes) {
        ZEL_RETURN_ERROR(
            badScan(info,
                    QStringLiteral("spectra out of order: the retention time %1 min lies before "
                                   "%2 min of scan %3")
                        .arg(info.retentionTimeMinutes, 0, 'g', 17)
                        .arg(previous.retentionTimeMinutes, 0, 'g', 17)
                        .arg(previous.scanId.toString())));
    }
    return kNoError;
}

/// Checks that a record may follow another one of its own frame.
Error checkInsideFrame(const ScanInfo& previous, const ScanInfo& info)
{
    if (info.scanId == previous.scanId || !info.scanId.d2 || !previous.scanId.d2) {
        ZEL_RETURN_ERROR(badScan(info, QStringLiteral("the id is not unique")));
    }
    if (*info.scanId.d2 < *previous.scanId.d2) {
        ZEL_RETURN_ERROR(
            badScan(info, QStringLiteral("the mobility scans of a frame must ascend in d2")));
    }
    if (info.msLevel != previous.msLevel) {
        ZEL_RETURN_ERROR(
            badScan(info, QStringLiteral("the scans of a frame must have one MS level")));
    }
    return kNoError;
}

} // namespace

Result<ScanIndex> ScanIndex::create(std::vector<ScanRecord> records)
{
    Error e;
    ScanIndex index;
    index.m_records = std::move(records);
    index.m_frameByD1.reserve(static_cast<qsizetype>(index.m_records.size()));
    for (qsizetype i = 0; i < static_cast<qsizetype>(index.m_records.size()); ++i) {
        ZEL_RETURN_IF_ERROR(index.checkAndAdd(i));
    }
    return index;
}

const ScanIndex::Frame* ScanIndex::frameOf(long long d1) const
{
    const auto found = m_frameByD1.constFind(d1);
    return found == m_frameByD1.cend() ? nullptr : &m_frames[static_cast<std::size_t>(*found)];
}

std::optional<qsizetype> ScanIndex::mobilityScanOf(const Frame& frame, long long d2) const
{
    const std::span<const ScanRecord> scans = recordsOf(frame);
    const auto scan = std::ranges::lower_bound(
        scans, d2, {}, [](const ScanRecord& record) { return record.info.scanId.d2.value_or(-1); });
    if (scan == scans.end() || scan->info.scanId.d2 != d2) {
        return std::nullopt;
    }
    return frame.first + (scan - scans.begin());
}

Error ScanIndex::checkAndAdd(qsizetype recordIndex)
{
    Error e;
    const ScanInfo& info = record(recordIndex).info;
    ZEL_RETURN_IF_ERROR(checkRecord(info));
    m_hasMobility = m_hasMobility || info.scanId.d2;
    if (recordIndex > 0) {
        ZEL_RETURN_IF_ERROR(checkOrder(record(recordIndex - 1).info, info));
    }
    if (!m_frames.empty() && m_frames.back().d1 == *info.scanId.d1) {
        ZEL_RETURN_IF_ERROR(checkInsideFrame(record(recordIndex - 1).info, info));
        ++m_frames.back().count;
        return kNoError;
    }
    if (m_frameByD1.contains(*info.scanId.d1)) {
        ZEL_RETURN_ERROR(badScan(
            info, QStringLiteral("the id is not unique, or its frame is interrupted by others")));
    }
    m_frameByD1.insert(*info.scanId.d1, static_cast<qsizetype>(m_frames.size()));
    m_frames.push_back({*info.scanId.d1, recordIndex, 1});
    return kNoError;
}

} // namespace zel::msreader
