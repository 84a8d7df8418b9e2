#include "common/core_mini/src/algo/isotopes/MolCalc.h"

#include "chemical_model/Residues.h"
#include "common/stable/PhysicalConstants.h"

#include <cstdlib>

namespace zel::molcalc {

double calculateChargedMzFromMW(double molecularWeight, int charge, int protonCount)
{
    return ionMz(molecularWeight, charge, protonCount);
}

double calculateUnchargedMassFromMzCharge(double mz, int charge, int adductCount, bool addedProtons)
{
    const double isotopes = adductCount * kCarbonIsotopeSpacingDa;
    if (charge == 0) {
        return mz - isotopes;
    }
    const double perCharge = addedProtons ? mz - kProtonMassDa : mz + kProtonMassDa;
    return perCharge * std::abs(charge) - isotopes;
}

double calculateMassOfPeptide(const QString& sequence,
                              const QMap<int, std::pair<QString, double>>& modifications)
{
    double mass = chem::peptideMass(sequence);
    for (const auto& [name, massDifference] : modifications) {
        mass += massDifference;
    }
    return mass;
}

} // namespace zel::molcalc
