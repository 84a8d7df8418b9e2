#pragma once

#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace zel::test {

/// The text of a file; null when it cannot be read.
inline QString textOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

/// The diagrams of a page: for each, the lines of its shapes.
inline QList<QStringList> diagramsOf(const QString& page)
{
    QList<QStringList> diagrams;
    for (const QString& cell : page.split(QStringLiteral("<td>")).mid(1)) {
        diagrams.append(
            cell.split(QLatin1Char('\n')).filter(QRegularExpression(QStringLiteral("^\t<"))));
    }
    return diagrams;
}

} // namespace zel::test
