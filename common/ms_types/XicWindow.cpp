#include "common/ms_types/XicWindow.h"

#include "common/stable/PhysicalConstants.h"
#include "common/stable/SharedNumbers.h"

namespace zel {

XicDimensions XicWindow::toXicDimensions() const
{
    return {{mzStart, mzEnd}, {timeStart, timeEnd}};
}

XicWindow XicWindowFactory::create(double mass,
                                   int charge,
                                   double mzTolerancePpm,
                                   double timeStart,
                                   double timeEnd,
                                   int isotope) const
{
    const double mz = ionMz(mass, charge, isotope);
    const double mzHalfWidth = mz * mzTolerancePpm * kPartsPerMillion;
    return {mz, mz - mzHalfWidth, mz + mzHalfWidth, (timeStart + timeEnd) / 2, timeStart, timeEnd};
}

} // namespace zel
