#include "tools/io/FastaFile.h"

#include "tools/io/InputFile.h"

#include <algorithm>

namespace zel::io {

namespace {

bool isBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isSequenceCharacter(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '*' || c == '-';
}

void appendSequence(const QByteArray& letters, FastaFile* file)
{
    const QByteArray upper = letters.toUpper();
    for (qsizetype i = 0; i < letters.size(); ++i) {
        file->upperCasedCount += letters[i] != upper[i] ? 1 : 0;
    }
    file->records.back().sequence += QString::fromLatin1(upper);
}

} // namespace

Result<FastaFile> readFasta(const QString& path)
{
    ZEL_ASSIGN_OR_RETURN(const auto input, InputFile::open(path));
    ZEL_ASSIGN_OR_RETURN(const QByteArray bytes, input->readText());
    FastaFile file;
    int lineNumber = 0;
    for (const QByteArray& line : bytes.split('\n')) {
        ++lineNumber;
        if (line.startsWith('>')) {
            file.records.append({QString::fromUtf8(line.sliced(1).trimmed()), {}});
            continue;
        }
        QByteArray letters = line;
        letters.removeIf(isBlank);
        if (!std::ranges::all_of(letters, isSequenceCharacter) ||
            (file.records.isEmpty() && !letters.isEmpty())) {
            ZEL_RETURN_ERROR(kFileFormatError,
                             QStringLiteral("FASTA file %1, line %2: a header that starts with > "
                                            "or a sequence of letters is wanted")
                                 .arg(path, QString::number(lineNumber)));
        }
        if (!letters.isEmpty()) {
            file.droppedBlankCount += line.size() - letters.size();
            appendSequence(letters, &file);
        }
    }
    return file;
}

QString fastaRepairs(const QString& path, const FastaFile& file)
{
    if (file.upperCasedCount == 0 && file.droppedBlankCount == 0) {
        return {};
    }
    return QStringLiteral("%1: %2 letters were made upper case, and %3 blanks and carriage returns "
                          "left out")
        .arg(path)
        .arg(file.upperCasedCount)
        .arg(file.droppedBlankCount);
}

} // namespace zel::io
