#include "tools/zel/cli/CommandDescription.h"
#include "tools/zel/cli/ToolOptions.h"

#include <algorithm>

namespace zel::tool {

namespace {

std::string quoted(const std::string& text)
{
    return '"' + text + '"';
}

std::string commandNames(const CLI::App& tool)
{
    std::vector<std::string> names;
    for (const CommandDescription& command : describeCommands(tool)) {
        names.push_back(command.name.substr(tool.get_name().size() + 1));
    }
    return CLI::detail::join(names, ", ");
}

std::string unknownArgument(const std::string& argument)
{
    return argument.starts_with('-') ? "unknown option " + argument
                                     : "unexpected argument " + quoted(argument);
}

std::string missingCommand(const CLI::App& tool)
{
    const std::vector<std::string> arguments = tool.remaining();
    const auto isWord = [](const std::string& argument) { return !argument.starts_with('-'); };
    const auto word = std::ranges::find_if(arguments, isWord);
    return (word == arguments.end() ? std::string("a command is missing")
                                    : "there is no command " + quoted(*word)) +
           "; the commands are " + commandNames(tool);
}

/// The library's words for a wrong number of values, in ours: "--mz: a value is missing".
std::string wrongCount(const std::string& text)
{
    const std::string name = text.substr(0, text.find(": "));
    return name + (text.ends_with("missing") ? ": a value is missing" : ": may be given only once");
}

std::string reason(const CLI::App& tool, const CLI::ParseError& problem)
{
    using CLI::ExitCodes;
    const std::string text = problem.what();
    const auto kind = static_cast<ExitCodes>(problem.get_exit_code());
    if (tool.get_subcommands().empty() &&
        (kind == ExitCodes::RequiredError || kind == ExitCodes::ExtrasError)) {
        return missingCommand(tool);
    }
    switch (kind) {
    case ExitCodes::ExtrasError:
        return unknownArgument(tool.remaining(true).front());
    case ExitCodes::ArgumentMismatch:
        return wrongCount(text);
    case ExitCodes::ConfigError:
        return "unknown setting in --config: " + text.substr(text.rfind(' ') + 1);
    case ExitCodes::FileError:
        return CLI::detail::find_and_replace(text, "was not readable (missing?)", "cannot be read");
    case ExitCodes::ExcludesError:
        return CLI::detail::find_and_replace(text, "excludes", "cannot be had with");
    case ExitCodes::RequiresError:
        return CLI::detail::find_and_replace(text, "requires", "needs");
    default:
        break;
    }
    return text;
}

} // namespace

std::string usageError(const CLI::App& tool, const CLI::ParseError& problem)
{
    const std::vector<CLI::App*> commands = tool.get_subcommands();
    const std::string command = commands.empty() ? "" : ' ' + commands.front()->get_name();
    return reason(tool, problem) + "; see zel" + command + " --help";
}

} // namespace zel::tool
