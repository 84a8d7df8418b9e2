#pragma once

#include "chemical_model/Molecule.h"
#include "common/stable/Export.h"

#include <QString>

namespace chem {

/// A linear peptide: its residues in order, and what follows from them. A plain value; safe to read
/// from several threads. Made by ChemicalFactory::constructLinearPeptideComplex.
class ZEL_EXPORT MoleculeComplex
{
public:
    /// \param sequence  one-letter codes, from the N to the C terminus; see `residueMass` for what
    ///                  other characters count
    explicit MoleculeComplex(const QString& sequence);

    /// The residues as they were given.
    const QString& sequence() const { return m_sequence; }
    /// Mass of the neutral peptide, Da; that of water for an empty sequence.
    double monoisotopicMass() const { return m_monoisotopicMass; }
    /// The peptide's composition.
    Molecule molecule() const;

private:
    QString m_sequence;
    double m_monoisotopicMass;
};

} // namespace chem
