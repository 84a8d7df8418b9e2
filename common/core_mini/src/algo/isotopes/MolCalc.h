#pragma once

#include "common/stable/Export.h"

#include <QMap>
#include <QString>

#include <utility>

/// Arithmetic between masses, m/z and charges.
namespace zel::molcalc {

/// m/z of an ion.
/// \param molecularWeight  neutral monoisotopic mass, Da
/// \param charge           protons taken up; negative: given off; 0 gives the neutral mass
/// \param protonCount      isotope steps of 1.003355 Da above the monoisotopic peak
ZEL_EXPORT double calculateChargedMzFromMW(double molecularWeight, int charge, int protonCount);

/// Neutral monoisotopic mass of an ion, Da.
/// \param mz            m/z of one of its isotope peaks
/// \param charge        its number of charges; the sign does not matter, 0 takes `mz` for a mass
/// \param adductCount   isotope steps of 1.003355 Da from the monoisotopic peak to that one
/// \param addedProtons  true: the charges are protons taken up, which makes this the inverse of
///                      `calculateChargedMzFromMW`; false: protons given off (negative mode)
ZEL_EXPORT double calculateUnchargedMassFromMzCharge(double mz,
                                                     int charge,
                                                     int adductCount,
                                                     bool addedProtons = true);

/// Neutral monoisotopic mass of a linear peptide, Da; see chem::residueMass for what each letter
/// counts.
/// \param modifications  by position in the sequence: name and mass difference, Da; their masses
///                       are added, whatever the position
ZEL_EXPORT double calculateMassOfPeptide(
    const QString& sequence, const QMap<int, std::pair<QString, double>>& modifications);

} // namespace zel::molcalc
