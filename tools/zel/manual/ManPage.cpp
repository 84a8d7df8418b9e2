#include "tools/zel/manual/ManPage.h"

#include "tools/zel/cli/CommandDescription.h"

#include <CLI/CLI.hpp>

namespace zel::tool {

namespace {

constexpr const char* kEnding = R"(.SH CONFIGURATION
.B \-\-write\-config
.I FILE
writes the options of a call to a file instead of carrying it out: those that were given as
.IR name = value ,
the others as comments.
.B \-\-config
.I FILE
reads such a file. Options of a command stand below its name in brackets, those of all commands before the
first name. What is given to the command itself goes before the file.
.SH ENVIRONMENT
.TP
.B ZEL_DEV_HILL_FINDER_MAX_CONCURRENCY
Most batches in which
.B zel features
looks for the limits of hills at the same time; all processors, or what
.B \-\-threads
says, if it is not set. Results do not depend on it.
.TP
.BR ZEL_TRACE_FILE ", " ZEL_TRACE_CATEGORIES
Where timed scopes are written to as Chrome trace events, and which.
.TP
.B QT_LOGGING_RULES
What the library logs;
.B \-\-verbose
shows it without.
.SH EXIT STATUS
.TP
.B 0
All was done.
.TP
.B 1
Something failed; a line on standard error says what.
.TP
.B 2
The arguments are wrong.
.TP
.BR 130 ", " 143
Ended by SIGINT (Ctrl\-C) or SIGTERM. No output is left half written.
.SH EXAMPLES
.EX
zel simulate \-o run.mzML \-\-peptides 200
zel info run.mzML
zel xic run.mzML \-\-mz 524.265 \-\-ppm 10 \-o xic.tsv \-\-plot xic.html
zel features run.mzML \-o features \-\-tsv
zel features \-\-write\-config features.toml \-\-preset qtof
zel \-\-config features.toml features run.mzML \-o features
.EE
)";

/// Text of a page: hyphens that can be copied, and no line that is taken for a request.
std::string escaped(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        result += letter == '\\' ? "\\e" : letter == '-' ? "\\-" : std::string(1, letter);
    }
    const bool isRequest = result.starts_with('.') || result.starts_with('\'');
    return (isRequest ? "\\&" : "") + result;
}

std::string optionText(const OptionDescription& option)
{
    const std::string details = option.details();
    return ".TP\n.B " + escaped(option.usage()) + '\n' + escaped(option.meaning) +
           (details.empty() ? "" : escaped(" (" + details + ')')) + ".\n";
}

std::string optionsText(const CommandDescription& command)
{
    const bool isOfTool = command.name.find(' ') == std::string::npos;
    std::string text;
    for (const std::string& group : command.groups()) {
        text += ".PP\n.I " + escaped(group) + '\n';
        for (const OptionDescription& option : command.options) {
            const bool isHelp = option.name().starts_with("--help");
            if (option.group == group && (isOfTool || !isHelp)) {
                text += optionText(option);
            }
        }
    }
    return text;
}

std::string commandText(const CommandDescription& command)
{
    std::string usage = ".B " + command.name + "\n[OPTIONS]";
    for (const OptionDescription& argument : command.arguments) {
        usage += ' ' + escaped(argument.usage());
    }
    std::string text =
        ".SS " + command.name + '\n' + usage + "\n.PP\n" + escaped(command.summary) + ".\n";
    if (!command.footer.empty()) {
        text += escaped(command.footer) + '\n';
    }
    for (const OptionDescription& argument : command.arguments) {
        text += optionText(argument);
    }
    return text + optionsText(command);
}

} // namespace

std::string manPage(const CLI::App& tool)
{
    const CommandDescription description = describe(tool);
    std::string text = ".TH ZEL 1 \"\" \"zel " ZEL_VERSION "\" \"User Commands\"\n";
    text += ".SH NAME\nzel \\- algorithms for LC\\-MS and ion\\-mobility LC\\-MS proteomics\n";
    text += ".SH SYNOPSIS\n.B zel\n.I COMMAND\n[OPTIONS] [ARGUMENTS]\n.SH DESCRIPTION\n";
    text += escaped(description.summary) + '\n';
    text += "Tables are tab\\-separated text. Progress and messages go to standard error.\n";
    text += ".SH OPTIONS\n" + optionsText(description) + ".SH COMMANDS\n";
    for (const CommandDescription& command : describeCommands(tool)) {
        text += commandText(command);
    }
    return text + kEnding;
}

} // namespace zel::tool
