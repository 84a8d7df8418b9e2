#include "tools/zel/cli/ToolOptions.h"

#include "common/ms_types/MsReaderThreadPoolProvider.h"
#include "tools/io/FileCheck.h"
#include "tools/io/OutputFile.h"
#include "tools/zel/cli/CommandDescription.h"
#include "tools/zel/cli/CommandLine.h"
#include "tools/zel/cli/HelpText.h"

#include <QThreadPool>

#include <algorithm>
#include <string_view>

namespace zel::tool {

namespace {

constexpr int kMaxThreads = 1024;
constexpr const char* kWriteConfig = "--write-config";

bool writesConfig(int argc, const char* const* argv)
{
    return std::any_of(argv, argv + argc, [](std::string_view argument) {
        return argument.starts_with(kWriteConfig);
    });
}

void requireNothing(CLI::App& tool)
{
    for (CLI::App* const command : tool.get_subcommands({})) {
        for (CLI::Option* const option : command->get_options()) {
            option->required(false);
        }
    }
}

/// A line of the file: "name=value", a comment with the default where it was not given.
std::string configLine(const CLI::Option* given, const OptionDescription& option)
{
    const std::string name = CLI::detail::find_and_replace(option.name(), "--", "");
    if (given->count() > 0) {
        return name + '=' + CLI::detail::ini_join(given->reduced_results()) + '\n';
    }
    const bool isFlag = option.value.empty() && option.choices.empty();
    const bool isWords = option.defaultText.find(' ') < option.defaultText.find(';');
    const std::string value = isFlag ? "false"
                              : isWords
                                  ? ""
                                  : option.defaultText.substr(0, option.defaultText.find(';'));
    return '#' + name + '=' + value + '\n';
}

std::string configLines(const CLI::App& app, std::vector<OptionDescription> options)
{
    std::string text;
    for (const OptionDescription& option : options) {
        const CLI::Option* const given = app.get_option(option.name());
        if (given->get_configurable()) {
            const std::string details = option.details();
            text += "\n# " + option.meaning + (details.empty() ? "" : " (" + details + ')') + '\n';
            text += configLine(given, option);
        }
    }
    return text;
}

std::string configText(const CLI::App& tool)
{
    const CLI::App& command = *tool.get_subcommands().at(0);
    const CommandDescription description = describe(command);
    std::string text = "# zel --config FILE reads this file. What is given to the command itself "
                       "goes before it.\n";
    text += configLines(tool, describe(tool).options);
    text += "\n[" + command.get_name() + "]\n";
    text += configLines(command, description.arguments);
    return text + configLines(command, description.options);
}

/// The files that are given to the tool or the command; not where the configuration goes.
QStringList filesGivenTo(const CLI::App& app)
{
    const CommandDescription description = describe(app);
    std::vector<OptionDescription> options = description.arguments;
    options.insert(options.end(), description.options.begin(), description.options.end());
    QStringList files;
    for (const OptionDescription& option : options) {
        if (option.value != "FILE" || option.name() == kWriteConfig) {
            continue;
        }
        for (const std::string& path : app.get_option(option.name())->results()) {
            if (path != "-") {
                files.append(QString::fromStdString(path));
            }
        }
    }
    return files;
}

} // namespace

void addToolOptions(CLI::App& tool, ToolOptions& options)
{
    tool.formatter(std::make_shared<HelpText>());
    tool.set_help_flag("-h,--help", "Show what the command does, and end");
    tool.set_help_all_flag("--help-all", "Show all options, rarely used ones too, and end");
    tool.set_version_flag("--version", "zel " ZEL_VERSION, "Show the version, and end");
    tool.add_flag(
        "--verbose", options.verbose, "Show the library's log, and all frames of an error");
    tool.add_option("--threads", options.threads, "Most threads of what is done in parallel")
        ->check(isWholeNumber(1, kMaxThreads))
        ->default_str("all processors");
    tool.set_config("--config", "", "Read options from a file that --write-config has made")
        ->type_name("FILE")
        ->configurable(false);
    tool.add_option(kWriteConfig,
                    options.writeConfig,
                    "Write the options of this call to a file (-: standard output), and end")
        ->type_name("FILE")
        ->configurable(false);
    tool.allow_config_extras(CLI::config_extras_mode::error);
    tool.require_subcommand(1);
    tool.fallthrough();
}

void parseArguments(CLI::App& tool, int argc, const char* const* argv)
{
    if (!writesConfig(argc, argv)) {
        tool.parse(argc, argv);
        return;
    }
    requireNothing(tool);
    try {
        tool.parse(argc, argv);
    } catch (const CLI::RequiredError&) { // one of several options
        if (tool.get_subcommands().empty()) {
            throw;
        }
    }
}

void limitThreads(int count)
{
    constexpr const char* hillFinderThreads = "ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY";
    QThreadPool::globalInstance()->setMaxThreadCount(count);
    MsReaderThreadPoolProvider::calculateThreadPool()->setMaxThreadCount(count);
    if (!qEnvironmentVariableIsSet(hillFinderThreads)) {
        qputenv(hillFinderThreads, QByteArray::number(count));
    }
}

Error writeConfiguration(const CLI::App& tool, const ToolOptions& options)
{
    Error e;
    const QString path =
        options.writeConfig == "-" ? QString() : QString::fromStdString(options.writeConfig);
    const QStringList named = filesGivenTo(tool) + filesGivenTo(*tool.get_subcommands().at(0));
    ZEL_RETURN_IF_ERROR(io::checkFiles({named, {path}}));
    ZEL_ASSIGN_OR_RETURN(const auto output, io::OutputFile::openOrStandardOutput(path));
    *output << QByteArray::fromStdString(configText(tool));
    ZEL_RETURN_IF_ERROR(output->commit());
    return e;
}

} // namespace zel::tool
