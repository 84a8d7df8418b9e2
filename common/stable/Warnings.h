#pragma once

#include "common/stable/Export.h"

#include <QList>
#include <QString>

namespace zel {

/// An ordered list of warning texts, the common base of Error and Result.
///
/// A warning tells a reader of the result what was unusual; it never changes whether a call
/// succeeded. The public operations are not virtual and end in protected virtual ones, which a
/// derived class overrides to keep a second list in step. A plain value: copying copies the texts,
/// no shared state.
class ZEL_EXPORT Warnings
{
public:
    Warnings() = default;
    Warnings(const Warnings&) = default;
    Warnings(Warnings&&) noexcept = default;
    virtual ~Warnings();
    Warnings& operator=(const Warnings&) = default;
    Warnings& operator=(Warnings&&) noexcept = default;

    /// The texts in the order in which they were added.
    const QList<QString>& warnings() const { return m_warnings; }

    /// Replaces all warnings by this one.
    void resetWarning(const QString& warning) { resetWarningInternal(warning); }

    /// Replaces all warnings by these.
    void resetWarnings(const QList<QString>& warnings) { resetWarningsInternal(warnings); }

protected:
    virtual void addWarningInternal(const QString& warning);
    virtual void addWarningsInternal(const QList<QString>& warnings);
    virtual void clearWarningsInternal();
    virtual void resetWarningInternal(const QString& warning);
    virtual void resetWarningsInternal(const QList<QString>& warnings);

private:
    QList<QString> m_warnings;
};

} // namespace zel
