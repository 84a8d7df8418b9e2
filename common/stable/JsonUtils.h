#pragma once

#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QJsonArray>
#include <QJsonObject>

namespace zel {

/// Typed access to a member of a JSON object. Each operation fails with kFileFormatError, naming
/// the key, when the key is missing or its value has another type.
class ZEL_EXPORT JsonUtils
{
public:
    /// Fails when the key is missing; a member of value `null` is there.
    static Error checkValue(const QJsonObject& object, const QString& key);

    /// A number without a fractional part inside the range of `int`.
    static Result<int> intValue(const QJsonObject& object, const QString& key);
    static Result<double> doubleValue(const QJsonObject& object, const QString& key);
    static Result<QString> stringValue(const QJsonObject& object, const QString& key);
    static Result<QJsonObject> objectValue(const QJsonObject& object, const QString& key);
    static Result<QJsonArray> arrayValue(const QJsonObject& object, const QString& key);
};

} // namespace zel
