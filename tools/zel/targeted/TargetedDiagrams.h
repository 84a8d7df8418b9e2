#pragma once

#include "common/stable/Result.h"
#include "tools/io/UnfinishedOutput.h"
#include "tools/zel/targeted/TargetedMatches.h"

#include <QSet>
#include <QString>
#include <QTemporaryDir>

#include <memory>

namespace zel::tool {

/// A page of diagrams, whole or not at all. The library writes it by its path when an object goes,
/// and reports no failure: it gets a path in a temporary folder, and what it wrote there is checked
/// and goes into the wanted file.
class DiagramPage
{
public:
    /// \param path  empty: no page is wanted
    /// \return kFileOpenError when there is no place for the temporary folder
    static Result<DiagramPage> open(const QString& path);

    /// Where the library is to write; empty without a page.
    QString libraryPath() const;
    /// Makes the page. \return kError or kFileOpenError when it could not be written
    Error commit() const;

private:
    QString m_path;
    std::shared_ptr<io::UnfinishedOutput> m_mark; ///< set as long as the folder may be there
    std::shared_ptr<QTemporaryDir> m_folder;
};

/// "page.alignment.html" for "page.html", and nothing for nothing.
QString alignmentPagePath(const QString& path);

/// Which ions are drawn, and where.
struct Drawing
{
    QSet<QString> hashes;
    QString finderPath;    ///< empty: the finder's decisions are not drawn
    QString alignmentPath; ///< empty: the alignment is not drawn
};

/// The hashes of the ions to draw: all, or `maxCount` of them, evenly chosen from their order.
QSet<QString> hashesToDraw(const QList<TargetedRun>& runs, int maxCount);

} // namespace zel::tool
