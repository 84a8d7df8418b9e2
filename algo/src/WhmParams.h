#pragma once

#include <QList>

namespace zel {

/// Settings of the weighted harmonic mean by which MultiIsotopeXic folds isotopes.
struct WhmParams
{
    /// The offset of the mean is the tallest isotope's intensity divided by this. Larger values
    /// punish a missing isotope harder.
    double intensityDivisor = 400.0;
    /// Lifts the offset by the base peak intensity, so that faint signal beside strong signal
    /// counts less.
    bool useBasePeakFloor = false;
    /// Width in points of the moving mean before the fold; 1 or less means none.
    int smoothingWindow = -1;
    /// The base peak plot over the XIC's time span, filled per call; what a caller puts here is
    /// not read by `xic`.
    QList<double> basePeakIntensities;
};

} // namespace zel
