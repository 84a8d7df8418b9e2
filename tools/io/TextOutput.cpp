#include "tools/io/TextOutput.h"

#include <QFileInfo>

#include <cstdio>

namespace zel::tool {

Result<std::unique_ptr<TextOutput>> TextOutput::open(const QString& path)
{
    std::unique_ptr<TextOutput> output(new TextOutput);
    if (path.isEmpty() || path == QLatin1String("-")) {
        auto file = std::make_unique<QFile>();
        if (!file->open(stdout, QIODevice::WriteOnly)) {
            ZEL_RETURN_ERROR(kFileOpenError, "Could not open standard output");
        }
        output->m_device = std::move(file);
        return output;
    }
    const QFileInfo info(path);
    if (info.exists() && !info.isFile() && !info.isDir()) {
        // A device or a pipe is written to; a QSaveFile would put a file in its place.
        auto device = std::make_unique<QFile>(path);
        if (!device->open(QIODevice::WriteOnly)) {
            ZEL_RETURN_ERROR(
                kFileOpenError,
                QStringLiteral("Could not write %1: %2").arg(path, device->errorString()));
        }
        output->m_device = std::move(device);
        return output;
    }
    auto file = std::make_unique<QSaveFile>(path);
    if (!file->open(QIODevice::WriteOnly)) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("Could not write %1: %2").arg(path, file->errorString()));
    }
    output->m_saveFile = file.get();
    output->m_device = std::move(file);
    return output;
}

TextOutput& TextOutput::operator<<(const QByteArray& text)
{
    // What a full disk does not take at once it refuses with a reason the second time.
    for (qint64 done = 0; done < text.size() && !m_failed;) {
        const qint64 count = m_device->write(text.constData() + done, text.size() - done);
        m_failed = count <= 0;
        done += count;
    }
    return *this;
}

Error TextOutput::commit()
{
    m_failed = !m_device->flush() || m_failed;
    if (m_saveFile != nullptr) {
        m_failed = m_failed || !m_saveFile->commit();
    }
    if (m_failed) {
        const QString name =
            m_saveFile == nullptr ? QStringLiteral("standard output") : m_saveFile->fileName();
        ZEL_RETURN_ERROR(
            kError, QStringLiteral("Could not write %1: %2").arg(name, m_device->errorString()));
    }
    return kNoError;
}

} // namespace zel::tool
