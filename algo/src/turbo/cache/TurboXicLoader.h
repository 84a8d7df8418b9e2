#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "common/stable/Progress.h"

#include <QSharedPointer>
#include <QString>

namespace zel {

class TurboXic;

namespace msreader {
class MsDataSourceInterface;
} // namespace msreader

/// Decides between the index that a cache file holds and a new one. A plain value; failures are
/// reported as `false`, with the details in the log.
class ZEL_EXPORT TurboXicLoader
{
public:
    /// \param turbo      borrowed; not initialized yet
    /// \param cachePath  the cache file, which need not be there
    /// \param progress   of the build; may be null
    TurboXicLoader(TurboXic* turbo,
                   const QString& cachePath,
                   QSharedPointer<ProgressBarInterface> progress);

    /// Loads the index from the cache file if that fits the index's settings, else builds it from
    /// the source, writes the file and loads it from there.
    ///
    /// A file that is no cache of these settings is removed and built again only when its name ends
    /// in TurboXic::cacheIdentifier(); any other file is left alone. So is a valid cache of other
    /// data: the index then holds that data, and the call fails.
    /// \param source           borrowed for the call
    /// \param dataFingerprint  a text that stands for the data
    /// \return whether the index is loaded and holds the data of this fingerprint
    bool tryLoadOrCreateCacheFile(msreader::MsDataSourceInterface* source,
                                  const QString& dataFingerprint);

private:
    bool tryCreateCache(msreader::MsDataSourceInterface* source, const QString& dataFingerprint);
    Error createCache(msreader::MsDataSourceInterface* source, const QString& dataFingerprint);
    Error loadCache();

    TurboXic* m_turbo;
    QString m_cachePath;
    QSharedPointer<ProgressBarInterface> m_progress;
};

} // namespace zel
