#pragma once

#include "common/stable/Result.h"
#include "tools/io/UnfinishedOutput.h"

#include <QByteArray>
#include <QFileDevice>
#include <QString>

#include <memory>

class QSaveFile;

namespace zel::io {

/// Writes all bytes to a device without a buffer of its own. When it fails, the device's
/// errorString says why. \return whether all were written
bool writeAll(QIODevice& device, const char* bytes, qint64 count);

/// A file that appears under its name as a whole or not at all: it is written beside, and renamed
/// by `commit`. What is no regular file, such as /dev/null or a pipe, is written as it comes.
class OutputFile
{
public:
    /// \return kFileOpenError
    static Result<std::unique_ptr<OutputFile>> open(const QString& path);
    /// The same, but standard output for an empty path and for "-".
    static Result<std::unique_ptr<OutputFile>> openOrStandardOutput(const QString& path);

    ~OutputFile();
    Q_DISABLE_COPY_MOVE(OutputFile)

    /// Appends. A failure is kept until `commit`.
    OutputFile& operator<<(const QByteArray& bytes);
    void write(const char* bytes, qint64 count);

    /// Ends the file. \return kError when not all was written; the file is then as it was before
    Error commit();

private:
    OutputFile(const QString& name, std::unique_ptr<QFileDevice> device, QSaveFile* saveFile);

    void writeOut();

    QString m_name; ///< as messages call it
    UnfinishedOutput m_unfinished;
    std::unique_ptr<QFileDevice> m_device;
    QSaveFile* m_saveFile; ///< the device, if that is a file
    QByteArray m_buffer;
    bool m_hasFailed = false;
    QString m_reason; ///< of the first write that failed
};

} // namespace zel::io
