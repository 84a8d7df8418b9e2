#pragma once

#include "feature_finder/records/ChargeFeature.h"
#include "peptides/Peptide.h"

#include <QString>

namespace zel {

/// A peptide that a feature may be.
struct ZEL_EXPORT PeptideMatchScore
{
    Peptide peptide;
    double score = 0.0;

    /// The members "peptide" and "score".
    QJsonObject toJson() const;
    /// \return the failure of the first member that is missing or of another type
    Error fromJson(const QJsonObject& object);
};

/// Scores are compared by MathUtils::nearlyEqual.
ZEL_EXPORT bool operator==(const PeptideMatchScore& a, const PeptideMatchScore& b);

/// All peptides that one feature may be.
struct ZEL_EXPORT PeptidesMatchScoreList
{
    QList<PeptideMatchScore> peptideMatchScores;

    void addPeptideMatchScore(const PeptideMatchScore& match) { peptideMatchScores.append(match); }
    void clear() { peptideMatchScores.clear(); }

    QJsonArray toJson() const;
    /// Replaces the list.
    /// \return the failure of the first element that is no match; those before it are in the list
    Error fromJson(const QJsonArray& array);

    bool operator==(const PeptidesMatchScoreList& other) const = default;
};

/// A feature with the peptides that it may be.
class ZEL_EXPORT ChargeFeaturePeptideMatchList
{
public:
    ChargeFeaturePeptideMatchList() = default;
    ChargeFeaturePeptideMatchList(const ChargeFeature& chargeFeature,
                                  const PeptidesMatchScoreList& peptidesList)
        : m_chargeFeature(chargeFeature)
        , m_peptidesList(peptidesList)
    {}

    ChargeFeature chargeFeature() const { return m_chargeFeature; }
    PeptidesMatchScoreList peptidesList() const { return m_peptidesList; }

    /// Back to a default feature without peptides.
    void clear() { *this = {}; }

    /// The members "chargeFeature" and "peptidesList".
    QJsonObject toJson() const;
    /// \return the failure of the first member that is missing or of another type
    Error fromJson(const QJsonObject& object);

    bool operator==(const ChargeFeaturePeptideMatchList& other) const = default;

private:
    ChargeFeature m_chargeFeature;
    PeptidesMatchScoreList m_peptidesList;
};

/// The features that were matched, with the JSON text by which they travel.
class ZEL_EXPORT ChargeFeaturePeptideListMatchesList
{
public:
    void addChargeFeaturePeptideMatchList(const ChargeFeaturePeptideMatchList& matches)
    {
        m_matches.append(matches);
    }
    QList<ChargeFeaturePeptideMatchList> chargeFeaturePeptideMatches() const { return m_matches; }
    void clear() { m_matches.clear(); }

    /// The array as indented JSON text.
    QString serialize() const;
    /// Replaces the list.
    /// \return kBadParameterError, with the list as it was, when the text is not that of a JSON
    ///         array; else the failure of the first element that cannot be read, with those before
    ///         it in the list
    Error deserialize(QString text);

    bool operator==(const ChargeFeaturePeptideListMatchesList& other) const = default;

private:
    QJsonArray toJson() const;
    Error fromJson(const QJsonArray& array);

    QList<ChargeFeaturePeptideMatchList> m_matches;
};

} // namespace zel
