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

/// Looks at one element after the other.
class ElementCheck
{
public:
    int runCount() const { return m_runCount; }

    /// \return what is wrong with the element that begins; empty when nothing is
    QString open(const QXmlStreamReader& xml)
    {
        const QString name = xml.name().toString();
        const char* const parent = parentOf(name);
        if (parent != nullptr && m_open.value(m_open.size() - 1) != QLatin1StringView(parent)) {
            return QStringLiteral("%1 does not stand in %2").arg(name, QLatin1StringView(parent));
        }
        m_open.append(name);
        const QXmlStreamAttributes attributes = xml.attributes();
        if (name == QLatin1StringView("msms_run_summary")) {
            ++m_runCount;
        } else if (name == QLatin1StringView("search_summary")) {
            m_hasSummary = true;
        } else if (name == QLatin1StringView("spectrum_query") && !m_hasSummary) {
            return QStringLiteral("no search_summary stands before the first spectrum_query");
        } else if (name == QLatin1StringView("search_hit")) {
            m_peptideLength = attributes.value(QLatin1StringView("peptide")).size();
        } else if (name == QLatin1StringView("mod_aminoacid_mass")) {
            return faultOfPosition(attributes.value(QLatin1StringView("position")));
        }
        return {};
    }

    void close() { m_open.removeLast(); }

private:
    QString faultOfPosition(QStringView text) const
    {
        bool isNumber = false;
        const int position = text.toInt(&isNumber);
        return isNumber && position >= 1 && position <= m_peptideLength
                   ? QString()
                   : QStringLiteral("a modification must have a position from 1 to %1, the length "
                                    "of its peptide, but has \"%2\"")
                         .arg(QString::number(m_peptideLength), text);
    }

    QStringList m_open;
    int m_runCount = 0;
    bool m_hasSummary = false;
    qsizetype m_peptideLength = 0;
};

} // namespace

Error checkPepXml(QIODevice* file)
{
    QXmlStreamReader xml(file);
    ElementCheck elements;
    QString fault;
    while (!xml.atEnd() && fault.isEmpty()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            fault = elements.open(xml);
        } else if (token == QXmlStreamReader::EndElement) {
            elements.close();
        }
    }
    if (xml.hasError()) {
        fault = xml.errorString();
    }
    if (!fault.isEmpty()) {
        ZEL_RETURN_ERROR(
            kFileFormatError,
            QStringLiteral("line %1: %2").arg(QString::number(xml.lineNumber()), fault));
    }
    if (elements.runCount() != 1) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("a pepXML file of one run is wanted, but this one has %1")
                             .arg(elements.runCount()));
    }
    return kNoError;
}

} // namespace zel::identifications
