#include "tools/zel/TsvTable.h"

#include <QFile>

#include <cmath>

namespace zel::tool {

namespace {

QStringList trimmedCells(const QString& line)
{
    QStringList cells = line.split(QLatin1Char('\t'));
    for (QString& cell : cells) {
        cell = cell.trimmed();
    }
    return cells;
}

Error lineError(const QString& path, int lineNumber, const QString& message)
{
    return Error(kFileFormatError,
                 QStringLiteral("%1, line %2: %3").arg(path).arg(lineNumber).arg(message));
}

} // namespace

Result<TsvTable> TsvTable::read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ZEL_RETURN_ERROR(
            kFileOpenError,
            QStringLiteral("Could not open file %1: %2").arg(path, file.errorString()));
    }
    TsvTable table;
    table.m_path = path;
    for (int lineNumber = 1; !file.atEnd(); ++lineNumber) {
        const QString line = QString::fromUtf8(file.readLine());
        if (line.trimmed().isEmpty() || line.startsWith(QLatin1Char('#'))) {
            continue;
        }
        const QStringList cells = trimmedCells(line);
        if (table.m_columns.isEmpty()) {
            for (qsizetype i = 0; i < cells.size(); ++i) {
                table.m_columns.insert(cells[i], i);
            }
        } else if (cells.size() != table.m_columns.size()) {
            ZEL_RETURN_ERROR(lineError(path,
                                       lineNumber,
                                       QStringLiteral("expected %1 cells, but found %2")
                                           .arg(table.m_columns.size())
                                           .arg(cells.size())));
        } else {
            table.m_rows.append({lineNumber, cells});
        }
    }
    if (table.m_columns.isEmpty()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1: the table has no header line").arg(path));
    }
    return table;
}

QString TsvTable::text(int row, const QString& column) const
{
    const auto found = m_columns.constFind(column);
    return found == m_columns.cend() ? QString() : m_rows[row].cells[*found];
}

Result<double> TsvTable::number(int row, const QString& column) const
{
    const QString cell = text(row, column);
    bool ok = false;
    const double value = cell.toDouble(&ok);
    if (!ok || !std::isfinite(value)) {
        ZEL_RETURN_ERROR(
            rowError(row,
                     QStringLiteral("expected a number in column \"%1\", but found \"%2\"")
                         .arg(column, cell)));
    }
    return value;
}

Result<std::optional<double>> TsvTable::optionalNumber(int row, const QString& column) const
{
    if (text(row, column).isEmpty()) {
        return std::optional<double>();
    }
    ZEL_ASSIGN_OR_RETURN(const double value, number(row, column));
    return std::optional<double>(value);
}

Error TsvTable::rowError(int row, const QString& message) const
{
    return lineError(m_path, m_rows[row].lineNumber, message);
}

} // namespace zel::tool
