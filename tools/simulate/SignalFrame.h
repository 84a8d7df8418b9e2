#pragma once

#include "tools/simulate/ScanRenderer.h"
#include "tools/simulate/SimulatedPeptide.h"

#include <vector>

namespace zel::simulate {

/// An ion of the solvent or its impurities, there during the whole run.
struct BackgroundIon
{
    double mz;
    double intensity; ///< on average over time, in a scan or frame
    double mobility;  ///< 1/K0, V s/cm2
    double phase;     ///< of its slow change with time, radians
};

/// The background ions of a simulation; that of the instrument, the same in all samples.
std::vector<BackgroundIon> drawBackground(const SimulationSettings& settings);

/// Collects the signals of a frame, one list for each of its mobility scans; a run without mobility
/// has one scan a frame. Signals far below the intensity limit are dropped.
class SignalFrame
{
public:
    /// \param settings  borrowed
    explicit SignalFrame(const SimulationSettings& settings);

    std::size_t scanCount() const { return m_scans.size(); }
    std::vector<Signal>& scan(std::size_t index) { return m_scans[index]; }
    /// 1/K0 of a scan, V s/cm2.
    double mobilityOf(std::size_t scanIndex) const;

    void add(std::size_t scanIndex, const Signal& signal);

    /// Shares the isotope peaks of an ion out to the scans around its mobility.
    /// \param intensity  of all isotopes and all scans together
    void addIon(const SimulatedPeptide& peptide, const SimulatedIon& ion, double intensity);

    /// The same for a background ion, whose mobility peak is three times as wide.
    void addBackground(const BackgroundIon& ion, double intensity);

private:
    template <typename Use>
    void forEachScan(double mobility, double sigma, Use use) const;

    const SimulationSettings& m_settings;
    std::vector<std::vector<Signal>> m_scans;
    double m_negligible;
};

} // namespace zel::simulate
