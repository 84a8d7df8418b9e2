#include "tools/io/InputFile.h"

#include "tools/io/OutputFile.h"

#include <QTemporaryFile>
#include <boost/iostreams/categories.hpp>
#include <boost/iostreams/filter/gzip.hpp>
#include <boost/iostreams/filtering_streambuf.hpp>

#include <algorithm>
#include <optional>

namespace zel::io {

namespace {

namespace bio = boost::iostreams;

constexpr qint64 kHeadSize = 1 << 16;
constexpr qint64 kBlockSize = 1 << 18;
constexpr std::streamsize kBufferSize = 1 << 16;
constexpr qint64 kBytesPerMib = 1 << 20;
const QByteArray kGzipMagic = QByteArrayLiteral("\x1f\x8b");

/// The bytes of a file, those that were taken to look at them first.
struct FileSource
{
    using char_type = char;
    using category = bio::source_tag;

    std::streamsize read(char* bytes, std::streamsize count)
    {
        if (!ahead.isEmpty()) {
            const qint64 taken = std::min<qint64>(count, ahead.size());
            std::copy_n(ahead.cbegin(), taken, bytes);
            ahead.remove(0, taken);
            return taken;
        }
        const qint64 taken = file->read(bytes, count);
        *hasEnded = taken <= 0; // by an error too, which the file keeps
        return *hasEnded ? -1 : taken;
    }

    QFile* file;
    QByteArray ahead;
    bool* hasEnded;
};

/// Reads bytes until there are so many, or no more; a pipe may give fewer at a time.
QByteArray readUpTo(QFile* file, qint64 count)
{
    QByteArray bytes;
    while (bytes.size() < count) {
        const QByteArray part = file->read(count - bytes.size());
        if (part.isEmpty()) {
            break;
        }
        bytes += part;
    }
    return bytes;
}

} // namespace

/// The file and what unpacks it.
class InputFile::Reader
{
public:
    explicit Reader(const QString& path)
        : m_path(path)
        , m_file(std::make_unique<QFile>(path))
    {}

    Error open()
    {
        if (!m_file->open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
            ZEL_RETURN_ERROR(
                kFileOpenError,
                QStringLiteral("%1 could not be opened: %2").arg(m_path, m_file->errorString()));
        }
        const QByteArray magic = readUpTo(m_file.get(), kGzipMagic.size());
        m_isPacked = magic == kGzipMagic;
        if (m_isPacked) {
            m_chain.push(bio::gzip_decompressor(), kBufferSize);
        }
        m_chain.push(FileSource{m_file.get(), magic, &m_hasEnded}, kBufferSize);
        return kNoError;
    }

    /// The next bytes: as many as asked for, fewer only at the end.
    Result<qint64> read(char* bytes, qint64 count)
    {
        qint64 done = 0;
        try {
            done = m_chain.sgetn(bytes, count);
        } catch (const bio::gzip_error& problem) {
            const bool isCutOff = m_hasEnded && problem.error() != bio::gzip::bad_crc &&
                                  problem.zlib_error_code() != bio::zlib::data_error;
            ZEL_RETURN_ERROR(kFileFormatError,
                             QStringLiteral("%1: the gzip stream is %2")
                                 .arg(m_path, QLatin1String(isCutOff ? "cut off" : "damaged")));
        }
        if (m_file->error() != QFileDevice::NoError) {
            ZEL_RETURN_ERROR(
                kFileOpenError,
                QStringLiteral("%1 could not be read: %2").arg(m_path, m_file->errorString()));
        }
        return done;
    }

    /// The file itself, if it can be read at any place as it stands.
    std::unique_ptr<QFile> takeFile()
    {
        return m_isPacked || m_file->isSequential() || !m_file->seek(0) ? nullptr
                                                                        : std::move(m_file);
    }

private:
    QString m_path;
    std::unique_ptr<QFile> m_file;
    bio::filtering_istreambuf m_chain;
    bool m_isPacked = false;
    bool m_hasEnded = false; ///< the file, not what is unpacked from it
};

InputFile::InputFile(const QString& path)
    : m_path(path)
    , m_reader(std::make_unique<Reader>(path))
    , m_head(kHeadSize, '\0')
{}

InputFile::~InputFile() = default;

Result<std::unique_ptr<InputFile>> InputFile::open(const QString& path)
{
    Error e;
    std::unique_ptr<InputFile> input(new InputFile(path));
    ZEL_RETURN_IF_ERROR(input->m_reader->open());
    ZEL_ASSIGN_OR_RETURN(const qint64 count,
                         input->m_reader->read(input->m_head.data(), input->m_head.size()));
    if (count == 0) {
        ZEL_RETURN_ERROR(kFileFormatError, QStringLiteral("%1 is empty").arg(path));
    }
    input->m_head.truncate(count);
    return input;
}

Result<QByteArray> InputFile::readText()
{
    QByteArray text = m_head;
    qint64 checked = 0;
    while (true) {
        const qsizetype zero = text.indexOf('\0', checked);
        if (zero >= 0) {
            ZEL_RETURN_ERROR(kFileFormatError,
                             QStringLiteral("%1 is no UTF-8 text: byte %2 is zero")
                                 .arg(m_path, QString::number(zero + 1)));
        }
        if (text.size() > maxTextSize) {
            ZEL_RETURN_ERROR(
                kFileFormatError,
                QStringLiteral("%1 is too long for a table: it has more than %2 MiB of text")
                    .arg(m_path, QString::number(maxTextSize / kBytesPerMib)));
        }
        checked = text.size();
        text.resize(checked + kBlockSize);
        ZEL_ASSIGN_OR_RETURN(const qint64 count, m_reader->read(text.data() + checked, kBlockSize));
        text.truncate(checked + count);
        if (count == 0) {
            return text;
        }
    }
}

Result<std::unique_ptr<QFile>> InputFile::toSeekable()
{
    if (std::unique_ptr<QFile> file = m_reader->takeFile()) {
        return file;
    }
    auto copy = std::make_unique<QTemporaryFile>();
    const auto copyError = [this](const QString& reason) {
        return Error(
            kFileOpenError,
            QStringLiteral("Could not copy %1 into a temporary file: %2").arg(m_path, reason));
    };
    QFile unbuffered;
    if (!copy->open() ||
        !unbuffered.open(copy->handle(), QIODevice::WriteOnly | QIODevice::Unbuffered)) {
        ZEL_RETURN_ERROR(copyError(copy->errorString()));
    }
    QByteArray block = m_head;
    for (qint64 count = block.size(); count > 0;) {
        if (!writeAll(unbuffered, block.constData(), count)) {
            ZEL_RETURN_ERROR(copyError(unbuffered.errorString()));
        }
        block.resize(kBlockSize);
        ZEL_ASSIGN_OR_RETURN(count, m_reader->read(block.data(), kBlockSize));
    }
    if (!copy->seek(0)) {
        ZEL_RETURN_ERROR(copyError(copy->errorString()));
    }
    return std::unique_ptr<QFile>(std::move(copy));
}

} // namespace zel::io
