#include "tools/io/TsvTable.h"

#include "tools/io/InputFile.h"

#include <cmath>

namespace zel::io {

namespace {

QStringList trimmedCells(const QString& line)
{
    QStringList cells = line.split(QLatin1Char('\t'));
    for (QString& cell : cells) {
        cell = cell.trimmed();
    }
    return cells;
}

QString placeOf(const QString& path, int lineNumber)
{
    return QStringLiteral("%1, line %2").arg(path, QString::number(lineNumber));
}

Error lineError(const QString& path, int lineNumber, const QString& message)
{
    return Error(kFileFormatError, placeOf(path, lineNumber) + QLatin1String(": ") + message);
}

} // namespace

QByteArray tsvCell(QByteArray text)
{
    return text.replace('\t', ' ').replace('\n', ' ').replace('\r', ' ');
}

Result<TsvTable> TsvTable::read(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const auto input, InputFile::open(path));
    return read(*input);
}

Result<TsvTable> TsvTable::read(InputFile& input)
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QByteArray bytes, input.readText());
    const QString& path = input.path();
    TsvTable table;
    table.m_path = path;
    int lineNumber = 0;
    for (qsizetype start = 0; start < bytes.size();) {
        const qsizetype newline = bytes.indexOf('\n', start);
        const qsizetype end = newline < 0 ? bytes.size() : newline;
        const QByteArrayView line = QByteArrayView(bytes).sliced(start, end - start);
        ZEL_RETURN_IF_ERROR(table.addLine(QString::fromUtf8(line), ++lineNumber));
        start = end + 1;
    }
    if (table.m_columns.isEmpty()) {
        ZEL_RETURN_ERROR(kFileFormatError,
                         QStringLiteral("%1: the table has no header line").arg(path));
    }
    return table;
}

Error TsvTable::addLine(const QString& line, int lineNumber)
{
    if (line.trimmed().isEmpty() || line.startsWith(QLatin1Char('#'))) {
        return kNoError;
    }
    const QStringList cells = trimmedCells(line);
    if (m_columns.isEmpty()) {
        return setHeader(cells, lineNumber);
    }
    if (cells.size() != m_columns.size()) {
        ZEL_RETURN_ERROR(lineError(m_path,
                                   lineNumber,
                                   QStringLiteral("expected %1 cells, but found %2")
                                       .arg(m_columns.size())
                                       .arg(cells.size())));
    }
    m_rows.append({lineNumber, cells});
    return kNoError;
}

Error TsvTable::setHeader(const QStringList& cells, int lineNumber)
{
    m_columnNames = cells;
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (m_columns.contains(cells[i])) {
            ZEL_RETURN_ERROR(lineError(
                m_path, lineNumber, QStringLiteral("two columns are called \"%1\"").arg(cells[i])));
        }
        m_columns.insert(cells[i], i);
    }
    return kNoError;
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

QString TsvTable::place(int row) const
{
    return placeOf(m_path, m_rows[row].lineNumber);
}

Error TsvTable::rowError(int row, const QString& message) const
{
    return lineError(m_path, m_rows[row].lineNumber, message);
}

} // namespace zel::io
