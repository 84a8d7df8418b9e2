// Features against peptides by mass: the matcher, and the plain loop over all pairs.

#include "ms1Matcher/Ms1Matcher.h"

#include <benchmark/benchmark.h>

#include <random>

namespace zel::bench {

namespace {

constexpr double kPpm = 10.0;
constexpr quint32 kSeed = 7;

/// Random peptides of 7 to 30 residues.
PeptidesList randomPeptides(int count)
{
    const QString residues = QStringLiteral("ACDEFGHIKLMNPQRSTVWY");
    std::mt19937 random(kSeed);
    std::uniform_int_distribution<int> lengths(7, 30);
    std::uniform_int_distribution<int> letters(0, 19);
    PeptidesList list;
    for (int i = 0; i < count; ++i) {
        Peptide peptide;
        peptide.sequence.resize(lengths(random));
        for (QChar& residue : peptide.sequence) {
            residue = residues[letters(random)];
        }
        list.addPeptide(peptide);
    }
    return list;
}

/// Features of masses of peptides of the same kind, up to 20 ppm off.
ChargeFeatureList featuresNear(const PeptidesList& peptides)
{
    std::mt19937 random(kSeed + 1);
    std::uniform_real_distribution<double> errors(-20e-6, 20e-6);
    ChargeFeatureList list;
    for (const Peptide& peptide : peptides.peptidesList()) {
        ChargeFeature feature;
        feature.monoIsotopicMass = peptide.mass() * (1.0 + errors(random));
        list.addChargeFeature(feature);
    }
    return list;
}

qint64 matchCount(const PeptidesList& peptides, const ChargeFeatureList& features)
{
    Ms1Matcher matcher(peptides, features, kPpm);
    static_cast<void>(matcher.exec()); // never fails
    qint64 count = 0;
    const auto matches = matcher.matchedChargeFeaturePeptides();
    for (const auto& feature : matches.chargeFeaturePeptideMatches()) {
        count += feature.peptidesList().peptideMatchScores.size();
    }
    return count;
}

/// Every peptide's mass for every feature.
qint64 plainMatchCount(const PeptidesList& peptides, const ChargeFeatureList& features)
{
    qint64 count = 0;
    const QList<Peptide> list = peptides.peptidesList();
    for (const ChargeFeature& feature : features.chargeFeatures()) {
        const double tolerance = feature.monoIsotopicMass * kPpm / 1e6;
        for (const Peptide& peptide : list) {
            const double mass = peptide.mass();
            count += feature.monoIsotopicMass - tolerance <= mass &&
                             mass <= feature.monoIsotopicMass + tolerance
                         ? 1
                         : 0;
        }
    }
    return count;
}

template <qint64 (*count)(const PeptidesList&, const ChargeFeatureList&)>
void match(benchmark::State& state)
{
    const PeptidesList peptides = randomPeptides(static_cast<int>(state.range(0)));
    const ChargeFeatureList features = featuresNear(peptides);
    qint64 matches = 0;
    for (auto _ : state) {
        matches = count(peptides, features);
    }
    if (state.range(0) <= 2000 && matches != plainMatchCount(peptides, features)) {
        state.SkipWithError("not the matches of the plain loop");
    }
    state.counters["matches"] = static_cast<double>(matches);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void matcher(benchmark::State& state)
{
    match<matchCount>(state);
}

void plainMatcher(benchmark::State& state)
{
    match<plainMatchCount>(state);
}

BENCHMARK(matcher)->Arg(2000)->Arg(100'000)->Unit(benchmark::kMillisecond);
BENCHMARK(plainMatcher)->Arg(2000)->Unit(benchmark::kMillisecond);

} // namespace

} // namespace zel::bench
