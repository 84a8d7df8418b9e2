#include "tools/sources/mzml/MobilityAxis.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace zel::msreader {

void MobilityAxis::addFrame(std::span<const double> mobilities)
{
    m_frameValues.clear();
    // Points usually come scan by scan, so that most repetitions are neighbours.
    std::unique_copy(mobilities.begin(), mobilities.end(), std::back_inserter(m_frameValues));
    std::ranges::sort(m_frameValues);
    const auto repeated = std::unique(m_frameValues.begin(), m_frameValues.end());
    m_frameValues.erase(repeated, m_frameValues.end());
    if (m_frameValues.empty()) {
        return;
    }
    const bool isFirst = m_maxFrameValues == 0;
    m_lowest = isFirst ? m_frameValues.front() : std::min(m_lowest, m_frameValues.front());
    m_highest = isFirst ? m_frameValues.back() : std::max(m_highest, m_frameValues.back());
    m_maxFrameValues = std::max(m_maxFrameValues, m_frameValues.size());
    if (m_hasTooManyValues) {
        return;
    }
    std::vector<double> all;
    all.reserve(m_values.size() + m_frameValues.size());
    std::ranges::set_union(m_values, m_frameValues, std::back_inserter(all));
    m_values = std::move(all);
    if (m_values.size() > kMaxExactValues) {
        m_hasTooManyValues = true;
        m_values = {};
    }
}

void MobilityAxis::finish()
{
    if (m_hasTooManyValues) {
        m_binCount =
            static_cast<long long>(std::clamp<std::size_t>(m_maxFrameValues, 2, kMaxExactValues));
    }
    m_frameValues = {};
}

long long MobilityAxis::size() const
{
    return isBinned() ? m_binCount : static_cast<long long>(m_values.size());
}

long long MobilityAxis::indexOf(double mobility) const
{
    if (isBinned()) {
        const double position = (mobility - m_lowest) / (m_highest - m_lowest);
        const auto bin = static_cast<long long>(position * static_cast<double>(m_binCount));
        return std::clamp<long long>(bin + 1, 1, m_binCount);
    }
    return std::ranges::lower_bound(m_values, mobility) - m_values.begin() + 1;
}

double MobilityAxis::valueOf(long long index) const
{
    if (isBinned()) {
        const double share = (static_cast<double>(index) - 0.5) / static_cast<double>(m_binCount);
        return m_lowest + share * (m_highest - m_lowest);
    }
    return m_values[static_cast<std::size_t>(index - 1)];
}

} // namespace zel::msreader
