#pragma once

#include "chemical_model/FragmentType.h"
#include "chemical_model/MoleculeComplex.h"
#include "common/stable/Export.h"

#include <QList>
#include <QString>

namespace chem {

/// One theoretical fragment of a peptide.
struct SimpleFragment
{
    double neutralMass = 0.0; ///< Da; m/z at charge z is neutralMass / z + proton mass
    QString residues;         ///< those that the fragment holds
    FragmentType type = FragmentType::B;
};

/// Appends every linear fragment of the peptide: of each of the types 0 to 12, in their order,
/// those of 1 to all residues, and one precursor. An empty peptide has none. \note Memory grows
/// with the square of the length: every fragment holds its residues.
ZEL_EXPORT void generateLinearFragments(const MoleculeComplex& complex,
                                        QList<SimpleFragment>& fragments);

/// The same, of the types in `types` only, over the elements of `buffer` from its front, whose
/// texts keep their memory; for loops over many peptides. The list only grows: elements after the
/// returned count are stale.
/// \return the number of fragments
ZEL_EXPORT qsizetype generateLinearFragments(const MoleculeComplex& complex,
                                             FragmentTypeMask types,
                                             QList<SimpleFragment>& buffer);

} // namespace chem
