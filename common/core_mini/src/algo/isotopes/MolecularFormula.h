#pragma once

#include "common/stable/Export.h"

#include <QHash>

#include <array>

namespace zel {

/// How many atoms of the elements of peptides a unit of mass has, such as an average residue
/// ("averagine"). Counts may be fractional. A plain value.
class ZEL_EXPORT MolecularFormula
{
public:
    /// The numbers are fixed: callers give elements by number.
    enum AtomType : int { Carbon = 0, Hydrogen = 1, Nitrogen = 2, Oxygen = 3, Sulfur = 4 };
    static constexpr int kAtomTypeCount = 5;

    /// No atoms.
    MolecularFormula() = default;

    /// Replaces all counts; a type that is not in the table gets none, a number that is no AtomType
    /// is left out.
    void setMolecularFormula(const QHash<AtomType, double>& atoms);

    double count(AtomType type) const { return m_counts[static_cast<std::size_t>(type)]; }

    /// Mass of the unit with each element at its most abundant isotope, Da.
    double monoisotopicMass() const;

private:
    std::array<double, kAtomTypeCount> m_counts{};
};

} // namespace zel
