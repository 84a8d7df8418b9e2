#include "chemical_model/MoleculeComplex.h"

#include "chemical_model/Residues.h"

namespace chem {

MoleculeComplex::MoleculeComplex(const QString& sequence)
    : m_sequence(sequence)
    , m_monoisotopicMass(peptideMass(sequence))
{}

Molecule MoleculeComplex::molecule() const
{
    Molecule molecule = kWater;
    for (const QChar letter : m_sequence) {
        molecule += residueComposition(letter);
    }
    return molecule;
}

} // namespace chem
