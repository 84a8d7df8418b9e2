#include "common/core_mini/src/algo/isotopes/MolecularFormula.h"

#include "chemical_model/Elements.h"

namespace zel {

void MolecularFormula::setMolecularFormula(const QHash<AtomType, double>& atoms)
{
    for (int type = 0; type < kAtomTypeCount; ++type) {
        m_counts[static_cast<std::size_t>(type)] = atoms.value(static_cast<AtomType>(type), 0.0);
    }
}

double MolecularFormula::monoisotopicMass() const
{
    double mass = 0.0;
    for (std::size_t i = 0; i < m_counts.size(); ++i) {
        mass += m_counts[i] * chem::monoisotopicMass(static_cast<chem::Element>(i));
    }
    return mass;
}

} // namespace zel
