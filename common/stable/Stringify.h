#pragma once

#include "common/stable/Export.h"

#include <QString>

namespace zel {

/// Formatting state of a nested text dump: the text at the start of each line and the precision of
/// real numbers.
///
/// A dump of a record writes to a `QTextStream` whose precision `realNumberPrecision` gives, and
/// gives each field a line break, `newLinePrefix()`, "name:" and the value; a nested record is
/// dumped with `extendPrefix("    ")`.
class ZEL_EXPORT StringifierState
{
public:
    StringifierState();
    ~StringifierState();

    /// A state whose line prefix is this one's followed by `extension`.
    StringifierState extendPrefix(const QString& extension) const;

    /// The text to write at the start of each line.
    const QString& newLinePrefix() const { return m_newLinePrefix; }

    /// The precision to set on a stream whose present precision is `current`: never fewer digits
    /// than a double needs to be read back unchanged (17).
    int realNumberPrecision(int current) const;

private:
    QString m_newLinePrefix;
};

/// The number in decimal.
ZEL_EXPORT QString stringify(int value, const StringifierState& state);

} // namespace zel
