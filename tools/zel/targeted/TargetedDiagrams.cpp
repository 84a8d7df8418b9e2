#include "tools/zel/targeted/TargetedDiagrams.h"

#include "tools/io/OutputFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace zel::tool {

Result<DiagramPage> DiagramPage::open(const QString& path)
{
    DiagramPage page;
    if (path.isEmpty()) {
        return page;
    }
    page.m_path = path;
    page.m_folder = std::make_shared<QTemporaryDir>();
    if (!page.m_folder->isValid()) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("Could not make a temporary folder for %1: %2")
                             .arg(path, page.m_folder->errorString()));
    }
    page.m_mark = std::make_shared<io::UnfinishedOutput>(io::UnfinishedOutput::Kind::Temporary,
                                                         page.m_folder->path());
    return page;
}

QString DiagramPage::libraryPath() const
{
    return m_folder ? m_folder->filePath(QStringLiteral("page.html")) : QString();
}

Error DiagramPage::commit() const
{
    if (!m_folder) {
        return kNoError;
    }
    Error e;
    ZEL_ASSIGN_OR_RETURN(const auto page, io::OutputFile::open(m_path));
    QFile written(libraryPath());
    const QByteArray content = written.open(QIODevice::ReadOnly) ? written.readAll() : QByteArray();
    if (!content.endsWith("</table></body></html>\n")) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("Could not write %1: its diagrams did not fit into %2")
                             .arg(m_path, QDir::tempPath()));
    }
    *page << content;
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
