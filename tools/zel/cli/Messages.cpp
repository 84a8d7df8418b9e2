#include "tools/zel/cli/Messages.h"

#include <unistd.h>

#include <new>
#include <string>

namespace zel::tool {

namespace {

/// The text on one line that a terminal shows as it is; the middle of a long one is left out.
QString shortLine(const QString& text)
{
    constexpr std::size_t maxLength = 500;
    constexpr std::size_t keptAtEnd = 150;
    std::u32string line = text.toStdU32String();
    for (char32_t& character : line) {
        character = QChar::isPrint(character) ? character : U' ';
    }
    if (line.size() > maxLength) {
        line =
            line.substr(0, maxLength - keptAtEnd) + U" ... " + line.substr(line.size() - keptAtEnd);
    }
    return QString::fromStdU32String(line);
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

QString exceptionText(const std::exception& problem)
{
    const bool isOfMemory = dynamic_cast<const std::bad_alloc*>(&problem) != nullptr;
    return QString::fromUtf8(isOfMemory ? kOutOfMemory : problem.what());
}

} // namespace zel::tool
