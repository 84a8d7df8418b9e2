#include "tools/zel/manual/Completion.h"

#include "tools/zel/cli/CommandDescription.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace zel::tool {

namespace {

std::string joined(const std::vector<std::string>& texts, const char* separator)
{
    return CLI::detail::join(texts, separator);
}

std::string shortName(const CommandDescription& command)
{
    return command.name.substr(command.name.find(' ') + 1);
}

std::vector<std::string> commandNames(const CLI::App& tool)
{
    std::vector<std::string> names;
    for (const CommandDescription& command : describeCommands(tool)) {
        names.push_back(shortName(command));
    }
    return names;
}

/// The options of a command and those that all commands have.
std::vector<OptionDescription> optionsOf(const CommandDescription& command,
                                         const CommandDescription& tool)
{
    std::vector<OptionDescription> options = command.options;
    for (const OptionDescription& option : tool.options) {
        if (!option.name().starts_with("--help") && option.name() != "--version") {
            options.push_back(option);
        }
    }
    return options;
}

bool takesValue(const OptionDescription& option)
{
    return !option.value.empty() || !option.choices.empty();
}

/// What bash offers after an option: "  --preset) COMPREPLY=(...) ;;"; nothing for flags.
std::string bashValue(const OptionDescription& option)
{
    if (!takesValue(option)) {
        return {};
    }
    const std::string action = !option.choices.empty() ? "-W '" + joined(option.choices, " ") + '\''
                               : option.value == "FILE"   ? "-f"
                               : option.value == "FOLDER" ? "-d"
                                                          : "-W ''";
    return "        " + joined(option.names, "|") + ") _zel_offer " + action + "; return ;;\n";
}

std::string bashCase(const std::string& command, const std::vector<OptionDescription>& options)
{
    std::string values;
    std::vector<std::string> names;
    for (const OptionDescription& option : options) {
        values += bashValue(option);
        names.insert(names.end(), option.names.begin(), option.names.end());
    }
    return "    " + command + ")\n        options='" + joined(names, " ") +
           "'\n        case $previous in\n" + values + "        esac ;;\n";
}

/// Text inside the brackets of an argument of _arguments.
std::string zshText(const std::string& text)
{
    std::string result;
    for (const char letter : text) {
        if (letter == '\'') {
            result += "'\\''";
        } else {
            result +=
                (letter == '[' || letter == ']' || letter == ':' || letter == '\\' ? "\\" : "") +
                std::string(1, letter);
        }
    }
    return result;
}

/// ":FILE:_files", or nothing for a flag.
std::string zshValue(const OptionDescription& option)
{
    if (!takesValue(option)) {
        return {};
    }
    const std::string action = !option.choices.empty()    ? '(' + joined(option.choices, " ") + ')'
                               : option.value == "FILE"   ? "_files"
                               : option.value == "FOLDER" ? "_files -/"
                                                          : " ";
    return ":" + zshText(option.value.empty() ? "choice" : option.value) + ':' + action;
}

/// One argument of _arguments for each name of an option; a short and a long one exclude each
/// other.
std::string zshOption(const OptionDescription& option)
{
    std::string text;
    for (const std::string& name : option.names) {
        const std::string others = option.isRepeated ? "*" : '(' + joined(option.names, " ") + ')';
        text += " \\\n            '" + others + name + '[' + zshText(option.meaning) + ']' +
                zshValue(option) + '\'';
    }
    return text;
}

std::string zshCase(const CommandDescription& command, const CommandDescription& tool)
{
    std::string text = "        " + shortName(command) + ")\n            _arguments";
    for (const OptionDescription& option : optionsOf(command, tool)) {
        text += zshOption(option);
    }
    for (const OptionDescription& argument : command.arguments) {
        text += std::string(" \\\n            '") + (argument.isRepeated ? "*" : "1") + ':' +
                zshText(argument.name()) + ":_files'";
    }
    return text + " ;;\n";
}

} // namespace

std::string bashCompletion(const CLI::App& tool)
{
    const CommandDescription description = describe(tool);
    const std::vector<std::string> commands = commandNames(tool);
    std::string text = R"(# Completion of zel for bash.
_zel_offer() {
    compopt -o filenames 2>/dev/null
    mapfile -t COMPREPLY < <(compgen "$@" -- "$current")
}

_zel() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
    local word command='' options=''
    COMPREPLY=()
    for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
        case $word in
        )" + joined(commands, "|") +
                       R"() command=$word; break ;;
        esac
    done
    case $command in
)";
    text += bashCase("''", description.options);
    for (const CommandDescription& command : describeCommands(tool)) {
        text += bashCase(shortName(command), optionsOf(command, description));
    }
    text += R"(    esac
    if [[ $current == -* ]]; then
        _zel_offer -W "$options"
    elif [[ -z $command ]]; then
        _zel_offer -W ')" +
            joined(commands, " ") + R"('
    else
        _zel_offer -f
    fi
}
complete -F _zel zel
)";
    return text;
}

std::string zshCompletion(const CLI::App& tool)
{
    const CommandDescription description = describe(tool);
    std::string commands;
    std::string cases;
    for (const CommandDescription& command : describeCommands(tool)) {
        commands += "        '" + shortName(command) + ':' + zshText(command.summary) + "'\n";
        cases += zshCase(command, description);
    }
    std::string options;
    for (const OptionDescription& option : description.options) {
        options += zshOption(option);
    }
    return "#compdef zel\n# Completion of zel for zsh.\n_zel() {\n"
           "    local context state state_descr line\n    typeset -A opt_args\n"
           "    local -a commands\n    commands=(\n" +
           commands + "    )\n    _arguments -C" + options +
           " \\\n            '1:command:->command' '*::argument:->argument'\n"
           "    case $state in\n    command) _describe command commands ;;\n"
           "    argument)\n        case $words[1] in\n" +
           cases + "        esac ;;\n    esac\n}\n_zel \"$@\"\n";
}

} // namespace zel::tool
