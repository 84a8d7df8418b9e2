#include "peptides/Peptide.h"

#include "common/core_mini/src/algo/isotopes/MolCalc.h"
#include "common/stable/JsonUtils.h"

namespace zel {

namespace {

const QString kProtein = QStringLiteral("protein");
const QString kProteinLength = QStringLiteral("proteinLength");
const QString kSequence = QStringLiteral("sequence");
const QString kStart = QStringLiteral("start");
const QString kEnd = QStringLiteral("end");
const QString kModifications = QStringLiteral("modifications");

} // namespace

double Peptide::mass() const
{
    return molcalc::calculateMassOfPeptide(sequence, {}) + modifications.totalMass();
}

QJsonObject Peptide::toJson() const
{
    return {{kProtein, protein},
            {kProteinLength, proteinLength},
            {kSequence, sequence},
            {kStart, start},
            {kEnd, end},
            {kModifications, modifications.toJson()}};
}

Error Peptide::fromJson(const QJsonObject& object)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(protein, JsonUtils::stringValue(object, kProtein));
    ZEL_ASSIGN_OR_RETURN(proteinLength, JsonUtils::intValue(object, kProteinLength));
    ZEL_ASSIGN_OR_RETURN(sequence, JsonUtils::stringValue(object, kSequence));
    ZEL_ASSIGN_OR_RETURN(start, JsonUtils::intValue(object, kStart));
    ZEL_ASSIGN_OR_RETURN(end, JsonUtils::intValue(object, kEnd));
    ZEL_ASSIGN_OR_RETURN(const QJsonArray members, JsonUtils::arrayValue(object, kModifications));
    ZEL_RETURN_IF_ERROR(modifications.fromJson(members));
    return e;
}

} // namespace zel
