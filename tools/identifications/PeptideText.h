#pragma once

#include "common/stable/Result.h"

#include <QString>

namespace zel::identifications {

/// Adds up the mass shifts of a modification text, Da: items "label/mass shift" separated by ";",
/// such as "Oxidation@M3/15.994915;Acetyl@N-term/42.010565". The text is taken as it stands, since
/// it is part of the ion's identity; so separators that enclose nothing are no item.
/// \return 0 for an empty text; kBadParameterError saying which item is wrong
Result<double> sumOfMassShifts(const QString& modifications);

/// \return kBadParameterError unless the text consists of capital letters
Error checkSequence(const QString& sequence);

/// The neutral monoisotopic mass of a peptide, Da.
/// \param shiftsDa  what its modifications add
/// \return kBadParameterError naming a residue without a mass of its own, such as B, X and Z
Result<double> peptideMass(const QString& sequence, double shiftsDa);

/// The name of a run by its file: without folder and without the usual suffixes of spectra files.
QString runName(const QString& path);

/// A score by its value in a file: with its sign turned when the name says that small values are
/// good ones, as those of expectation values, q-values and probabilities of errors do.
double scoreOf(const QString& name, double value);

} // namespace zel::identifications
