#include "tools/zel/targeted/TargetedDiagrams.h"

#include "tools/io/OutputFile.h"

#include <QFile>
#include <QFileInfo>

namespace zel::tool {

DiagramPage::DiagramPage(const QString& path)
    : m_path(path)
{}

DiagramPage::~DiagramPage()
{
    if (!m_path.isEmpty()) {
        QFile::remove(partPath());
    }
}

QString DiagramPage::partPath() const
{
    return m_path.isEmpty() ? QString() : m_path + QLatin1String(".part");
}

Error DiagramPage::commit()
{
    if (m_path.isEmpty()) {
        return kNoError;
    }
    Error e;
    QFile part(partPath());
    if (!part.open(QIODevice::ReadOnly)) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("Could not write %1: %2").arg(m_path, part.errorString()));
    }
    ZEL_ASSIGN_OR_RETURN(const auto page, io::OutputFile::open(m_path));
    *page << part.readAll();
    ZEL_RETURN_IF_ERROR(page->commit());
    return e;
}

QString alignmentPagePath(const QString& path)
{
    if (path.isEmpty()) {
        return {};
    }
    const QString suffix = QFileInfo(path).suffix();
    return suffix.isEmpty() ? path + QLatin1String(".alignment")
                            : path.chopped(suffix.size()) + QLatin1String("alignment.") + suffix;
}

QSet<QString> hashesToDraw(const QList<TargetedRun>& runs, int maxCount)
{
    QSet<QString> all;
    for (const TargetedRun& run : runs) {
        for (auto ion = run.psms.cbegin(); ion != run.psms.cend(); ++ion) {
            all.insert(ion.key());
        }
    }
    if (all.size() <= maxCount) {
        return all;
    }
    QStringList sorted(all.cbegin(), all.cend());
    sorted.sort(Qt::CaseSensitive);
    QSet<QString> chosen;
    for (qsizetype i = 0; i < maxCount; ++i) {
        chosen.insert(sorted[i * sorted.size() / maxCount]);
    }
    return chosen;
}

} // namespace zel::tool
