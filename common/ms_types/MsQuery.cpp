#include "common/ms_types/MsQuery.h"

namespace zel::msreader {

MsQuery MsQuery::createByMsLevel(int msLevel)
{
    MsQuery query;
    query.m_msLevel = msLevel;
    return query;
}

MsQuery MsQuery::createByTime(const math::ClosedMultiInterval<double, 6>& time,
                              const math::ClosedMultiInterval<double, 10>& mz,
                              const std::optional<int>& msLevel)
{
    MsQuery query;
    query.m_time = time;
    query.m_mz = mz;
    query.m_msLevel = msLevel;
    return query;
}

MsQuery::MsQuery(const MsScanId& id, PeakPickingFilter filter)
    : m_scanId(id)
    , m_filter(filter)
{}

MsQuery& MsQuery::setPeakPickingFilter(PeakPickingFilter filter)
{
    m_filter = filter;
    return *this;
}

MsQuery& MsQuery::setD2(const math::Range<long long>& range)
{
    m_d2Range = range;
    return *this;
}

} // namespace zel::msreader
