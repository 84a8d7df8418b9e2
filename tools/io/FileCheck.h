#pragma once

#include "common/stable/Error.h"

#include <QStringList>

namespace zel::io {

/// What a command reads and writes.
struct CommandFiles
{
    QStringList inputs;
    QStringList outputs; ///< an empty path and "-" are standard output
};

/// To be called before any work: makes sure that no output is an input or another output, whatever
/// paths and links lead to it, and that each output can be written. Devices such as /dev/null may
/// be named several times.
/// \return kBadParameterError, kFileOpenError
Error checkFiles(const CommandFiles& files);

} // namespace zel::io
