#include "tools/simulate/RetentionDrift.h"

#include "tools/simulate/RandomStream.h"

#include <cmath>
#include <numbers>

namespace zel::simulate {

RetentionDrift::RetentionDrift(const SimulationSettings& settings, int sampleIndex)
    : m_startMinutes(settings.startMinutes)
    , m_durationMinutes(settings.durationMinutes())
{
    if (sampleIndex == 0 || !(m_durationMinutes > 0.0)) {
        return;
    }
    RandomStream random(settings.seed,
                        {RandomStream::Drift, static_cast<std::uint64_t>(sampleIndex)});
    for (std::size_t k = 0; k < kShares.size(); ++k) {
        m_amplitudes[k] = settings.driftMinutes * kShares[k] * random.uniform(-1.0, 1.0);
        m_phases[k] = random.uniform(0.0, 2.0 * std::numbers::pi);
    }
    m_phases[0] = std::numbers::pi / 2.0;
}

double RetentionDrift::map(double referenceMinutes) const
{
    const double position = (referenceMinutes - m_startMinutes) / m_durationMinutes;
    double mapped = referenceMinutes;
    for (std::size_t k = 0; k < kShares.size(); ++k) {
        const double angle = std::numbers::pi * static_cast<double>(k) * position + m_phases[k];
        mapped += m_amplitudes[k] == 0.0 ? 0.0 : m_amplitudes[k] * std::sin(angle);
    }
    return mapped;
}

} // namespace zel::simulate
