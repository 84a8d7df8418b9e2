#include "common/core_mini/src/algo/isotopes/AveragineGenerator.h"

#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"
#include "common/stable/PhysicalConstants.h"

namespace zel {

AveragineGenerator::AveragineGenerator(double mass)
    : m_mass(mass)
{}

QList<QPointF> AveragineGenerator::generateSignal(int charge) const
{
    QList<double> ratios;
    const Result<int> apex =
        AveragineIsotopeModel::senko().peakIntensityRatiosFromMass(m_mass, &ratios);
    if (!apex.isOk()) {
        ratios = {1.0};
    }
    QList<QPointF> signal;
    signal.reserve(ratios.size());
    for (int k = 0; k < ratios.size(); ++k) {
        signal.append(QPointF(ionMz(m_mass, charge, k), ratios[k]));
    }
    return signal;
}

} // namespace zel
