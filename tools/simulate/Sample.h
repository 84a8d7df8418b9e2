#pragma once

#include "tools/simulate/SimulatedPeptide.h"
#include "tools/simulate/Truth.h"

#include <vector>

namespace zel::simulate {

/// A peptide as it elutes in one sample. Borrows the peptide.
struct ElutingPeptide
{
    const SimulatedPeptide* peptide;
    double apexMinutes;
    double startMinutes; ///< where its signal is a millionth of that at the apex
    double endMinutes;
    double area; ///< counts * min
};

/// The peptides that a sample holds, in the order of `peptides`, with its own amounts and times.
std::vector<ElutingPeptide> elutingPeptides(const SimulationSettings& settings,
                                            const std::vector<SimulatedPeptide>& peptides,
                                            int sampleIndex);

/// What is known of their ions.
QList<TrueIon> truthOf(const SimulationSettings& settings,
                       const std::vector<ElutingPeptide>& eluting,
                       int sampleIndex);

} // namespace zel::simulate
