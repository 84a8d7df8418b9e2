#include "chemical_model/ChemicalFactory.h"

#include "chemical_model/IsotopeDistribution.h"
#include "common/stable/PhysicalConstants.h"

namespace chem {

using zel::Error;
using zel::kBadParameterError;
using zel::kNoError;
using zel::Result;

namespace {

/// The elements that a molecule has. Counts may be negative.
QVarLengthArray<ElementAmount, kElementCount> compositionOf(const Molecule& molecule)
{
    QVarLengthArray<ElementAmount, kElementCount> composition;
    for (std::size_t i = 0; i < kElementCount; ++i) {
        const auto element = static_cast<Element>(i);
        if (molecule.count(element) != 0) {
            composition.append({element, static_cast<double>(molecule.count(element))});
        }
    }
    return composition;
}

/// Mass units from the isotopologue of the lightest isotopes to the monoisotopic one.
qsizetype monoisotopicShift(const Molecule& molecule)
{
    std::int64_t shift = 0;
    for (std::size_t i = 0; i < kElementCount; ++i) {
        const auto element = static_cast<Element>(i);
        const ElementInfo& info = elementInfo(element);
        shift += molecule.count(element) *
                 (info.principalIsotope().massNumber - info.isotopes.front().massNumber);
    }
    return static_cast<qsizetype>(shift);
}

} // namespace

Result<Molecule> ChemicalFactory::constructMolecule(const QString& formula) const
{
    ZEL_ASSIGN_OR_RETURN(const Molecule molecule, Molecule::fromFormula(formula));
    return molecule;
}

QSharedPointer<MoleculeComplex> ChemicalFactory::constructLinearPeptideComplex(
    const QString& sequence) const
{
    return QSharedPointer<MoleculeComplex>::create(sequence);
}

Error ChemicalFactory::generateIsotopeEnvelope(const Molecule& molecule,
                                               int charge,
                                               QList<QPointF>* envelope,
                                               int normalization) const
{
    Error e;
    if (normalization != 0 && normalization != 1) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         QStringLiteral("The normalization of an isotope envelope must be 0 or 1, "
                                        "but is %1")
                             .arg(normalization));
    }
    if (molecule.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError, "A molecule without atoms has no isotope envelope");
    }
    IsotopeProbabilities pattern;
    ZEL_RETURN_IF_ERROR(aggregatedIsotopeDistribution(compositionOf(molecule), &pattern));
    pattern.remove(0, std::min(monoisotopicShift(molecule), pattern.size() - 1));
    cutIsotopePattern(&pattern, normalization == 1);

    const double mass = molecule.monoisotopicMass();
    envelope->clear();
    envelope->reserve(pattern.size());
    for (int k = 0; k < pattern.size(); ++k) {
        envelope->append(QPointF(zel::ionMz(mass, charge, k), pattern[k]));
    }
    return kNoError;
}

QSharedPointer<const ChemicalFactory> defaultChemicalFactory()
{
    static const QSharedPointer<const ChemicalFactory> factory =
        QSharedPointer<const ChemicalFactory>::create();
    return factory;
}

} // namespace chem
