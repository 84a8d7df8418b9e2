#include "tools/io/OutputFile.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

#include <unistd.h>

namespace zel::io {

namespace {

constexpr qint64 kBlockSize = 1 << 16;

Error writeError(ErrorCode code, const QString& name, const QString& reason)
{
    return {code, QStringLiteral("Could not write %1: %2").arg(name, reason)};
}

} // namespace

OutputFile::OutputFile(const QString& name,
                       std::unique_ptr<QFileDevice> device,
                       QSaveFile* saveFile)
    : m_name(name)
    , m_unfinished(UnfinishedOutput::Kind::SaveFile, name)
    , m_device(std::move(device))
    , m_saveFile(saveFile)
{}

OutputFile::~OutputFile() = default;

Result<std::unique_ptr<OutputFile>> OutputFile::open(const QString& path)
{
    // Without Qt's buffer, a write that fails says why.
    constexpr auto mode = QIODevice::WriteOnly | QIODevice::Unbuffered;
    const QFileInfo info(path);
    std::unique_ptr<QFileDevice> device;
    QSaveFile* saveFile = nullptr;
    if (info.exists() && !info.isFile() && !info.isDir()) {
        device = std::make_unique<QFile>(path); // a QSaveFile would put a file in its place
    } else {
        device.reset(saveFile = new QSaveFile(path));
    }
    if (!device->open(mode)) {
        ZEL_RETURN_ERROR(writeError(kFileOpenError, path, device->errorString()));
    }
    return std::unique_ptr<OutputFile>(new OutputFile(path, std::move(device), saveFile));
}

Result<std::unique_ptr<OutputFile>> OutputFile::openOrStandardOutput(const QString& path)
{
    if (!path.isEmpty() && path != QLatin1String("-")) {
        return open(path);
    }
    const QString name = QStringLiteral("standard output");
    auto device = std::make_unique<QFile>();
    if (!device->open(STDOUT_FILENO, QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        ZEL_RETURN_ERROR(writeError(kFileOpenError, name, device->errorString()));
    }
    return std::unique_ptr<OutputFile>(new OutputFile(name, std::move(device), nullptr));
}

OutputFile& OutputFile::operator<<(const QByteArray& bytes)
{
    write(bytes.constData(), bytes.size());
    return *this;
}

void OutputFile::write(const char* bytes, qint64 count)
{
    m_buffer.append(bytes, count);
    if (m_buffer.size() >= kBlockSize) {
        writeOut();
    }
}

Error OutputFile::commit()
{
    writeOut();
    if (!m_hasFailed && m_saveFile != nullptr && !m_saveFile->commit()) {
        m_hasFailed = true;
        m_reason = m_saveFile->errorString();
    }
    if (m_hasFailed) {
        ZEL_RETURN_ERROR(writeError(kError, m_name, m_reason));
    }
    return kNoError;
}

void OutputFile::writeOut()
{
    if (!m_hasFailed && !writeAll(*m_device, m_buffer.constData(), m_buffer.size())) {
        m_hasFailed = true;
        m_reason = m_device->errorString();
    }
    m_buffer.resize(0); // keeps its memory
}

bool writeAll(QIODevice& device, const char* bytes, qint64 count)
{
    // What a full disk does not take at once it refuses with a reason the next time.
    for (qint64 done = 0; done < count;) {
        const qint64 written = device.write(bytes + done, count - done);
        if (written <= 0) {
            return false;
        }
        done += written;
    }
    return true;
}

} // namespace zel::io
