#pragma once

#include "tools/sources/mzml/MzmlDataSource.h"

namespace zel::tool {

/// Opens the file of a run for a command. What was repaired is said on standard error.
Result<QSharedPointer<msreader::MzmlDataSource>> openRun(const QString& path);

} // namespace zel::tool
