#pragma once

#include "chemical_model/Molecule.h"
#include "chemical_model/MoleculeComplex.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>
#include <QSharedPointer>

namespace chem {

/// Builds molecules and isotope patterns out of the element table. Holds nothing that changes; all
/// operations are safe to call from several threads.
class ZEL_EXPORT ChemicalFactory
{
public:
    /// The molecule of a formula; negative counts describe a difference of molecules. See
    /// Molecule::fromFormula for the notation and the failures.
    zel::Result<Molecule> constructMolecule(const QString& formula) const;

    /// The linear peptide of these one-letter codes; never null. Letters without a mass of their
    /// own and other characters count 0.
    QSharedPointer<MoleculeComplex> constructLinearPeptideComplex(const QString& sequence) const;

    /// The isotope pattern of an ion of a molecule: one point for each mass number from the
    /// monoisotopic peak upwards, until 99.99 % of what lies there is covered, at least five as
    /// far as there are. Point k is at zel::ionMz(monoisotopic mass, charge, k). Of elements whose
    /// lightest isotope is not the most abundant one (Se, Fe), the peaks below the monoisotopic one
    /// are left out. See IsotopeDistribution.h for the method.
    /// \param charge         protons taken up; negative: given off; 0: neutral masses
    /// \param envelope       replaced on success
    /// \param normalization  1: the intensities sum to 1; 0: each is its share of all the
    ///                       molecule's isotopologues
    /// \return kBadParameterError for a molecule without atoms or with negative counts, for one
    ///         beyond about 15 MDa, and for another normalization
    zel::Error generateIsotopeEnvelope(const Molecule& molecule,
                                       int charge,
                                       QList<QPointF>* envelope,
                                       int normalization) const;
};

/// The factory that everyone shares; never null.
ZEL_EXPORT QSharedPointer<const ChemicalFactory> defaultChemicalFactory();

} // namespace chem
