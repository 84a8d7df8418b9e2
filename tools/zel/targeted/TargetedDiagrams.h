#pragma once

#include "common/stable/Error.h"
#include "tools/zel/targeted/TargetedMatches.h"

#include <QSet>
#include <QString>

namespace zel::tool {

/// A page that the library writes by its path when an object goes. It is written under another name
/// beside, and takes its own when all went well.
class DiagramPage
{
public:
    /// \param path  empty: no page is wanted
    explicit DiagramPage(const QString& path);
    /// Removes what was not committed.
    ~DiagramPage();
    Q_DISABLE_COPY_MOVE(DiagramPage)

    /// Where the library is to write; empty without a page.
    QString partPath() const;
    /// \return kFileOpenError when the page could not be written
    Error commit();

private:
    QString m_path;
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
