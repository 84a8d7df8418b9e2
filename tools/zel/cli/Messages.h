#pragma once

#include "common/stable/Error.h"

#include <QString>

#include <exception>

namespace zel::tool {

inline constexpr char kOutOfMemory[] = "There is not enough memory";

/// Writes "zel: text" as a line of its own on standard error, in the place of a bar of progress.
void tell(const QString& text);

/// What the user reads of a failure: one line, or with `verbose` all that is known.
QString failureText(const Error& error, bool verbose);

/// What the user reads of an exception that no other place has turned into an Error.
QString exceptionText(const std::exception& problem);

} // namespace zel::tool
