#pragma once

#include "common/stable/Result.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

namespace zel::io {

class InputFile;

/// A text as a cell of a table that is written: tabs and line ends become blanks.
QByteArray tsvCell(QByteArray text);

/// A table of tab-separated text with one header line, plain or gzip-compressed. Empty lines and
/// lines that start with '#' are skipped.
class TsvTable
{
public:
    /// \return kFileOpenError; kFileFormatError naming the line for a row whose number of cells is
    /// not that of the header, and for a header with two columns of one name; as
    /// InputFile::readText
    static Result<TsvTable> read(const QString& path);
    static Result<TsvTable> read(InputFile& input);

    int rowCount() const { return static_cast<int>(m_rows.size()); }
    /// In the order of the file.
    const QStringList& columnNames() const { return m_columnNames; }
    bool hasColumn(const QString& column) const { return m_columns.contains(column); }

    /// The cell's text without blanks around it; empty for a column that is not there.
    QString text(int row, const QString& column) const;

    /// The cell as a finite number. \return kFileFormatError naming file, line and column
    Result<double> number(int row, const QString& column) const;
    /// The same for a cell that may be empty or whose column may be missing.
    Result<std::optional<double>> optionalNumber(int row, const QString& column) const;

    /// Where a row stands: "FILE, line N".
    QString place(int row) const;
    /// An error about a row: "FILE, line N: MESSAGE".
    Error rowError(int row, const QString& message) const;

private:
    struct Row
    {
        int lineNumber;
        QStringList cells;
    };

    Error addLine(const QString& line, int lineNumber);
    Error setHeader(const QStringList& cells, int lineNumber);

    QString m_path;
    QStringList m_columnNames;
    QHash<QString, qsizetype> m_columns;
    QList<Row> m_rows;
};

} // namespace zel::io
