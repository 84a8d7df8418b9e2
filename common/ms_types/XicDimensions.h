#pragma once

#include "common/ms_types/ClosedMultiInterval.h"

namespace zel {

/// One extraction box: a set of m/z values and a set of times in minutes.
class XicDimensions
{
public:
    XicDimensions(const math::ClosedMultiInterval<double, 10>& mz,
                  const math::ClosedMultiInterval<double, 6>& time)
        : m_mz(mz)
        , m_time(time)
    {}

    const math::ClosedMultiInterval<double, 10>& mzInterval() const { return m_mz; }
    const math::ClosedMultiInterval<double, 6>& timeInterval() const { return m_time; }

private:
    math::ClosedMultiInterval<double, 10> m_mz;
    math::ClosedMultiInterval<double, 6> m_time;
};

} // namespace zel
