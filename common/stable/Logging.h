#pragma once

#include "common/stable/Export.h"

#include <QLoggingCategory>

namespace zel {

/// The library's own category, "zel.algo". Write to it with `qCDebug(algoLog) << "literal" <<
/// value;`, which costs nothing while the category is off and puts file, line and function into the
/// message context.
ZEL_EXPORT const QLoggingCategory& algoLog();

/// The process-wide registry of logging categories by name. "zel.algo" and "zel.generic" are in it
/// from the moment the library is loaded, both enabled from the debug level up. Categories live as
/// long as the process. Thread-safe.
class ZEL_EXPORT LoggingRegistry
{
public:
    /// The category of this name. An unknown name gets a new category, enabled from `level` up.
    static QLoggingCategory& category(const char* name, QtMsgType level);

    /// The category of this name, or "zel.generic" when the name is unknown.
    static QLoggingCategory& category(const char* name);
};

} // namespace zel
