#include "peptides/PeptidesList.h"

#include "common/stable/JsonList_p.h"
#include "common/stable/JsonText_p.h"
#include "common/stable/Logging.h"

namespace zel {

QJsonArray PeptidesList::toJson() const
{
    return listToJson(m_peptides);
}

Error PeptidesList::fromJson(const QJsonArray& array)
{
    Error e;
    ZEL_RETURN_IF_ERROR(listFromJson(array, &m_peptides));
    return e;
}

QString PeptidesList::serialize() const
{
    return jsonText(toJson());
}

Error PeptidesList::deserialize(const QString& text)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QJsonArray array, parseJsonArray(text));
    ZEL_RETURN_IF_ERROR(fromJson(array));
    return e;
}

void PeptidesListUtils::writePeptideListToJsonText(const QString& path, const PeptidesList& list)
{
    writeJsonFile(
        path, list.serialize(), "provide a valid read-write text file to export ChargeFeature(s)");
}

Error PeptidesListUtils::readPeptideListFromJsonText(const QString& path, PeptidesList* list)
{
    Error e;
    if (path.isEmpty()) {
        qCDebug(algoLog) << "provided text file is empty";
        return e;
    }
    list->clear();
    if (const std::optional<QString> text = readJsonFile(path)) {
        ZEL_RETURN_IF_ERROR(list->deserialize(*text));
    }
    return e;
}

} // namespace zel
