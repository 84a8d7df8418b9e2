#include "tools/zel/cli/Messages.h"

#include <unistd.h>

#include <string>

namespace zel::tool {

namespace {

/// The text on one line that a terminal shows as it is; the middle of a long one is left out.
QString shortLine(QString text)
{
    constexpr qsizetype maxLength = 500;
    constexpr qsizetype keptAtEnd = 150;
    for (QChar& character : text) {
        character = character.isPrint() ? character : QLatin1Char(' ');
    }
    return text.size() <= maxLength
               ? text
               : text.left(maxLength - keptAtEnd) + QStringLiteral(" ... ") + text.right(keptAtEnd);
}

} // namespace

void tell(const QString& text)
{
    const char* const eraseBar = isatty(STDERR_FILENO) != 0 ? "\r\033[K" : "";
    const std::string line = eraseBar + ("zel: " + text.toStdString()) + '\n';
    // Not by stdio, of which another thread may hold the lock when the tool is being ended.
    [[maybe_unused]] const auto count = write(STDERR_FILENO, line.data(), line.size());
}

QString failureText(const Error& error, bool verbose)
{
    if (verbose) {
        return error.errorMessage();
    }
    return shortLine(error.message().isEmpty() ? error.errorMessage() : error.message());
}

} // namespace zel::tool
