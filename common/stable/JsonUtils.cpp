#include "common/stable/JsonUtils.h"

#include <cmath>
#include <limits>

namespace zel {

namespace {

/// The member of this key, provided that it is there and has the wanted type.
Result<QJsonValue> memberOfType(const QJsonObject& object,
                                const QString& key,
                                QJsonValue::Type type,
                                const char* typeName)
{
    Error e;
    ZEL_RETURN_IF_ERROR(JsonUtils::checkValue(object, key));
    QJsonValue member = object.value(key);
    if (member.type() != type) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("JSON value of key \"%1\" is not %2")
                             .arg(key, QString::fromUtf8(typeName)));
    }
    return member;
}

} // namespace

Error JsonUtils::checkValue(const QJsonObject& object, const QString& key)
{
    if (!object.contains(key)) {
        ZEL_RETURN_ERROR(kFileFormatError, QStringLiteral("JSON key \"%1\" is missing").arg(key));
    }
    return kNoError;
}

Result<int> JsonUtils::intValue(const QJsonObject& object, const QString& key)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonValue member,
                         memberOfType(object, key, QJsonValue::Double, "a whole number"));
    const double value = member.toDouble();
    if (value != std::trunc(value) || value < std::numeric_limits<int>::min() ||
        value > std::numeric_limits<int>::max()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("JSON value of key \"%1\" is not a whole number").arg(key));
    }
    return static_cast<int>(value);
}

Result<double> JsonUtils::doubleValue(const QJsonObject& object, const QString& key)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonValue member,
                         memberOfType(object, key, QJsonValue::Double, "a number"));
    return member.toDouble();
}

Result<QString> JsonUtils::stringValue(const QJsonObject& object, const QString& key)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonValue member,
                         memberOfType(object, key, QJsonValue::String, "a text"));
    return member.toString();
}

Result<QJsonObject> JsonUtils::objectValue(const QJsonObject& object, const QString& key)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonValue member,
                         memberOfType(object, key, QJsonValue::Object, "an object"));
    return member.toObject();
}

Result<QJsonArray> JsonUtils::arrayValue(const QJsonObject& object, const QString& key)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonValue member,
                         memberOfType(object, key, QJsonValue::Array, "an array"));
    return member.toArray();
}

} // namespace zel
