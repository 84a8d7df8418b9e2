#pragma once

#include "chemical_model/Molecule.h"

#include <algorithm>
#include <vector>

namespace zel::test {

/// The isotope distribution of a molecule by mass number, from the lightest isotopes upwards:
/// multiplied out atom by atom, which is slow and obvious.
inline std::vector<double> bruteForceIsotopes(const chem::Molecule& molecule, std::size_t peakCount)
{
    std::vector<long double> all(peakCount, 0.0L);
    all[0] = 1.0L;
    for (std::size_t element = 0; element < chem::kElementCount; ++element) {
        const chem::ElementInfo& info = chem::elementInfo(static_cast<chem::Element>(element));
        const auto atoms = molecule.count(static_cast<chem::Element>(element));
        for (std::int64_t atom = 0; atom < atoms; ++atom) {
            std::vector<long double> next(peakCount, 0.0L);
            for (const chem::Isotope& isotope : info.isotopes) {
                const auto shift =
                    static_cast<std::size_t>(isotope.massNumber - info.isotopes[0].massNumber);
                for (std::size_t k = shift; k < peakCount; ++k) {
                    next[k] += all[k - shift] * isotope.abundance;
                }
            }
            all = std::move(next);
        }
    }
    return {all.begin(), all.end()};
}

} // namespace zel::test
