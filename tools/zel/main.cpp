#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/ConsoleProgress.h"
#include "tools/zel/cli/Interruption.h"
#include "tools/zel/cli/Messages.h"
#include "tools/zel/cli/ToolOptions.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QLoggingCategory>

#include <cerrno>
#include <clocale>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <iostream>
#include <new>

namespace {

using namespace zel;

// The shell's conventions: 1 a failure, 2 wrong usage; signals have theirs, too.
constexpr int kFailureExit = 1;
constexpr int kUsageExit = 2;

/// Runs a command; what it throws becomes an Error, too.
Error runCommand(const tool::CommandAction& action, const tool::CommandContext& context)
{
    try {
        return action(context);
    } catch (const std::exception& problem) {
        return {kError, tool::exceptionText(problem)};
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
        std::fprintf(stderr, "zel: %s\n", tool::kOutOfMemory);
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
    if (tool::isInterrupted()) {
        tool::tellInterrupted();
        return tool::interruptedExitCode();
    }
    tool::tell(tool::failureText(error, verbose));
    return kFailureExit;
}

} // namespace

int main(int argc, char** argv)
{
    tool::watchForSignals();
    const QCoreApplication application(argc, argv);
    std::setlocale(LC_ALL, "C");
    std::set_terminate(onTerminate);

    CLI::App tool("Algorithms for LC-MS and ion-mobility LC-MS proteomics on mzML and mzXML files.",
                  "zel");
    tool.footer("zel COMMAND --help shows what a command does and takes.");
    tool::ToolOptions options;
    tool::addToolOptions(tool, options);
    tool::CommandAction chosen;
    tool::addDigestCommand(tool, chosen);
    tool::addFeaturesCommand(tool, chosen);
    tool::addInfoCommand(tool, chosen);
    tool::addManualCommand(tool, chosen);
    tool::addMatchCommand(tool, chosen);
    tool::addSimulateCommand(tool, chosen);
    tool::addTargetedCommand(tool, chosen);
    tool::addXicCommand(tool, chosen);
    tool::addXimCommand(tool, chosen);
    tool::addXlinkCommand(tool, chosen);
    try {
        tool::parseArguments(tool, argc, argv);
    } catch (const CLI::Success& answer) { // help or version
        tool.exit(answer);
        return exitCode(flushStandardOutput(), options.verbose);
    } catch (const CLI::ParseError& problem) {
        std::cerr << "zel: " << tool::usageError(tool, problem) << '\n';
        return kUsageExit;
    }
    if (!options.writeConfig.empty()) {
        return exitCode(tool::writeConfiguration(tool, options), options.verbose);
    }
    if (options.threads > 0) {
        tool::limitThreads(options.threads);
    }
    if (!options.verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("zel.*.debug=false"));
    }
    const auto progress = QSharedPointer<tool::ConsoleProgress>::create();
    const Error e = runCommand(chosen, {progress, options.verbose});
    progress->finish();
    return exitCode(e.hasError() ? e : flushStandardOutput(), options.verbose);
}
