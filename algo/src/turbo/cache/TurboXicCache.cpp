// How an index is kept in a file.

#include "common/stable/LargePages.h"
#include "common/stable/Logging.h"
#include "turbo/cache/TurboXicCacheFormat_p.h"
#include "turbo/index/TurboXic_p.h"

#include <QDataStream>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMetaEnum>
#include <QSaveFile>

#include <algorithm>
#include <new>

namespace zel {

namespace {

const QString kCacheIdTurboXic = QStringLiteral(".Turbo.cache");

/// Reads the header and holds it against the settings of the index that is to take the rest.
Result<TurboXicHeader> loadAndVerifyHeader(QDataStream& stream, const TurboXicSettings& settings)
{
    ZEL_ASSIGN_OR_RETURN(TurboXicHeader header, readTurboXicHeader(stream));
    if (header.version.segments() != TurboXic::version().segments()) {
        ZEL_RETURN_ERROR(kFileFormatError, "Invalid version");
    }
    // The kind of retrieval does not change what is stored.
    if (header.settings.granularity != settings.granularity ||
        header.settings.maxMz != settings.maxMz ||
        header.settings.maxIonCount != settings.maxIonCount ||
        header.settings.peakPickingFilter != settings.peakPickingFilter) {
        ZEL_RETURN_ERROR(kFileFormatError, "MSReader options does not match");
    }
    return header;
}

/// The whole file; empty when it cannot be read. May throw std::bad_alloc.
QByteArray bytesOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Unbuffered)) {
        return {};
    }
    QByteArray bytes(file.size(), Qt::Uninitialized);
    adviseLargePages(bytes.data(), static_cast<std::size_t>(bytes.size()));
    bytes.resize(std::max<qint64>(file.read(bytes.data(), bytes.size()), 0));
    return bytes;
}

Error notEnoughMemory()
{
    return Error(kError, "Not enough memory for the index");
}

} // namespace

QString TurboXic::extension()
{
    return QStringLiteral(".Turbo.cache");
}

QVersionNumber TurboXic::version()
{
    return turboXicCacheVersion();
}

QString TurboXic::cacheIdentifier()
{
    return kCacheIdTurboXic;
}

Error TurboXic::save(const QString& path) const
try {
    const QByteArray bytes = turboXicCacheBytes(m_private->settings,
                                                m_private->dataFingerprint,
                                                m_private->intensityMatrix,
                                                m_private->scanTimes);
    if (!QDir().mkpath(QFileInfo(path).absolutePath())) {
        ZEL_RETURN_ERROR(kFileOpenError, "Cannot create folder for cache storing!");
    }
    // Written beside and renamed, so that no half-written file ever passes for a cache.
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        ZEL_RETURN_ERROR(kFileOpenError, "Cannot open file for writing!");
    }
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        ZEL_RETURN_ERROR(kError, "Writing data failed!");
    }
    return kNoError;
} catch (const std::bad_alloc&) {
    ZEL_RETURN_ERROR(notEnoughMemory());
}

Error TurboXic::load(const QString& path)
try {
    Error e;
    ZEL_RETURN_IF_ERROR(load(bytesOfFile(path)));
    return e;
} catch (const std::bad_alloc&) {
    ZEL_RETURN_ERROR(notEnoughMemory());
}

Error TurboXic::load(const QByteArray& bytes)
try {
    QDataStream stream(bytes);
    prepareTurboXicStream(stream);
    ZEL_ASSIGN_OR_RETURN(const TurboXicHeader header,
                         loadAndVerifyHeader(stream, m_private->settings));
    ZEL_ASSIGN_OR_RETURN(TurboXicContent content, readTurboXicContent(stream));
    m_private->setContent(std::move(content.intensityMatrix), std::move(content.scanTimes));
    m_private->dataFingerprint = header.dataFingerprint;
    return kNoError;
} catch (const std::bad_alloc&) {
    ZEL_RETURN_ERROR(notEnoughMemory());
}

bool TurboXic::isValidCacheFile(const QString& path) const
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        qCDebug(algoLog) << file.errorString();
        return false;
    }
    QDataStream stream(&file);
    prepareTurboXicStream(stream);
    const Result<TurboXicHeader> header = loadAndVerifyHeader(stream, m_private->settings);
    if (!header.isOk()) {
        qCDebug(algoLog) << header.error().errorMessage();
    }
    return header.isOk();
}

Result<QMap<QString, QVariant>> TurboXic::loadHeader(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ZEL_RETURN_ERROR(kFileOpenError, QStringLiteral("Could not open file %1").arg(path));
    }
    QDataStream stream(&file);
    prepareTurboXicStream(stream);
    ZEL_ASSIGN_OR_RETURN(const TurboXicHeader header, readTurboXicHeader(stream));
    const auto filter = static_cast<int>(header.settings.peakPickingFilter);
    const auto filters = QMetaEnum::fromType<msreader::PeakPickingFilter>();
    const QMap<QString, QVariant> options = {
        {QStringLiteral("Granularity"), header.settings.granularity},
        {QStringLiteral("MaxMz"), header.settings.maxMz},
        {QStringLiteral("MaxIonCount"), header.settings.maxIonCount},
        {QStringLiteral("PeakPickingFilter"), QString::fromLatin1(filters.valueToKey(filter))},
    };
    return QMap<QString, QVariant>{
        {QStringLiteral("Version"), header.version.toString()},
        {QStringLiteral("DateTime"), header.dateTime},
        {QStringLiteral("Options"), options},
        {QStringLiteral("DataFingerprint"), header.dataFingerprint},
    };
}

} // namespace zel
