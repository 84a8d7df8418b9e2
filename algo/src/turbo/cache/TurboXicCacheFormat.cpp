#include "common/core_mini/src/algo/numeric/StoredEntries.h"
#include "common/stable/Stringify.h"
#include "turbo/cache/TurboXicCacheFormat_p.h"

#include <QBuffer>
#include <QDataStream>
#include <QDebug>

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <span>
#include <vector>

namespace zel {

static_assert(std::endian::native == std::endian::little,
              "the raw blocks of the file are little-endian");

namespace {

// Stored in files: do not change.
constexpr int kMagic = 0x70012B00;
constexpr char kCacheKey[] = "__com.zel.TurboXicCache";
constexpr char kVersionKey[] = "zel::Version";
constexpr char kDateTimeKey[] = "zel::DateTime";
constexpr char kOptionsKey[] = "zel::Options";
constexpr char kFingerprintKey[] = "zel::dataFingerprint";
constexpr char kTimeKey[] = "zel::TimeIndex";
constexpr char kBlobKey[] = "zel::Blob";
constexpr char kDateFormat[] = "yyyy-MM-dd HH:mm:ss";

Error invalidHeader()
{
    return Error(kFileFormatError, "Invalid header");
}

Error invalidFormat()
{
    return Error(kFileFormatError, "Invalid file format");
}

void writeKey(QDataStream& stream, const char* key)
{
    stream << QByteArray(key);
}

/// Reads a key; false when another text or nothing comes.
bool readKey(QDataStream& stream, const char* key)
{
    QByteArray read;
    stream >> read;
    return stream.status() == QDataStream::Ok && read == key;
}

template <typename T>
void writeRaw(QDataStream& stream, const T* values, Eigen::Index count)
{
    // writeRawData takes an int, so that blocks beyond 2 GiB go in pieces.
    constexpr Eigen::Index pieceCount = (1 << 30) / sizeof(T);
    for (Eigen::Index done = 0; done < count; done += pieceCount) {
        const auto bytes = static_cast<int>(std::min(pieceCount, count - done) *
                                            static_cast<Eigen::Index>(sizeof(T)));
        stream.writeRawData(reinterpret_cast<const char*>(values + done), bytes);
    }
}

template <typename T>
bool readRaw(QDataStream& stream, T* values, Eigen::Index count)
{
    constexpr Eigen::Index pieceCount = (1 << 30) / sizeof(T);
    for (Eigen::Index done = 0; done < count; done += pieceCount) {
        const auto bytes = static_cast<int>(std::min(pieceCount, count - done) *
                                            static_cast<Eigen::Index>(sizeof(T)));
        if (stream.readRawData(reinterpret_cast<char*>(values + done), bytes) != bytes) {
            return false;
        }
    }
    return true;
}

/// Whether the device still holds this many values. No multiplication, so that no count can
/// overflow it.
bool holds(const QDataStream& stream, qint64 count, std::size_t valueBytes)
{
    return count >= 0 &&
           count <= stream.device()->bytesAvailable() / static_cast<qint64>(valueBytes);
}

/// A version as a count of segments and the segments. Qt's own operator allocates what the count
/// says.
bool readVersion(QDataStream& stream, QVersionNumber& version)
{
    quint32 count = 0;
    stream >> count;
    if (stream.status() != QDataStream::Ok || !holds(stream, count, sizeof(qint32))) {
        return false;
    }
    QList<int> segments;
    for (quint32 i = 0; i < count; ++i) {
        qint32 segment = 0;
        stream >> segment;
        segments.append(segment);
    }
    version = QVersionNumber(segments);
    return stream.status() == QDataStream::Ok;
}

bool readDateTime(QDataStream& stream, QDateTime& dateTime)
{
    QByteArray text;
    stream >> text;
    // Date and time are judged apart: the hour that the reader's zone leaves out in spring is a
    // good one where the file was written.
    const QStringList parts = QString::fromLatin1(text).split(QLatin1Char(' '));
    const QDate date = QDate::fromString(parts.value(0), QStringLiteral("yyyy-MM-dd"));
    const QTime time = QTime::fromString(parts.value(1), QStringLiteral("HH:mm:ss"));
    dateTime = QDateTime(date, time);
    return stream.status() == QDataStream::Ok && parts.size() == 2 && date.isValid() &&
           time.isValid();
}

bool readTimes(QDataStream& stream, Eigen::VectorXd& times)
{
    qint64 count = 0;
    stream >> count;
    if (stream.status() != QDataStream::Ok || !holds(stream, count, sizeof(double)) ||
        count > std::numeric_limits<int>::max()) {
        return false;
    }
    times.resize(count);
    const bool allFinite =
        readRaw(stream, times.data(), count) &&
        std::ranges::all_of(times, [](double time) { return std::isfinite(time); });
    return allFinite && std::ranges::is_sorted(times);
}

/// What stands before the arrays of the matrix.
struct MatrixShape
{
    qint64 rows = 0;
    qint64 columns = 0;
    qint64 entryCount = 0;
    qint64 outerSize = 0;
    qint64 innerSize = 0;
};

bool readShape(QDataStream& stream, qint64 scanCount, MatrixShape& shape)
{
    stream >> shape.rows >> shape.columns >> shape.entryCount >> shape.outerSize >> shape.innerSize;
    constexpr qint64 greatestIndex = std::numeric_limits<int>::max();
    const auto isIndex = [](qint64 value) { return value >= 0 && value <= greatestIndex; };
    if (stream.status() != QDataStream::Ok || !isIndex(shape.rows) || !isIndex(shape.columns) ||
        !isIndex(shape.entryCount) || shape.outerSize != shape.columns ||
        shape.innerSize != shape.rows || shape.columns != scanCount) {
        return false;
    }
    const qint64 arrayBytes = shape.entryCount * static_cast<qint64>(sizeof(double) + sizeof(int)) +
                              shape.columns * static_cast<qint64>(sizeof(int)); // below 2^36
    return arrayBytes <= stream.device()->bytesAvailable();
}

/// Completes the starts of columns after the last one that is not 0: they are empty. Starts that
/// are all 0 stay: then only the last column holds entries.
void completeColumnStarts(std::span<int> starts, int entryCount)
{
    const auto isSet = [](int start) { return start != 0; };
    const auto lastSet = std::find_if(starts.rbegin(), starts.rend(), isSet);
    if (lastSet != starts.rend()) {
        std::fill(lastSet.base(), starts.end(), entryCount);
    }
}

/// Whether no intensity is NaN or infinite.
bool areFinite(std::span<const double> values)
{
    // Counted without a branch, so that the compiler compares several values at once.
    std::size_t notFinite = 0;
    for (const double value : values) {
        notFinite += std::abs(value) <= std::numeric_limits<double>::max() ? 0 : 1;
    }
    return notFinite == 0;
}

/// Whether columns follow each other from 0 to the end of the entries, and rows ascend inside each.
bool isInOrder(std::span<const int> starts, std::span<const int> rowsOfEntries, qint64 rows)
{
    if (starts.front() != 0 || !std::ranges::is_sorted(starts)) {
        return false;
    }
    for (std::size_t column = 0; column + 1 < starts.size(); ++column) {
        const std::span<const int> columnRows =
            rowsOfEntries.subspan(static_cast<std::size_t>(starts[column]),
                                  static_cast<std::size_t>(starts[column + 1] - starts[column]));
        if (columnRows.empty()) {
            continue;
        }
        // Counted without a branch, so that the compiler compares several rows at once.
        int descents = 0;
        for (std::size_t i = 1; i < columnRows.size(); ++i) {
            descents += columnRows[i] <= columnRows[i - 1] ? 1 : 0;
        }
        if (descents > 0 || columnRows.front() < 0 || columnRows.back() >= rows) {
            return false;
        }
    }
    return true;
}

bool readMatrix(QDataStream& stream, qint64 scanCount, Eigen::SparseMatrix<double>& matrix)
{
    MatrixShape shape;
    if (!readShape(stream, scanCount, shape)) {
        return false;
    }
    matrix.resize(shape.rows, shape.columns);
    allocateEntries(&matrix, shape.entryCount);
    const auto columnCount = static_cast<std::size_t>(shape.columns);
    const auto entryCount = static_cast<int>(shape.entryCount);
    const std::span<int> starts(matrix.outerIndexPtr(), columnCount + 1);
    if (!readRaw(stream, matrix.valuePtr(), shape.entryCount) ||
        !readRaw(stream, starts.data(), shape.columns) ||
        !readRaw(stream, matrix.innerIndexPtr(), shape.entryCount)) {
        return false;
    }
    if (!areFinite({matrix.valuePtr(), static_cast<std::size_t>(entryCount)})) {
        return false;
    }
    starts.back() = entryCount;
    completeColumnStarts(starts.first(columnCount), entryCount);
    const std::span<const int> rowsOfEntries(matrix.innerIndexPtr(),
                                             static_cast<std::size_t>(entryCount));
    return isInOrder(starts, rowsOfEntries, shape.rows);
}

void writeHeader(QDataStream& stream,
                 const TurboXicSettings& settings,
                 const QString& dataFingerprint)
{
    stream << qint32{kMagic};
    writeKey(stream, kCacheKey);
    writeKey(stream, kVersionKey);
    stream << turboXicCacheVersion();
    writeKey(stream, kDateTimeKey);
    stream << QDateTime::currentDateTime().toString(QString::fromLatin1(kDateFormat)).toLatin1();
    writeKey(stream, kOptionsKey);
    stream << settings;
    writeKey(stream, kFingerprintKey);
    stream << dataFingerprint;
}

void writeContent(QDataStream& stream,
                  const Eigen::SparseMatrix<double>& matrix,
                  const Eigen::VectorXd& scanTimes)
{
    writeKey(stream, kTimeKey);
    stream << qint64{scanTimes.size()};
    writeRaw(stream, scanTimes.data(), scanTimes.size());
    writeKey(stream, kBlobKey);
    stream << qint64{matrix.rows()} << qint64{matrix.cols()} << qint64{matrix.nonZeros()}
           << qint64{matrix.outerSize()} << qint64{matrix.innerSize()};
    writeRaw(stream, matrix.valuePtr(), matrix.nonZeros());
    writeRaw(stream, matrix.outerIndexPtr(), matrix.outerSize());
    writeRaw(stream, matrix.innerIndexPtr(), matrix.nonZeros());
}

} // namespace

QDebug operator<<(QDebug debug, const TurboXicHeader& header)
{
    const QDebugStateSaver saver(debug);
    debug.nospace().noquote() << "TurboXicHeader[Version=" << header.version.toString()
                              << ", datetime="
                              << header.dateTime.toString(QString::fromLatin1(kDateFormat))
                              << ", options=" << stringify(header.settings, StringifierState())
                              << ", ms fingerptint=" << header.dataFingerprint << ']';
    return debug;
}

QVersionNumber turboXicCacheVersion()
{
    return QVersionNumber(0, 0, 2);
}

void prepareTurboXicStream(QDataStream& stream)
{
    stream.setVersion(QDataStream::Qt_5_6);
    stream.setByteOrder(QDataStream::BigEndian);
}

QByteArray turboXicCacheBytes(const TurboXicSettings& settings,
                              const QString& dataFingerprint,
                              const Eigen::SparseMatrix<double>& intensityMatrix,
                              const Eigen::VectorXd& scanTimes)
{
    constexpr qsizetype headerBytes = 4096; // a guess; more is taken as needed
    QByteArray bytes;
    bytes.reserve(headerBytes + static_cast<qsizetype>(sizeof(double)) * scanTimes.size() +
                  static_cast<qsizetype>(sizeof(int)) * intensityMatrix.outerSize() +
                  static_cast<qsizetype>(sizeof(double) + sizeof(int)) *
                      intensityMatrix.nonZeros());
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QDataStream stream(&buffer);
    prepareTurboXicStream(stream);
    writeHeader(stream, settings, dataFingerprint);
    writeContent(stream, intensityMatrix, scanTimes);
    return bytes;
}

Result<TurboXicHeader> readTurboXicHeader(QDataStream& stream)
{
    TurboXicHeader header;
    stream >> header.magic;
    if (stream.status() != QDataStream::Ok || header.magic != kMagic ||
        !readKey(stream, kCacheKey)) {
        ZEL_RETURN_ERROR(invalidHeader());
    }
    if (!readKey(stream, kVersionKey) || !readVersion(stream, header.version)) {
        ZEL_RETURN_ERROR(invalidFormat());
    }
    if (!readKey(stream, kDateTimeKey) || !readDateTime(stream, header.dateTime)) {
        ZEL_RETURN_ERROR(invalidFormat());
    }
    if (!readKey(stream, kOptionsKey)) {
        ZEL_RETURN_ERROR(invalidFormat());
    }
    stream >> header.settings;
    if (stream.status() != QDataStream::Ok || !readKey(stream, kFingerprintKey)) {
        ZEL_RETURN_ERROR(invalidFormat());
    }
    stream >> header.dataFingerprint;
    if (stream.status() != QDataStream::Ok) {
        ZEL_RETURN_ERROR(invalidFormat());
    }
    return header;
}

Result<TurboXicContent> readTurboXicContent(QDataStream& stream)
{
    TurboXicContent content;
    if (!readKey(stream, kTimeKey) || !readTimes(stream, content.scanTimes) ||
        !readKey(stream, kBlobKey) ||
        !readMatrix(stream, content.scanTimes.size(), content.intensityMatrix)) {
        ZEL_RETURN_ERROR(invalidFormat());
    }
    return content;
}

} // namespace zel
