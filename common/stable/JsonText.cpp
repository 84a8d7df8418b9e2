#include "common/stable/JsonText_p.h"
#include "common/stable/Logging.h"

#include <QFile>
#include <QJsonDocument>

namespace zel {

namespace {

template <typename Value>
QString textOf(const Value& value)
{
    return QString::fromUtf8(QJsonDocument(value).toJson(QJsonDocument::Indented));
}

Result<QJsonDocument> parseDocument(const QString& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (document.isNull()) {
        qCDebug(algoLog).noquote()
            << QStringLiteral("invalid QJsonDocument while conversion from str [%1]").arg(text);
        ZEL_RETURN_ERROR(kBadParameterError);
    }
    return document;
}

void logIsNo(const char* type, const QString& text)
{
    qCDebug(algoLog).noquote() << QStringLiteral(
                                      "QJsonDocument is not a %1 while conversion from str [%2]")
                                      .arg(QLatin1String(type), text);
}

} // namespace

QString jsonText(const QJsonObject& object)
{
    return textOf(object);
}

QString jsonText(const QJsonArray& array)
{
    return textOf(array);
}

Result<QJsonObject> parseJsonObject(const QString& text)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonDocument document, parseDocument(text));
    if (!document.isObject()) {
        logIsNo("QJsonObject", text);
        ZEL_RETURN_ERROR(kBadParameterError);
    }
    return document.object();
}

Result<QJsonArray> parseJsonArray(const QString& text)
{
    ZEL_ASSIGN_OR_RETURN(const QJsonDocument document, parseDocument(text));
    if (!document.isArray()) {
        logIsNo("QJsonArray", text);
        ZEL_RETURN_ERROR(kBadParameterError);
    }
    return document.array();
}

void writeJsonFile(const QString& path, const QString& text, const char* openFailure)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text)) {
        qCDebug(algoLog) << openFailure;
        return;
    }
    const QByteArray bytes = text.toUtf8();
    if (file.write(bytes) != bytes.size() || !file.flush()) {
        qCWarning(algoLog) << "Cannot write JSON file:" << path << file.errorString();
        return;
    }
    qCDebug(algoLog) << "writing JSON output(s) to text complete";
}

std::optional<QString> readJsonFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        qCDebug(algoLog).noquote()
            << QStringLiteral("provided file is not a readonly text file: %1").arg(path);
        return std::nullopt;
    }
    return QString::fromUtf8(file.readAll());
}

} // namespace zel
