#include "feature_finder/records/ChargeFeatureList.h"

#include "common/stable/JsonText_p.h"
#include "common/stable/JsonUtils.h"

#include <QStringList>

#include <algorithm>

namespace zel {

QString ChargeFeatureList::serialize() const
{
    return jsonText(toJson());
}

Error ChargeFeatureList::deserialize(const QString& text)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QJsonObject object, parseJsonObject(text));
    ZEL_RETURN_IF_ERROR(fromJson(object));
    return e;
}

QJsonObject ChargeFeatureList::toJson() const
{
    QJsonObject object;
    for (qsizetype i = 0; i < m_features.size(); ++i) {
        object.insert(QStringLiteral("feature%1").arg(i + 1), m_features[i].toJson());
    }
    return object;
}

Error ChargeFeatureList::fromJson(const QJsonObject& object)
{
    Error e;
    clear();
    QStringList keys = object.keys();
    std::sort(keys.begin(), keys.end());
    for (const QString& key : std::as_const(keys)) {
        if (!key.contains(QLatin1String("feature"))) {
            ZEL_RETURN_ERROR(
                kError, QStringLiteral("json object key %1 doesnt't contain feature").arg(key));
        }
        ZEL_ASSIGN_OR_RETURN(const QJsonObject member, JsonUtils::objectValue(object, key));
        ChargeFeature feature;
        ZEL_RETURN_IF_ERROR(feature.fromJson(member));
        addChargeFeature(feature);
    }
    return e;
}

} // namespace zel
