#pragma once

#include "tools/simulate/SimulationSettings.h"

#include <array>

namespace zel::simulate {

/// How the retention times of a sample differ from those of sample 0: a smooth, strictly rising
/// function of time, a constant and three slow sine waves. A plain value.
class RetentionDrift
{
public:
    RetentionDrift(const SimulationSettings& settings, int sampleIndex);

    /// The time in this sample at which something elutes that elutes at `referenceMinutes` in
    /// sample 0. The two differ by at most `driftMinutes`.
    double map(double referenceMinutes) const;

private:
    /// Greatest share of the shift for a wave of 0, 1, 2, 3 half periods over the run; they sum to
    /// 1. The slope of the shift is then at most pi times the shift over the duration, 0.32 for a
    /// tenth of the run, so that time keeps rising.
    static constexpr std::array<double, 4> kShares = {0.4, 0.3, 0.2, 0.1};

    double m_startMinutes;
    double m_durationMinutes;
    std::array<double, kShares.size()> m_amplitudes{}; ///< minutes
    std::array<double, kShares.size()> m_phases{};     ///< radians
};

} // namespace zel::simulate
