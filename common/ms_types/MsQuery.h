#pragma once

#include "common/ms_types/ClosedMultiInterval.h"
#include "common/ms_types/MsDataTypes.h"
#include "common/ms_types/MsScanId.h"
#include "common/stable/Export.h"

#include <optional>

namespace zel::msreader {

/// A selection of scans plus how to read them. A scan is selected when it meets every condition
/// that is set.
///
/// The second index (mobility) is closed unless `setD2` was called: a query then selects whole
/// frames, whose ids carry `d1` alone. After `setD2` it selects single mobility scans, those inside
/// the range. A plain value.
class ZEL_EXPORT MsQuery
{
public:
    /// All scans of this MS level.
    static MsQuery createByMsLevel(int msLevel);

    /// The scans inside `time` (minutes), of that level when one is given, restricted to the m/z
    /// values inside `mz`.
    static MsQuery createByTime(const math::ClosedMultiInterval<double, 6>& time,
                                const math::ClosedMultiInterval<double, 10>& mz,
                                const std::optional<int>& msLevel);

    /// Exactly one scan, read in this form.
    MsQuery(const MsScanId& id, PeakPickingFilter filter);

    MsQuery& setPeakPickingFilter(PeakPickingFilter filter);
    /// Opens the second index and restricts it to `range`.
    MsQuery& setD2(const math::Range<long long>& range);

    /// The one scan that is selected, or nothing for a query by conditions.
    const std::optional<MsScanId>& scanId() const { return m_scanId; }
    const std::optional<int>& msLevel() const { return m_msLevel; }
    const math::ClosedMultiInterval<double, 6>& timeInterval() const { return m_time; }
    /// Points outside are left out of the spectra.
    const math::ClosedMultiInterval<double, 10>& mzInterval() const { return m_mz; }
    PeakPickingFilter peakPickingFilter() const { return m_filter; }
    /// The mobility scans that are selected, or nothing while the second index is closed.
    const std::optional<math::Range<long long>>& d2Range() const { return m_d2Range; }

private:
    MsQuery() = default;

    std::optional<MsScanId> m_scanId;
    std::optional<int> m_msLevel;
    math::ClosedMultiInterval<double, 6> m_time = math::ClosedMultiInterval<double, 6>::unbounded();
    math::ClosedMultiInterval<double, 10> m_mz = math::ClosedMultiInterval<double, 10>::unbounded();
    std::optional<math::Range<long long>> m_d2Range;
    PeakPickingFilter m_filter = PeakPickingFilter::Centroid;
};

} // namespace zel::msreader
