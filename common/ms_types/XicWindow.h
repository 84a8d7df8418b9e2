#pragma once

#include "common/ms_types/XicDimensions.h"
#include "common/stable/Export.h"

namespace zel {

/// The window of one ion: where its chromatogram is cut.
struct ZEL_EXPORT XicWindow
{
    double mz = 0.0;        ///< m/z of the ion, the centre of the window
    double mzStart = 0.0;   ///< lowest m/z
    double mzEnd = 0.0;     ///< highest m/z
    double time = 0.0;      ///< minutes, the centre of the window
    double timeStart = 0.0; ///< minutes
    double timeEnd = 0.0;   ///< minutes

    XicDimensions toXicDimensions() const;
};

/// Calculates windows from masses. Holds nothing; safe to use from several threads.
class ZEL_EXPORT XicWindowFactory
{
public:
    /// The window of the ion [M + charge protons] of a molecule.
    /// \param mass            neutral monoisotopic mass, Da
    /// \param charge          number of protons taken up, at least 1
    /// \param mzTolerancePpm  half width of the m/z window, parts per million of the ion's m/z
    /// \param timeStart, timeEnd  minutes
    /// \param isotope         number of 13C: each adds 1.003355 Da to the mass
    XicWindow create(double mass,
                     int charge,
                     double mzTolerancePpm,
                     double timeStart,
                     double timeEnd,
                     int isotope) const;
};

} // namespace zel
