#pragma once

#include "common/stable/Result.h"

#include <QJsonArray>
#include <QJsonObject>
#include <QString>

#include <optional>

namespace zel {

// The text forms by which lists of features, peptides and matches travel, and their files.

/// Indented JSON text.
QString jsonText(const QJsonObject& object);
QString jsonText(const QJsonArray& array);

/// The object, or array, that a JSON text holds.
/// \return kBadParameterError, with the reason in the log, when the text is not JSON, or not an
///         object or array
Result<QJsonObject> parseJsonObject(const QString& text);
Result<QJsonArray> parseJsonArray(const QString& text);

/// Writes a text file. What fails is left to the log.
/// \param openFailure  the log's line when the file cannot be opened
void writeJsonFile(const QString& path, const QString& text, const char* openFailure);

/// The text of a file; nothing, with the path in the log, when it cannot be opened.
std::optional<QString> readJsonFile(const QString& path);

} // namespace zel
