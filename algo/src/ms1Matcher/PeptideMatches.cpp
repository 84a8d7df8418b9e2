#include "ms1Matcher/PeptideMatches.h"

#include "common/stable/JsonList_p.h"
#include "common/stable/JsonText_p.h"
#include "common/stable/JsonUtils.h"
#include "common/stable/MathUtils.h"

namespace zel {

namespace {

const QString kPeptide = QStringLiteral("peptide");
const QString kScore = QStringLiteral("score");
const QString kChargeFeature = QStringLiteral("chargeFeature");
const QString kPeptidesList = QStringLiteral("peptidesList");

} // namespace

QJsonObject PeptideMatchScore::toJson() const
{
    return {{kPeptide, peptide.toJson()}, {kScore, score}};
}

Error PeptideMatchScore::fromJson(const QJsonObject& object)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QJsonObject member, JsonUtils::objectValue(object, kPeptide));
    ZEL_RETURN_IF_ERROR(peptide.fromJson(member));
    ZEL_ASSIGN_OR_RETURN(score, JsonUtils::doubleValue(object, kScore));
    return e;
}

bool operator==(const PeptideMatchScore& a, const PeptideMatchScore& b)
{
    return a.peptide == b.peptide && MathUtils::nearlyEqual(a.score, b.score);
}

QJsonArray PeptidesMatchScoreList::toJson() const
{
    return listToJson(peptideMatchScores);
}

Error PeptidesMatchScoreList::fromJson(const QJsonArray& array)
{
    Error e;
    ZEL_RETURN_IF_ERROR(listFromJson(array, &peptideMatchScores));
    return e;
}

QJsonObject ChargeFeaturePeptideMatchList::toJson() const
{
    return {{kChargeFeature, m_chargeFeature.toJson()}, {kPeptidesList, m_peptidesList.toJson()}};
}

Error ChargeFeaturePeptideMatchList::fromJson(const QJsonObject& object)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QJsonObject feature, JsonUtils::objectValue(object, kChargeFeature));
    ZEL_RETURN_IF_ERROR(m_chargeFeature.fromJson(feature));
    ZEL_ASSIGN_OR_RETURN(const QJsonArray matches, JsonUtils::arrayValue(object, kPeptidesList));
    ZEL_RETURN_IF_ERROR(m_peptidesList.fromJson(matches));
    return e;
}

QString ChargeFeaturePeptideListMatchesList::serialize() const
{
    return jsonText(toJson());
}

Error ChargeFeaturePeptideListMatchesList::deserialize(QString text)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QJsonArray array, parseJsonArray(text));
    ZEL_RETURN_IF_ERROR(fromJson(array));
    return e;
}

QJsonArray ChargeFeaturePeptideListMatchesList::toJson() const
{
    return listToJson(m_matches);
}

Error ChargeFeaturePeptideListMatchesList::fromJson(const QJsonArray& array)
{
    Error e;
    ZEL_RETURN_IF_ERROR(listFromJson(array, &m_matches));
    return e;
}

} // namespace zel
