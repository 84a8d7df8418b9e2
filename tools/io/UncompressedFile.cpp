#include "tools/io/UncompressedFile.h"

#include <QTemporaryFile>

#include <zlib.h>

#include <algorithm>
#include <limits>
#include <vector>

namespace zel::msreader {

namespace {

constexpr qint64 kBlockSize = 1 << 18;

/// Unpacks the members of a gzip file one after the other.
class GzipReader
{
public:
    explicit GzipReader(QFile& packed)
        : m_packed(packed)
        , m_input(static_cast<std::size_t>(kBlockSize))
        , m_output(static_cast<std::size_t>(kBlockSize))
    {
        m_isReady = inflateInit2(&m_stream, kGzipWindowBits) == Z_OK;
    }
    ~GzipReader() { inflateEnd(&m_stream); }
    Q_DISABLE_COPY_MOVE(GzipReader)

    Error unpackTo(QFile& plain)
    {
        if (!m_isReady) {
            ZEL_RETURN_ERROR(kError, "The gzip reader could not be set up");
        }
        bool isInsideMember = true;
        while (refill()) {
            if (!isInsideMember) {
                if (m_stream.next_in[0] != kFirstGzipByte) {
                    return kNoError; // padding behind the last member
                }
                inflateReset(&m_stream);
            }
            m_stream.next_out = m_output.data();
            m_stream.avail_out = static_cast<uInt>(m_output.size());
            const int status = inflate(&m_stream, Z_NO_FLUSH);
            if (status != Z_OK && status != Z_STREAM_END && status != Z_BUF_ERROR) {
                ZEL_RETURN_ERROR(
                    kFileFormatError,
                    QStringLiteral("%1: the gzip stream is damaged").arg(m_packed.fileName()));
            }
            isInsideMember = status != Z_STREAM_END;
            const auto count = static_cast<qint64>(m_output.size() - m_stream.avail_out);
            if (plain.write(reinterpret_cast<const char*>(m_output.data()), count) != count) {
                ZEL_RETURN_ERROR(
                    kFileOpenError,
                    QStringLiteral("%1 could not be unpacked into a temporary file: %2")
                        .arg(m_packed.fileName(), plain.errorString()));
            }
        }
        if (isInsideMember) {
            ZEL_RETURN_ERROR(
                kFileFormatError,
                QStringLiteral("%1: the gzip stream is cut off").arg(m_packed.fileName()));
        }
        return kNoError;
    }

private:
    /// 15 is the largest window; 16 more asks for the gzip format.
    static constexpr int kGzipWindowBits = 15 + 16;
    static constexpr Bytef kFirstGzipByte = 0x1f;

    /// Whether there is input or output left.
    bool refill()
    {
        if (m_stream.avail_in == 0) {
            const qint64 count = m_packed.read(reinterpret_cast<char*>(m_input.data()), kBlockSize);
            m_stream.next_in = m_input.data();
            m_stream.avail_in = static_cast<uInt>(std::max<qint64>(count, 0));
        }
        return m_stream.avail_in > 0;
    }

    QFile& m_packed;
    z_stream m_stream{};
    bool m_isReady = false;
    std::vector<Bytef> m_input;
    std::vector<Bytef> m_output;
};

} // namespace

Result<std::unique_ptr<QFile>> openUncompressed(const QString& path)
{
    Error e;
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        ZEL_RETURN_ERROR(
            kFileOpenError,
            QStringLiteral("%1 could not be opened: %2").arg(path, file->errorString()));
    }
    const QByteArray head = file->read(2);
    if (head.isEmpty()) {
        ZEL_RETURN_ERROR(kFileFormatError, QStringLiteral("%1 is empty").arg(path));
    }
    file->seek(0);
    if (head != QByteArrayLiteral("\x1f\x8b")) {
        return file;
    }
    auto plain = std::make_unique<QTemporaryFile>();
    if (!plain->open()) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("A temporary file for %1 could not be created: %2")
                             .arg(path, plain->errorString()));
    }
    ZEL_RETURN_IF_ERROR(GzipReader(*file).unpackTo(*plain));
    if (!plain->flush() || !plain->seek(0)) {
        ZEL_RETURN_ERROR(kFileOpenError,
                         QStringLiteral("%1 could not be unpacked into a temporary file: %2")
                             .arg(path, plain->errorString()));
    }
    if (plain->size() == 0) {
        ZEL_RETURN_ERROR(kFileFormatError, QStringLiteral("%1 is empty").arg(path));
    }
    return std::unique_ptr<QFile>(std::move(plain));
}

} // namespace zel::msreader
