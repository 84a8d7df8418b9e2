#include "turbo/cache/TurboXicLoader.h"

#include "common/stable/Logging.h"
#include "turbo/index/TurboXic.h"

#include <QFile>

#include <new>
#include <utility>

namespace zel {

TurboXicLoader::TurboXicLoader(TurboXic* turbo,
                               const QString& cachePath,
                               QSharedPointer<ProgressBarInterface> progress)
    : m_turbo(turbo)
    , m_cachePath(cachePath)
    , m_progress(std::move(progress))
{}

bool TurboXicLoader::tryLoadOrCreateCacheFile(msreader::MsDataSourceInterface* source,
                                              const QString& dataFingerprint)
try {
    if (QFile::exists(m_cachePath)) {
        qCDebug(algoLog).noquote() << QStringLiteral("Reusing cache file: %1").arg(m_cachePath);
        if (m_turbo->isValidCacheFile(m_cachePath)) {
            const Error e = loadCache();
            if (e.hasError()) {
                qCDebug(algoLog).noquote() << e.errorMessage();
                return false;
            }
            if (m_turbo->dataFingerprint() != dataFingerprint) {
                qCWarning(algoLog) << "TurboXic data fingerprint doesn't match.";
                return false;
            }
            return true;
        }
        if (!m_cachePath.endsWith(TurboXic::cacheIdentifier(), Qt::CaseInsensitive)) {
            return false; // not known to be a cache
        }
        const bool removed = QFile::remove(m_cachePath);
        qCWarning(algoLog) << "Removing invalid turbo xic cache" << m_cachePath << removed;
        if (!removed) {
            return false;
        }
    }
    qCDebug(algoLog).noquote() << QStringLiteral("Creating cache file: %1").arg(m_cachePath);
    if (!tryCreateCache(source, dataFingerprint)) {
        qCWarning(algoLog) << "Failed to create cache";
        return false;
    }
    return loadCache().equals(kNoError);
} catch (const std::bad_alloc&) {
    qCWarning(algoLog) << "Not enough memory for the index";
    return false;
}

bool TurboXicLoader::tryCreateCache(msreader::MsDataSourceInterface* source,
                                    const QString& dataFingerprint)
{
    const Error e = createCache(source, dataFingerprint);
    if (e.hasError()) {
        qCDebug(algoLog).noquote() << e.errorMessage();
    }
    return e.equals(kNoError);
}

Error TurboXicLoader::createCache(msreader::MsDataSourceInterface* source,
                                  const QString& dataFingerprint)
{
    Error e;
    ZEL_RETURN_IF_ERROR(m_turbo->init(source, dataFingerprint, m_progress));
    ZEL_RETURN_IF_ERROR(m_turbo->save(m_cachePath));
    return e;
}

Error TurboXicLoader::loadCache()
{
    Error e;
    ZEL_RETURN_IF_ERROR(m_turbo->load(m_cachePath));
    return e;
}

} // namespace zel
