#pragma once

#include "tools/simulate/RandomStream.h"
#include "tools/simulate/SimulationSettings.h"

#include <QList>
#include <QPointF>

#include <vector>

namespace zel::simulate {

/// What one isotope peak of one ion gives in one scan.
struct Signal
{
    double mz = 0.0;
    double intensity = 0.0;
};

/// Turns the signals of a scan into what the instrument records: peaks that it cannot resolve
/// become one, noise is added, and what is too low is left out.
class ScanRenderer
{
public:
    explicit ScanRenderer(const SimulationSettings& settings);

    /// The points of the scan, ascending in m/z, inside the acquired m/z range.
    /// \param signals  in any order; used up
    QList<QPointF> render(std::vector<Signal>& signals, RandomStream& random) const;

    /// Full width at half maximum of a peak, m/z.
    double fwhm(double mz) const;

private:
    void mergeUnresolved(std::vector<Signal>& signals) const;
    void addPeakNoise(std::vector<Signal>& peaks, RandomStream& random) const;
    std::vector<Signal> profileOf(const std::vector<Signal>& peaks) const;
    void addCountingNoise(std::vector<Signal>& points, RandomStream& random) const;
    QList<QPointF> recorded(const std::vector<Signal>& points) const;

    double gridPosition(double mz) const;
    double gridMz(double position) const;

    SimulationSettings m_settings;
};

} // namespace zel::simulate
