#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QPointF>

namespace zel {

/// The isotope pattern of an average peptide of one mass (AveragineIsotopeModel::senko), as a
/// spectrum. Safe to use from several threads.
class ZEL_EXPORT AveragineGenerator
{
public:
    /// \param mass  neutral monoisotopic mass, Da. A mass that has no pattern (below 20 Da, beyond
    ///              about 15 MDa, not finite) counts as a single peak.
    explicit AveragineGenerator(double mass);

    /// One point (m/z, probability) for each isotope peak from the monoisotopic one upwards; point
    /// k is at ionMz(mass, charge, k), the probabilities sum to 1. Never empty. \param charge
    /// protons taken up; negative: given off; 0: neutral masses
    QList<QPointF> generateSignal(int charge) const;

private:
    double m_mass;
};

} // namespace zel
