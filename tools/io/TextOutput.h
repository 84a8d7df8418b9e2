#pragma once

#include "common/stable/Result.h"

#include <QByteArray>
#include <QFile>
#include <QSaveFile>
#include <QString>

#include <memory>

namespace zel::tool {

/// A text file that appears under its name as a whole or not at all: it is written beside and
/// renamed by `commit`. Written as they come are standard output, when the path is empty or "-",
/// and what is no regular file, such as /dev/null.
class TextOutput
{
public:
    /// Opens the output before any long work starts. \return kFileOpenError
    static Result<std::unique_ptr<TextOutput>> open(const QString& path);

    /// Appends. A failure is kept until `commit`.
    TextOutput& operator<<(const QByteArray& text);

    /// Ends the file. \return kError when not all was written; the file is then as it was before
    Error commit();

private:
    TextOutput() = default;

    std::unique_ptr<QFileDevice> m_device;
    QSaveFile* m_saveFile = nullptr; ///< the device, unless that is standard output
    bool m_failed = false;
};

} // namespace zel::tool
