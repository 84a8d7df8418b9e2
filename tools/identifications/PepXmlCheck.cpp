#include "tools/identifications/PepXmlCheck.h"

#include <QStringList>
#include <QXmlStreamReader>

#include <algorithm>

namespace zel::identifications {

namespace {

/// An element and the one that it stands in.
struct Place
{
    const char* element;
    const char* parent;
};

constexpr Place kPlaces[] = {
    {"msms_run_summary", "msms_pipeline_analysis"},
    {"sample_enzyme", "msms_run_summary"},
    {"specificity", "sample_enzyme"},
    {"search_summary", "msms_run_summary"},
    {"search_database", "search_summary"},
    {"enzymatic_search_constraint", "search_summary"},
    {"aminoacid_modification", "search_summary"},
    {"terminal_modification", "search_summary"},
    {"spectrum_query", "msms_run_summary"},
    {"search_result", "spectrum_query"},
    {"search_hit", "search_result"},
    {"alternative_protein", "search_hit"},
    {"modification_info", "search_hit"},
    {"mod_aminoacid_mass", "modification_info"},
    {"search_score", "search_hit"},
};

/// The element in which another one must stand; null for one that may stand anywhere.
const char* parentOf(QStringView element)
{
    const auto* const found = std::ranges::find_if(kPlaces, [element](const Place& place) {
        return element == QLatin1StringView(place.element);
    });
    return found == std::end(kPlaces) ? nullptr : found->parent;
}

} // namespace

Error checkPepXml(QIODevice* file)
{
    QXmlStreamReader xml(file);
    QStringList open;
    int runCount = 0;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::EndElement) {
            open.removeLast();
        } else if (token == QXmlStreamReader::StartElement) {
            const char* const parent = parentOf(xml.name());
            if (parent != nullptr && open.value(open.size() - 1) != QLatin1StringView(parent)) {
                ZEL_RETURN_ERROR(kFileFormatError,
                                 QStringLiteral("line %1: %2 does not stand in %3")
                                     .arg(xml.lineNumber())
                                     .arg(xml.name(), QLatin1StringView(parent)));
            }
            runCount += xml.name() == QLatin1StringView("msms_run_summary") ? 1 : 0;
            open.append(xml.name().toString());
        }
    }
    if (xml.hasError()) {
        ZEL_RETURN_ERROR(
            kFileFormatError,
            QStringLiteral("line %1: %2").arg(xml.lineNumber()).arg(xml.errorString()));
    }
    if (runCount != 1) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("a pepXML file of one run is wanted, but this one has %1")
                             .arg(runCount));
    }
    return kNoError;
}

} // namespace zel::identifications
