#pragma once

#include "common/stable/Progress.h"
#include "common/stable/Result.h"
#include "turbo/index/TurboXic.h"

#include <QStringList>

#include <memory>

namespace zel::tool {

/// The index of a run, and where it came from.
struct RunIndex
{
    std::unique_ptr<TurboXic> index;
    QStringList notes; ///< for the user, one line each; the last says where the index came from
};

/// The index of a run, out of a folder where indexes are kept, else built.
///
/// A file of the folder is named after the run and a hash of its data, so that runs of one name do
/// not meet, and copies of one run share theirs. A file that cannot be used, because it is damaged
/// or was made with other settings, is replaced once the new index is written; one that cannot be
/// read stays. Whatever is wrong with the folder, the index is built, and a note says what was
/// wrong. Nothing is kept of a run that came through a pipe.
/// \param cacheDirectory  empty: nothing is kept
/// \param selection       RunSelection::name() of the source; each has an index of its own
/// \param source          over the file that dataSourceInformation names
Result<RunIndex> indexOfRun(const TurboXicSettings& settings,
                            const QString& cacheDirectory,
                            const QString& selection,
                            msreader::MsDataSourceInterface* source,
                            const QSharedPointer<ProgressBarInterface>& progress);

} // namespace zel::tool
