#pragma once

#include "common/ms_types/ScanInfo.h"
#include "common/stable/Result.h"

#include <QHash>

#include <optional>
#include <span>
#include <vector>

namespace zel::msreader {

/// What is known of one stored spectrum without its points.
struct ScanRecord
{
    ScanInfo info;
    /// All zero where there is none.
    PrecursorInfo precursor;
};

/// The scans of a run in acquisition order, with look-up by id. Records of one `d1` are neighbours
/// and form a frame: either one record without `d2`, or one record for each mobility scan,
/// ascending in `d2`. A plain value.
class ScanIndex
{
public:
    /// The records [first, first + count) share one `d1`.
    struct Frame
    {
        long long d1 = 0;
        qsizetype first = 0;
        qsizetype count = 0;
    };

    ScanIndex() = default;

    /// \param records  in acquisition order
    /// \return kBadParameterError when a record has no `d1`, a bad MS level, a time that is not
    /// finite, or stands out of order. The message names the scan.
    static Result<ScanIndex> create(std::vector<ScanRecord> records);

    const std::vector<ScanRecord>& records() const { return m_records; }
    const std::vector<Frame>& frames() const { return m_frames; }
    const ScanRecord& record(qsizetype index) const
    {
        return m_records[static_cast<std::size_t>(index)];
    }
    std::span<const ScanRecord> recordsOf(const Frame& frame) const
    {
        return std::span(m_records).subspan(static_cast<std::size_t>(frame.first),
                                            static_cast<std::size_t>(frame.count));
    }

    /// The frame of this `d1`, or null. O(1).
    const Frame* frameOf(long long d1) const;
    /// The index of the record of this mobility scan inside the frame, or nothing. O(log scans of
    /// the frame).
    std::optional<qsizetype> mobilityScanOf(const Frame& frame, long long d2) const;

    bool hasMobility() const { return m_hasMobility; }

private:
    Error checkAndAdd(qsizetype recordIndex);

    std::vector<ScanRecord> m_records;
    std::vector<Frame> m_frames;
    QHash<long long, qsizetype> m_frameByD1;
    bool m_hasMobility = false;
};

} // namespace zel::msreader
