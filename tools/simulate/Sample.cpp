#include "tools/simulate/Sample.h"

#include "common/stable/SharedNumbers.h"
#include "tools/simulate/RandomStream.h"
#include "tools/simulate/RetentionDrift.h"

#include <cmath>

namespace zel::simulate {

namespace {

/// Height, relative to the apex, at which the truth says that a peak begins and ends.
constexpr double kTruthLimit = 0.01;
/// Height at which the simulation lets it begin and end.
constexpr double kSignalLimit = 1e-6;

} // namespace

std::vector<ElutingPeptide> elutingPeptides(const SimulationSettings& settings,
                                            const std::vector<SimulatedPeptide>& peptides,
                                            int sampleIndex)
{
    const RetentionDrift drift(settings, sampleIndex);
    std::vector<ElutingPeptide> eluting;
    eluting.reserve(peptides.size());
    for (std::size_t i = 0; i < peptides.size(); ++i) {
        const SimulatedPeptide& peptide = peptides[i];
        RandomStream random(settings.seed,
                            {RandomStream::Samples, static_cast<std::uint64_t>(sampleIndex), i});
        const bool isMissing = random.uniform() < settings.missingFraction;
        const double amount = std::exp(settings.abundanceSpread * random.boundedNormal());
        const double jitter =
            settings.retentionJitterSeconds / kSecondsPerMinute * random.boundedNormal();
        if (isMissing) {
            continue;
        }
        const double apex = drift.map(peptide.apexMinutes) + jitter;
        eluting.push_back({&peptide,
                           apex,
                           apex + peptide.shape.start(kSignalLimit),
                           apex + peptide.shape.end(kSignalLimit),
                           peptide.area * amount});
    }
    return eluting;
}

QList<TrueIon> truthOf(const SimulationSettings& settings,
                       const std::vector<ElutingPeptide>& eluting,
                       int sampleIndex)
{
    const double mobilityHalfWidth =
        settings.mobilitySigma * std::sqrt(-2.0 * std::log(kTruthLimit));
    QList<TrueIon> truth;
    for (const ElutingPeptide& elution : eluting) {
        const SimulatedPeptide& peptide = *elution.peptide;
        for (const SimulatedIon& ion : peptide.ions) {
            TrueIon known;
            known.sample = sampleIndex;
            known.sequence = peptide.sequence;
            known.mass = peptide.mass;
            known.charge = ion.charge;
            known.mz = ion.mz;
            known.rtApex = elution.apexMinutes;
            known.rtStart = elution.apexMinutes + peptide.shape.start(kTruthLimit);
            known.rtEnd = elution.apexMinutes + peptide.shape.end(kTruthLimit);
            known.rtReference = peptide.apexMinutes;
            if (settings.mobilityScanCount > 0) {
                known.mobilityApex = ion.mobility;
                known.mobilityStart = ion.mobility - mobilityHalfWidth;
                known.mobilityEnd = ion.mobility + mobilityHalfWidth;
            }
            known.area = elution.area * ion.share;
            known.apexIntensity = known.area * peptide.shape.height(0.0);
            known.isotopeFractions = peptide.isotopeFractions;
            truth.append(known);
        }
    }
    return truth;
}

} // namespace zel::simulate
