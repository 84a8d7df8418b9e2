#include "ms1Matcher/Ms1Matcher.h"

#include "common/stable/JsonText_p.h"
#include "common/stable/Logging.h"

#include <algorithm>
#include <cmath>
#include <vector>

namespace zel {

namespace {

constexpr double kScoreOfAnyMatch = 100.0;

/// The mass of a peptide and its place in the list.
struct PeptideMass
{
    double mass = 0.0; ///< Da
    qsizetype index = 0;
};

/// Ascending in mass. What has no number for a mass matches nothing and is left out.
std::vector<PeptideMass> sortedMasses(const QList<Peptide>& peptides)
{
    std::vector<PeptideMass> masses;
    masses.reserve(static_cast<std::size_t>(peptides.size()));
    for (qsizetype i = 0; i < peptides.size(); ++i) {
        const double mass = peptides[i].mass();
        if (!std::isnan(mass)) {
            masses.push_back({mass, i});
        }
    }
    std::ranges::sort(masses, {}, &PeptideMass::mass);
    return masses;
}

/// The places in the list of the peptides with low <= mass <= high, ascending.
std::vector<qsizetype> indicesBetween(const std::vector<PeptideMass>& masses,
                                      double low,
                                      double high)
{
    std::vector<qsizetype> indices;
    if (!(low <= high)) { // a negative mass or tolerance, or no number
        return indices;
    }
    auto candidate = std::ranges::lower_bound(masses, low, {}, &PeptideMass::mass);
    for (; candidate != masses.end() && candidate->mass <= high; ++candidate) {
        indices.push_back(candidate->index);
    }
    std::ranges::sort(indices);
    return indices;
}

} // namespace

Ms1Matcher::Ms1Matcher(const PeptidesList& peptides,
                       const ChargeFeatureList& features,
                       double tolerancePpm)
    : m_peptides(peptides)
    , m_features(features)
    , m_tolerancePpm(tolerancePpm)
{}

Error Ms1Matcher::exec()
{
    m_matches.clear();
    const QList<Peptide> peptides = m_peptides.peptidesList();
    const std::vector<PeptideMass> masses = sortedMasses(peptides);
    const QList<ChargeFeature> features = m_features.chargeFeatures();
    for (const ChargeFeature& feature : features) {
        const double mass = feature.monoIsotopicMass;
        const double tolerance = mass * m_tolerancePpm / 1e6;
        PeptidesMatchScoreList matches;
        for (const qsizetype index : indicesBetween(masses, mass - tolerance, mass + tolerance)) {
            matches.addPeptideMatchScore({peptides[index], kScoreOfAnyMatch});
        }
        if (!matches.peptideMatchScores.isEmpty()) {
            m_matches.addChargeFeaturePeptideMatchList({feature, matches});
        }
    }
    qCDebug(algoLog).noquote() << QStringLiteral("Ms1Matcher execution finished. adding %1 matches")
                                      .arg(m_matches.chargeFeaturePeptideMatches().size());
    return kNoError;
}

void Ms1Matcher::clear()
{
    m_peptides.clear();
    m_features.clear();
    m_matches.clear();
}

void Ms1MatcherUtils::writeChargeFeaturePeptideListMatchesListToJsonText(
    const QString& path, const ChargeFeaturePeptideListMatchesList& list)
{
    if (path.isEmpty()) {
        qCDebug(algoLog) << "provided text file is empty";
        return;
    }
    writeJsonFile(path,
                  list.serialize(),
                  "provide a valid read-write text file to export "
                  "ChargeFeaturePeptideListMatchesList..");
}

} // namespace zel
