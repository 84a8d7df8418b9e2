#include "tools/zel/cli/Command.h"
#include "tools/zel/cli/ConsoleProgress.h"

#include <CLI/CLI.hpp>
#include <QCoreApplication>
#include <QLoggingCategory>

#include <clocale>
#include <cmath>
#include <cstdlib>
#include <iostream>

namespace {

using namespace zel;

// The shell's conventions: 1 a failure, 2 wrong usage, 128 + SIGINT for Ctrl-C.
constexpr int kFailureExit = 1;
constexpr int kUsageExit = 2;
constexpr int kCanceledExit = 130;

/// What the user reads about a failure: one line, or with `verbose` all that is known.
QString failureText(const Error& error, bool verbose)
{
    if (verbose) {
        return error.errorMessage();
    }
    const QString text = error.message().isEmpty() ? error.errorMessage() : error.message();
    return text.section(QLatin1Char('\n'), 0, 0);
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
        return tool.exit(problem) == 0 ? 0 : kUsageExit;
    }

    if (!verbose) {
        QLoggingCategory::setFilterRules(QStringLiteral("zel.*.debug=false"));
    }
    const auto progress = QSharedPointer<tool::ConsoleProgress>::create();
    const Error e = chosen({progress});
    progress->finish();
    return exitCode(e, verbose);
}
