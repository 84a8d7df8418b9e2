#pragma once

namespace zel {

/// Mass of the proton, Da. Source: CODATA 2006, 1.00727646677(10) u.
inline constexpr double kProtonMassDa = 1.00727646677;

/// Spacing of the peaks of an isotope pattern: mass of 13C less that of 12C, rounded, Da. Source:
/// AME2012, 13.00335483507 u - 12 u.
inline constexpr double kCarbonIsotopeSpacingDa = 1.003355;

/// What deamidation adds to a mass: NH goes, O comes, Da. Source: AME2012, rounded.
inline constexpr double kDeamidationMassShiftDa = 0.984016;

/// m/z of an ion of a molecule.
/// \param neutralMassDa  monoisotopic mass of the neutral molecule, Da
/// \param charge         protons taken up; negative: given off; 0: the neutral mass is returned
/// \param isotope        number of 13C in place of 12C
constexpr double ionMz(double neutralMassDa, int charge, int isotope)
{
    const double mass = neutralMassDa + isotope * kCarbonIsotopeSpacingDa;
    if (charge == 0) {
        return mass;
    }
    return charge > 0 ? mass / charge + kProtonMassDa : mass / -charge - kProtonMassDa;
}

} // namespace zel
