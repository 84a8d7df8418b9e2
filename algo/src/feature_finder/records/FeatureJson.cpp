#include "common/stable/Logging.h"
#include "feature_finder/records/FeatureJson_p.h"

#include <QJsonDocument>

namespace zel {

QString jsonText(const QJsonObject& object)
{
    return QString::fromUtf8(QJsonDocument(object).toJson(QJsonDocument::Indented));
}

Result<QJsonObject> parseJsonObject(const QString& text)
{
    const QJsonDocument document = QJsonDocument::fromJson(text.toUtf8());
    if (document.isNull()) {
        qCDebug(algoLog).noquote()
            << QStringLiteral("invalid QJsonDocument while conversion from str [%1]").arg(text);
        ZEL_RETURN_ERROR(kBadParameterError);
    }
    if (!document.isObject()) {
        qCDebug(algoLog).noquote()
            << QStringLiteral("QJsonDocument is not a QJsonObject while conversion from str [%1]")
                   .arg(text);
        ZEL_RETURN_ERROR(kBadParameterError);
    }
    return document.object();
}

} // namespace zel
