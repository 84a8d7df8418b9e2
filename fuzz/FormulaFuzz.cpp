// Any text as a formula: an error, or a molecule whose own formula is read back as the same
// molecule.

#include "chemical_model/ChemicalFactory.h"

#include <QString>

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    const auto factory = chem::defaultChemicalFactory();
    const auto molecule = factory->constructMolecule(text);
    if (!molecule.isOk()) {
        return 0;
    }
    if (!std::isfinite(molecule.value().monoisotopicMass())) {
        std::abort();
    }
    if (!molecule.value().isEmpty()) {
        const auto again = factory->constructMolecule(molecule.value().formula());
        if (!again.isOk() || !(again.value() == molecule.value())) {
            std::abort();
        }
    }
    return 0;
}
