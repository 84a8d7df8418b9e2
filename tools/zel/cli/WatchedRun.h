#pragma once

#include "tools/sources/decorators/WatchedDataSource.h"
#include "tools/zel/cli/Command.h"

namespace zel::tool {

/// The source through which a command reads a run.
inline QSharedPointer<msreader::WatchedDataSource> watched(
    const QSharedPointer<msreader::MsDataSourceInterface>& run, const CommandContext& context)
{
    return QSharedPointer<msreader::WatchedDataSource>::create(run, context.progress);
}

} // namespace zel::tool
