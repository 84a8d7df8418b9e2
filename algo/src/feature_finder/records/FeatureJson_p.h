#pragma once

#include "common/stable/Result.h"

#include <QJsonObject>
#include <QString>

namespace zel {

/// The object as indented JSON text.
QString jsonText(const QJsonObject& object);

/// The object that a JSON text holds.
/// \return kBadParameterError, with the reason in the log, when the text is not JSON or no object
Result<QJsonObject> parseJsonObject(const QString& text);

} // namespace zel
