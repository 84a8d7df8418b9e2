#pragma once

#include "common/stable/Result.h"

#include <QByteArray>
#include <QFile>
#include <QString>

#include <memory>

namespace zel::io {

/// A file or a pipe, read once from its start. A gzip file (known by its first bytes, not by its
/// name) is unpacked on the way.
class InputFile
{
public:
    /// Text longer than this is refused by `readText`; bytes.
    static constexpr qint64 maxTextSize = qint64{1} << 29;

    /// \return kFileOpenError; kFileFormatError when the file is empty or the gzip stream damaged
    static Result<std::unique_ptr<InputFile>> open(const QString& path);
    ~InputFile();
    Q_DISABLE_COPY_MOVE(InputFile)

    const QString& path() const { return m_path; }

    /// The first bytes, at most 64 KiB; they are not used up.
    const QByteArray& head() const { return m_head; }

    /// All bytes of a text. To be called once, and not with `toSeekable`.
    /// \return kFileFormatError for a text that is too long, for one that holds a zero byte, and
    /// when the gzip stream is damaged or cut off; kFileOpenError when reading fails
    Result<QByteArray> readText();

    /// A file for reading at any place, from its start: the file itself, or an unnamed temporary
    /// copy of what came packed or through a pipe, which goes away with the object. Jumping inside
    /// a gzip stream means unpacking it again from some earlier point, which costs more than
    /// unpacking it once as soon as it is read twice.
    /// \return as readText, and kFileOpenError when the copy cannot be written
    Result<std::unique_ptr<QFile>> toSeekable();

private:
    class Reader;

    explicit InputFile(const QString& path);

    QString m_path;
    std::unique_ptr<Reader> m_reader;
    QByteArray m_head;
};

} // namespace zel::io
