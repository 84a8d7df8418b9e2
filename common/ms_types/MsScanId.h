#pragma once

#include "common/stable/Export.h"

#include <QHashFunctions>

#include <compare>
#include <optional>

class QString;

namespace zel::msreader {

/// The address of one scan: `d1`, the scan or frame number along retention, and `d2`, the mobility
/// scan inside that frame. A plain LC-MS source sets `d1` only. On a source with mobility an id
/// with both is one mobility scan, and an id with `d1` alone is the whole frame.
struct ZEL_EXPORT MsScanId
{
    std::optional<long long> d1;
    std::optional<long long> d2;

    MsScanId() = default;
    /// An id with `d1` alone.
    MsScanId(const long long& scanNumber)
        : d1(scanNumber)
    {}
    MsScanId(long long frameNumber, long long mobilityScan)
        : d1(frameNumber)
        , d2(mobilityScan)
    {}

    /// "12", "12.3", with "-" for a part that is not set; for log lines.
    QString toString() const;

    friend auto operator<=>(const MsScanId&, const MsScanId&) = default;
};

inline std::size_t qHash(const MsScanId& id, std::size_t seed = 0)
{
    return qHashMulti(seed, id.d1.value_or(-1), id.d2.value_or(-1));
}

} // namespace zel::msreader
