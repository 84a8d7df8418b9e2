#pragma once

#include <QHashFunctions>

#include <compare>
#include <cstdint>

namespace zel {

/// Names one sample (one data source) of a multi-sample run. A key for QHash and QMap.
class MsDataSampleId
{
public:
    MsDataSampleId() = default;
    explicit MsDataSampleId(std::int32_t id)
        : m_id(id)
    {}

    std::int32_t id() const { return m_id; }

    friend auto operator<=>(const MsDataSampleId&, const MsDataSampleId&) = default;
    friend std::size_t qHash(const MsDataSampleId& sample, std::size_t seed = 0)
    {
        return ::qHash(sample.m_id, seed);
    }

private:
    std::int32_t m_id = 0;
};

} // namespace zel
