#include "tools/zel/xic/IndexCache.h"

#include "common/ms_types/MsDataSourceInterface.h"
#include "tools/io/UnfinishedOutput.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QUuid>

#include <algorithm>

namespace zel::tool {

namespace {

QString hexOfHash(const QByteArray& bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha256).toHex());
}

/// What distinguishes one data file from another without reading all of it: its name and size, and
/// its first and last mebibyte.
Result<QString> fingerprintOf(const QString& path)
{
    constexpr qint64 sampleBytes = 1 << 20;
    if (!QFileInfo(path).isFile()) { // what came through a pipe cannot be read again
        return QUuid::createUuid().toString();
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        ZEL_RETURN_ERROR(
            kFileOpenError,
            QStringLiteral("Could not open file %1: %2").arg(path, file.errorString()));
    }
    QByteArray samples = file.read(sampleBytes);
    file.seek(std::max<qint64>(0, file.size() - sampleBytes));
    samples += file.read(sampleBytes);
    return QStringLiteral("%1:%2:%3")
        .arg(QFileInfo(path).fileName(), QString::number(file.size()), hexOfHash(samples));
}

/// The file of a run in the folder: RUN-HASH.Turbo.cache.
QString cachePathOf(const QString& cacheDirectory,
                    const QString& runPath,
                    const QString& fingerprint)
{
    constexpr qsizetype hashLength = 12; // 48 bits
    const QString name =
        QStringLiteral("%1-%2%3").arg(QFileInfo(runPath).fileName(),
                                      hexOfHash(fingerprint.toUtf8()).first(hashLength),
                                      TurboXic::extension());
    return QDir(cacheDirectory).filePath(name);
}

/// What became of the file at the place of a cache.
struct CacheState
{
    enum Kind {
        Loaded,
        Absent,
        Useless,   ///< may be replaced
        Untouched, ///< must stay as it is
    };
    Kind kind;
    QString reason; ///< of the last two
};

CacheState tryLoad(const QString& path, const QString& fingerprint, TurboXic* index)
{
    QFile file(path);
    if (!file.exists()) {
        return {CacheState::Absent, {}};
    }
    if (!file.open(QIODevice::ReadOnly)) {
        return {CacheState::Untouched,
                QStringLiteral("could not read %1: %2").arg(path, file.errorString())};
    }
    file.close();
    const auto header = TurboXic::loadHeader(path);
    if (!header.isOk()) {
        return {CacheState::Useless, QStringLiteral("it was damaged")};
    }
    if (!index->isValidCacheFile(path)) {
        return {CacheState::Useless,
                QStringLiteral("it was made with other settings or by another version")};
    }
    if (header.value().value(QStringLiteral("DataFingerprint")) != fingerprint) {
        return {CacheState::Untouched, QStringLiteral("%1 is of other data").arg(path)};
    }
    const Error e = index->load(path);
    if (e.equals(kFileFormatError)) {
        return {CacheState::Useless, QStringLiteral("it was damaged")};
    }
    return e.hasError()
               ? CacheState{CacheState::Untouched, path + QStringLiteral(": ") + e.message()}
               : CacheState{CacheState::Loaded, {}};
}

/// Puts a new index where it is kept. Returns what the user should know.
QString keep(const TurboXic& index, const QString& path, const CacheState& state)
{
    if (state.kind == CacheState::Untouched) {
        return QStringLiteral("built the index in memory: ") + state.reason;
    }
    const io::UnfinishedOutput mark(io::UnfinishedOutput::Kind::SaveFile, path);
    const Error e = index.save(path);
    if (e.hasError()) {
        return QStringLiteral("built the index in memory: could not write %1: %2")
            .arg(path, e.message());
    }
    return state.kind == CacheState::Absent
               ? QStringLiteral("built the index %1").arg(path)
               : QStringLiteral("replaced the index %1: %2").arg(path, state.reason);
}

} // namespace

Result<RunIndex> indexOfRun(const TurboXicSettings& settings,
                            const QString& cacheDirectory,
                            const QString& selection,
                            msreader::MsDataSourceInterface* source,
                            const QSharedPointer<ProgressBarInterface>& progress)
{
    Error e;
    RunIndex made{std::make_unique<TurboXic>(settings), {}};
    const QString runPath = source->dataSourceInformation().filePath;
    ZEL_ASSIGN_OR_RETURN(const QString ofFile, fingerprintOf(runPath));
    const QString fingerprint = selection.isEmpty() ? ofFile : ofFile + u':' + selection;
    QString cachePath;
    CacheState state{CacheState::Absent, {}};
    if (!cacheDirectory.isEmpty() && QFileInfo(runPath).isFile()) {
        cachePath = cachePathOf(cacheDirectory, runPath, fingerprint);
        state = tryLoad(cachePath, fingerprint, made.index.get());
        if (state.kind == CacheState::Loaded) {
            made.notes.append(QStringLiteral("reused the index %1").arg(cachePath));
            return made;
        }
    }
    ZEL_RETURN_IF_ERROR(made.index->init(source, fingerprint, progress));
    made.notes.append(e.warnings());
    if (!cachePath.isEmpty()) {
        made.notes.append(keep(*made.index, cachePath, state));
    } else if (cacheDirectory.isEmpty()) {
        made.notes.append(QStringLiteral("built the index in memory"));
    } else {
        made.notes.append(QStringLiteral("built the index in memory: %1 is no file, so that its "
                                         "index could not be found again")
                              .arg(runPath));
    }
    return made;
}

} // namespace zel::tool
