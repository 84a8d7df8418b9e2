#include "tools/io/SaveFileBuffer.h"

#include <QFileInfo>

namespace zel::msreader {

namespace {

constexpr std::size_t kBlockSize = 1 << 16;
/// 15 is the largest window; 16 more asks for the gzip format.
constexpr int kGzipWindowBits = 15 + 16;
constexpr int kMemoryLevel = 8; ///< zlib's default

} // namespace

SaveFileBuffer::SaveFileBuffer(const QString& path, bool isGzip)
    : m_file(path)
    , m_isGzip(isGzip)
    , m_bytes(kBlockSize)
    , m_packed(isGzip ? kBlockSize : 0)
{
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
}

SaveFileBuffer::~SaveFileBuffer()
{
    if (m_isCompressing) {
        deflateEnd(&m_stream);
    }
}

bool SaveFileBuffer::open()
{
    if (m_isGzip) {
        m_isCompressing = deflateInit2(&m_stream,
                                       Z_BEST_SPEED,
                                       Z_DEFLATED,
                                       kGzipWindowBits,
                                       kMemoryLevel,
                                       Z_DEFAULT_STRATEGY) == Z_OK;
    }
    const QFileInfo info(
        m_file.fileName()); // a QSaveFile would put a file in the place of a device
    return m_isGzip == m_isCompressing && (info.isFile() || !info.exists()) &&
           m_file.open(QIODevice::WriteOnly);
}

bool SaveFileBuffer::commit()
{
    return putOut(Z_FINISH) && m_file.commit();
}

SaveFileBuffer::int_type SaveFileBuffer::overflow(int_type byte)
{
    if (!putOut(Z_NO_FLUSH)) {
        return traits_type::eof();
    }
    if (!traits_type::eq_int_type(byte, traits_type::eof())) {
        *pptr() = traits_type::to_char_type(byte);
        pbump(1);
    }
    return traits_type::not_eof(byte);
}

int SaveFileBuffer::sync()
{
    return putOut(Z_NO_FLUSH) ? 0 : -1;
}

SaveFileBuffer::pos_type SaveFileBuffer::seekoff(off_type offset,
                                                 std::ios_base::seekdir direction,
                                                 std::ios_base::openmode)
{
    const bool isTell = offset == 0 && direction == std::ios_base::cur;
    return isTell ? pos_type(m_start + (pptr() - pbase())) : pos_type(off_type(-1));
}

/// Empties the put area.
bool SaveFileBuffer::putOut(int flush)
{
    const qint64 count = pptr() - pbase();
    m_start += count;
    setp(m_bytes.data(), m_bytes.data() + m_bytes.size());
    if (!m_isGzip) {
        return m_file.write(m_bytes.data(), count) == count;
    }
    m_stream.next_in = reinterpret_cast<Bytef*>(m_bytes.data());
    m_stream.avail_in = static_cast<uInt>(count);
    do {
        m_stream.next_out = reinterpret_cast<Bytef*>(m_packed.data());
        m_stream.avail_out = static_cast<uInt>(m_packed.size());
        deflate(&m_stream, flush);
        const auto packedCount = static_cast<qint64>(m_packed.size() - m_stream.avail_out);
        if (m_file.write(m_packed.data(), packedCount) != packedCount) {
            return false;
        }
    } while (m_stream.avail_out == 0);
    return true;
}

} // namespace zel::msreader
