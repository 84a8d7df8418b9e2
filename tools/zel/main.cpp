#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/ConsoleProgress.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QLoggingCategory>

#include <cerrno>
#include <clocale>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

namespace {

using namespace zel;

// The shell's conventions: 1 a failure, 2 wrong usage, 128 + SIGINT for Ctrl-C.
constexpr int kFailureExit = 1;
constexpr int kUsageExit = 2;
constexpr int kCanceledExit = 130;

constexpr char kOutOfMemory[] = "There is not enough memory";

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

/// What the user reads about a failure: one line, or with `verbose` all that is known.
QString failureText(const Error& error, bool verbose)
{
    if (verbose) {
        return error.errorMessage();
    }
    return shortLine(error.message().isEmpty() ? error.errorMessage() : error.message());
}

/// Runs a command; what it throws becomes an Error, too.
Error runCommand(const tool::CommandAction& action, const tool::CommandContext& context)
{
    try {
        return action(context);
    } catch (const std::bad_alloc&) {
        return {kError, kOutOfMemory};
    } catch (const std::exception& problem) {
        return {kError, problem.what()};
    }
}

/// Writes out what was printed. \return kError when standard output did not take all of it
Error flushStandardOutput()
{
    errno = 0;
    std::cout.flush();
    if (std::fflush(stdout) != 0 || !std::cout) {
        const char* const reason = errno != 0 ? std::strerror(errno) : "it did not take all";
        return {kError,
                QStringLiteral("Could not write standard output: %1")
                    .arg(QString::fromLocal8Bit(reason))};
    }
    return kNoError;
}

/// The end of an exception that no handler can reach, such as one in another thread.
[[noreturn]] void onTerminate()
{
    try {
        if (std::current_exception()) {
            std::rethrow_exception(std::current_exception());
        }
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "zel: %s\n", kOutOfMemory);
        std::_Exit(kFailureExit);
    } catch (...) {
    }
    std::abort();
}

int exitCode(const Error& error, bool verbose)
{
    if (!error.hasError()) {
        return 0;
    }
    if (error.equals(kOperationCanceledError)) {
        std::cerr << "zel: canceled\n";
        return kCanceledExit;
    }
    std::cerr << "zel: " << failureText(error, verbose).toStdString() << '\n';
    return kFailureExit;
}

/// Refuses numbers that are not finite, which pass every check of a range.
void checkNumbers(const CLI::App& command)
{
    for (const CLI::Option* const option : command.get_options()) {
        if (option->get_type_name().find("FLOAT") == std::string::npos) {
            continue;
        }
        for (const std::string& text : option->results()) {
            if (!std::isfinite(std::strtod(text.c_str(), nullptr))) {
                throw CLI::ValidationError(option->get_name(), text + " is not a finite number");
            }
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    std::setlocale(LC_ALL, "C");
    std::set_terminate(onTerminate);

    CLI::App tool("Algorithms for LC-MS and ion-mobility LC-MS proteomics on mzML and mzXML files.",
                  "zel");
    bool verbose = false;
    tool.add_flag("--verbose", verbose, "Show the library's log, and all frames of an error");
    tool.require_subcommand(1);
    tool.fallthrough();
    tool::CommandAction chosen;
    tool::addFeaturesCommand(tool, chosen);
    tool::addInfoCommand(tool, chosen);
    tool::addSimulateCommand(tool, chosen);
    tool::addTargetedCommand(tool, chosen);
    tool::addXicCommand(tool, chosen);
    tool::addXimCommand(tool, chosen);
    try {
        tool.parse(argc, argv);
        for (const CLI::App* const command : tool.get_subcommands()) {
            checkNumbers(*command);
        }
    } catch (const CLI::ParseError& problem) {
        return tool.exit(problem) == 0 ? exitCode(flushStandardOutput(), verbose) : kUsageExit;
    }

    if (!verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("zel.*.debug=false"));
    }
    const auto progress = QSharedPointer<tool::ConsoleProgress>::create();
    const Error e = runCommand(chosen, {progress});
    progress->finish();
    return exitCode(e.hasError() ? e : flushStandardOutput(), verbose);
}
