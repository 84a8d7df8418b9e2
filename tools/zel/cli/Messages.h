#pragma once

#include "common/stable/Error.h"

#include <QString>

namespace zel::tool {

/// Writes "zel: text" as a line of its own on standard error, in the place of a bar of progress.
void tell(const QString& text);

/// What the user reads of a failure: one line, or with `verbose` all that is known.
QString failureText(const Error& error, bool verbose);

} // namespace zel::tool
