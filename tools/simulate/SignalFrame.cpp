#include "tools/simulate/SignalFrame.h"

#include "common/stable/PhysicalConstants.h"
#include "tools/simulate/RandomStream.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace zel::simulate {

namespace {

/// Part of the intensity limit below which a signal cannot make a peak of its own.
constexpr double kNegligible = 0.02;

} // namespace

std::vector<BackgroundIon> drawBackground(const SimulationSettings& settings)
{
    RandomStream random(settings.seed, {RandomStream::Background});
    std::vector<BackgroundIon> ions;
    for (int i = 0; i < settings.backgroundIonCount; ++i) {
        const double mz = random.uniform(settings.mzStart, settings.mzEnd);
        const double spread = std::pow(10.0, settings.intensityDecades * random.boundedNormal());
        const double mobility = random.uniform(settings.firstMobility, settings.lastMobility);
        const double phase = random.uniform(0.0, 2.0 * std::numbers::pi);
        ions.push_back({mz, settings.backgroundIonIntensity * spread, mobility, phase});
    }
    return ions;
}

SignalFrame::SignalFrame(const SimulationSettings& settings)
    : m_settings(settings)
    , m_scans(static_cast<std::size_t>(std::max(settings.mobilityScanCount, 1)))
    , m_negligible(kNegligible * settings.minIntensity)
{}

double SignalFrame::mobilityOf(std::size_t scanIndex) const
{
    return m_settings.firstMobility + static_cast<double>(scanIndex) * m_settings.mobilityStep();
}

void SignalFrame::add(std::size_t scanIndex, const Signal& signal)
{
    if (signal.intensity > m_negligible) {
        m_scans[scanIndex].push_back(signal);
    }
}

void SignalFrame::addIon(const SimulatedPeptide& peptide, const SimulatedIon& ion, double intensity)
{
    forEachScan(ion.mobility, m_settings.mobilitySigma, [&](std::size_t scan, double share) {
        for (qsizetype k = 0; k < peptide.isotopeFractions.size(); ++k) {
            add(scan,
                {ionMz(peptide.mass, ion.charge, static_cast<int>(k)),
                 intensity * share * peptide.isotopeFractions[k]});
        }
    });
}

void SignalFrame::addBackground(const BackgroundIon& ion, double intensity)
{
    constexpr double timesWider = 3.0;
    forEachScan(
        ion.mobility, timesWider * m_settings.mobilitySigma, [&](std::size_t scan, double share) {
            add(scan, {ion.mz, intensity * share});
        });
}

/// Calls `use(scan, share)` for the scans that a Gaussian mobility peak covers.
template <typename Use>
void SignalFrame::forEachScan(double mobility, double sigma, Use use) const
{
    constexpr double reach = 5.0; // standard deviations; 6e-7 of the peak lies outside
    if (m_settings.mobilityScanCount == 0) {
        use(0, 1.0);
        return;
    }
    const double step = m_settings.mobilityStep();
    const double centre = (mobility - m_settings.firstMobility) / step;
    const double sigmaScans = sigma / std::abs(step);
    const double lastScan = m_settings.mobilityScanCount - 1;
    const double first = std::ceil(std::max(0.0, centre - reach * sigmaScans));
    const double last = std::min(lastScan, centre + reach * sigmaScans);
    const double height = std::numbers::inv_sqrtpi / (std::numbers::sqrt2 * sigmaScans);
    for (double scan = first; scan <= last; scan += 1.0) {
        const double distance = (scan - centre) / sigmaScans;
        use(static_cast<std::size_t>(scan), height * std::exp(-0.5 * distance * distance));
    }
}

} // namespace zel::simulate
