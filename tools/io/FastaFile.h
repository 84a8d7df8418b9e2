#pragma once

#include "common/stable/Result.h"

#include <QList>
#include <QString>

namespace zel::io {

struct FastaRecord
{
    QString header;   ///< without the ">"
    QString sequence; ///< capital letters, "*" and "-"

    /// The header up to its first blank.
    QString name() const { return header.section(QLatin1Char(' '), 0, 0); }
};

/// The sequences of a FASTA file, and what was done to make them such.
struct FastaFile
{
    QList<FastaRecord> records;
    qsizetype upperCasedCount = 0;   ///< letters that were in lower case
    qsizetype droppedBlankCount = 0; ///< blanks, and carriage returns of line ends, in sequences
};

/// \return kFileFormatError naming the line that is none of such a file; as InputFile
Result<FastaFile> readFasta(const QString& path);

/// The line that says what was done to the sequences; empty where nothing was.
QString fastaRepairs(const QString& path, const FastaFile& file);

} // namespace zel::io
