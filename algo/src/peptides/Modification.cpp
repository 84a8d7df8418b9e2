#include "peptides/Modification.h"

#include "common/stable/JsonList_p.h"
#include "common/stable/JsonUtils.h"
#include "common/stable/MathUtils.h"

namespace zel {

namespace {

const QString kName = QStringLiteral("name");
const QString kSite = QStringLiteral("site");
const QString kMass = QStringLiteral("mass");
const QString kLocation = QStringLiteral("location");
const QString kCount = QStringLiteral("count");
const QString kModification = QStringLiteral("modification");

} // namespace

QJsonObject Modification::toJson() const
{
    return {{kName, name}, {kSite, site}, {kMass, mass}, {kLocation, location}};
}

Error Modification::fromJson(const QJsonObject& object)
{
    ZEL_ASSIGN_OR_RETURN(name, JsonUtils::stringValue(object, kName));
    ZEL_ASSIGN_OR_RETURN(site, JsonUtils::stringValue(object, kSite));
    ZEL_ASSIGN_OR_RETURN(mass, JsonUtils::doubleValue(object, kMass));
    if (object.contains(kLocation)) {
        ZEL_ASSIGN_OR_RETURN(location, JsonUtils::intValue(object, kLocation));
    }
    return kNoError;
}

bool operator==(const Modification& a, const Modification& b)
{
    return a.name == b.name && a.site == b.site && MathUtils::nearlyEqual(a.mass, b.mass) &&
           a.location == b.location;
}

QJsonObject ModificationWithCount::toJson() const
{
    return {{kCount, count}, {kModification, modification.toJson()}};
}

Error ModificationWithCount::fromJson(const QJsonObject& object)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(count, JsonUtils::intValue(object, kCount));
    ZEL_ASSIGN_OR_RETURN(const QJsonObject member, JsonUtils::objectValue(object, kModification));
    ZEL_RETURN_IF_ERROR(modification.fromJson(member));
    return e;
}

void Modifications::addModificationWithCount(const ModificationWithCount& modification)
{
    modifications.append(modification);
}

double Modifications::totalMass() const
{
    double sum = 0.0;
    for (const ModificationWithCount& modification : modifications) {
        sum += modification.totalMass();
    }
    return sum;
}

QJsonArray Modifications::toJson() const
{
    return listToJson(modifications);
}

Error Modifications::fromJson(const QJsonArray& array)
{
    Error e;
    ZEL_RETURN_IF_ERROR(listFromJson(array, &modifications));
    return e;
}

} // namespace zel
