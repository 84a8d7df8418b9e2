#pragma once

#include "common/stable/Export.h"

#include <QObject>

#include <cstdint>

namespace chem {

/// The enumerations of the chemical model, known to Qt's meta-object system, so that a value can be
/// turned into its key text and back.
namespace ZEL_QEnumsFragmentType {

Q_NAMESPACE_EXPORT(Q_DECL_EXPORT)

/// The ion series that a peptide breaks into (Roepstorff & Fohlman 1984; Biemann 1988). A dot marks
/// a radical: one hydrogen more than the series of the same letter, one less for c. Names and
/// numbers are stored in files: do not change them.
enum class FragmentType : int {
    A = 0,    ///< N-terminal, b less CO
    ADot = 1, ///< a + H
    B = 2,    ///< N-terminal, the residues
    C = 3,    ///< N-terminal, b and NH3
    CDot = 4, ///< c - H
    BMinusH2O = 5,
    BMinusNH3 = 6,
    X = 7, ///< C-terminal, the residues and CO2
    YMinusH2O = 8,
    XDot = 9,       ///< x + H
    Y = 10,         ///< C-terminal, the residues and H2O
    Z = 11,         ///< y less NH3
    ZDot = 12,      ///< z + H, as electron transfer gives it
    Immonium = 13,  ///< one residue; no linear fragment
    Internal = 14,  ///< neither terminus; no linear fragment
    Precursor = 15, ///< the whole peptide
};
Q_ENUM_NS(FragmentType)

} // namespace ZEL_QEnumsFragmentType

using ZEL_QEnumsFragmentType::FragmentType;

/// A set of fragment types, one bit a type.
using FragmentTypeMask = std::uint32_t;

/// The bit of a type; no bit for a number that is none.
constexpr FragmentTypeMask fragmentTypeBit(FragmentType type)
{
    const int number = static_cast<int>(type);
    return number >= 0 && number <= static_cast<int>(FragmentType::Precursor)
               ? FragmentTypeMask{1} << number
               : 0;
}

/// Every type.
inline constexpr FragmentTypeMask kAllFragmentTypes = 0xffff;

} // namespace chem
