#pragma once

#include <limits>
#include <optional>

namespace zel {

/// A `d1` or `d2` of a scan id as feature finding counts with it; nothing when the id lacks it or
/// when it lies beyond the range of `int`.
inline std::optional<int> scanNumber(const std::optional<long long>& idPart)
{
    if (!idPart || *idPart < std::numeric_limits<int>::min() ||
        *idPart > std::numeric_limits<int>::max()) {
        return std::nullopt;
    }
    return static_cast<int>(*idPart);
}

} // namespace zel
