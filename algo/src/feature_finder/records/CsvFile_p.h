#pragma once

#include <QString>

#include <functional>

class QTextStream;

namespace zel {

/// Replaces the file by what `write` gives to the stream, with "\n" line ends and numbers in the C
/// locale. A file that cannot be written leaves a warning in the log; else the debug line "Output
/// to CSV Complete" ends it.
void writeCsvFile(const QString& path, const std::function<void(QTextStream&)>& write);

} // namespace zel
