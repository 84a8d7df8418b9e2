#pragma once

#include "common/stable/Export.h"

#include <chrono>
#include <optional>

namespace zel {

/// Records timed scopes into a file in the Chrome trace event format (JSON array form), which
/// chrome://tracing and https://ui.perfetto.dev open.
///
/// Switched on by the environment: `ZEL_TRACE_FILE` names the file, `ZEL_TRACE_CATEGORIES` lists
/// the categories to record, upper-case and separated by commas; without it all are. The file is
/// written as the scopes close, and is readable even if the process is killed.
class ZEL_EXPORT Tracer
{
public:
    /// True when a trace file was named and could be opened. Decided once per process.
    static bool isInitialized();
};

namespace tracer_categories_settings {

/// True when this category (upper-case, such as u"TURBO_XIC") is to be recorded.
ZEL_EXPORT bool isCategoryEnabled(const char16_t* categoryName);

} // namespace tracer_categories_settings

/// A timing mark from its construction to its destruction. The two texts must outlive the object;
/// string literals do.
class ZEL_EXPORT ZelScopedTrace
{
public:
    ZelScopedTrace(const char* category, const char* label);
    ~ZelScopedTrace();
    ZelScopedTrace(const ZelScopedTrace&) = delete;
    ZelScopedTrace& operator=(const ZelScopedTrace&) = delete;

private:
    const char* m_category;
    const char* m_label;
    std::chrono::steady_clock::time_point m_start;
};

} // namespace zel

/// Traces the enclosing function from here to its end. Whether the site records is decided on its
/// first arrival.
#define ZEL_TRACE_SCOPE(upperCaseCategory, category, label)                                        \
    static const bool zelTraceEnabled =                                                            \
        ::zel::tracer_categories_settings::isCategoryEnabled(upperCaseCategory) &&                 \
        ::zel::Tracer::isInitialized();                                                            \
    std::optional<::zel::ZelScopedTrace> zelTraceScope;                                            \
    if (zelTraceEnabled) {                                                                         \
        zelTraceScope.emplace(category, label);                                                    \
    }                                                                                              \
    static_assert(true)
