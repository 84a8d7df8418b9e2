#pragma once

#include "feature_finder/records/ChargeFeatureList.h"
#include "ms1Matcher/PeptideMatches.h"
#include "peptides/PeptidesList.h"

namespace zel {

/// Matches peptides to charge features by mass alone: no time, charge or isotopes, and no ranking.
/// A peptide matches where its mass lies within the tolerance of a feature's monoisotopic mass, the
/// ends of the window included; the tolerance is taken of the feature's mass.
///
/// Holds copies of its inputs, which share their storage with the caller's. One object serves one
/// thread at a time.
class ZEL_EXPORT Ms1Matcher
{
public:
    Ms1Matcher(const PeptidesList& peptides,
               const ChargeFeatureList& features,
               double tolerancePpm);

    /// Replaces the results: an entry for each feature that has a match, in the order of the
    /// features, with its peptides in the order of theirs, each with the score 100.0. Never fails.
    /// \note O(p log p + f log p) for p peptides and f features, and the matches.
    Error exec();

    ChargeFeaturePeptideListMatchesList matchedChargeFeaturePeptides() const { return m_matches; }

    /// Empties the inputs and the results.
    void clear();

private:
    PeptidesList m_peptides;
    ChargeFeatureList m_features;
    ChargeFeaturePeptideListMatchesList m_matches;
    double m_tolerancePpm;
};

/// Matches as text files.
class ZEL_EXPORT Ms1MatcherUtils
{
public:
    /// Writes ChargeFeaturePeptideListMatchesList::serialize. What fails is left to the log.
    static void writeChargeFeaturePeptideListMatchesListToJsonText(
        const QString& path, const ChargeFeaturePeptideListMatchesList& list);
};

} // namespace zel
