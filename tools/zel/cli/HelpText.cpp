#include "tools/zel/cli/HelpText.h"

#include "tools/zel/cli/CommandDescription.h"

#include <sstream>

namespace zel::tool {

namespace {

constexpr std::size_t kLineLength = 80;
constexpr std::size_t kTextColumn = 26;
constexpr const char* kToolGroup = "Options of all commands";

/// The words in lines that end before kLineLength, from this column on; ends without a line feed.
std::string wrapped(const std::string& text, std::size_t column)
{
    std::istringstream words(text);
    std::string lines;
    std::string word;
    std::size_t position = column;
    while (words >> word) {
        if (position > column && position + 1 + word.size() > kLineLength) {
            lines += '\n' + std::string(column, ' ');
            position = column;
        }
        lines += (position > column ? " " : "") + word;
        position += (position > column ? 1 : 0) + word.size();
    }
    return lines;
}

/// "  --name VALUE    What it means"; the text starts on a line of its own after a long name.
std::string entry(const std::string& usage, const std::string& text)
{
    std::string line = "  " + usage;
    line += line.size() + 2 > kTextColumn ? '\n' + std::string(kTextColumn, ' ')
                                          : std::string(kTextColumn - line.size(), ' ');
    return line + wrapped(text, kTextColumn) + '\n';
}

std::string entry(const OptionDescription& option)
{
    const std::string details = option.details();
    return entry(option.usage(),
                 option.meaning + (details.empty() ? std::string() : " (" + details + ')'));
}

std::string optionsText(const CommandDescription& command, bool isFull)
{
    std::string text;
    for (const std::string& group : command.groups()) {
        if (!isFull && group == kUnreadGroup) {
            continue;
        }
        text += '\n' + group + ":\n";
        for (const OptionDescription& option : command.options) {
            if (option.group == group) {
                text += entry(option);
            }
        }
    }
    return text;
}

std::string toolOptionsText(CommandDescription tool)
{
    std::erase_if(tool.options, [](const OptionDescription& option) {
        return option.name() == "--help" || option.name() == "--help-all" ||
               option.name() == "--version";
    });
    for (OptionDescription& option : tool.options) {
        option.group = kToolGroup;
    }
    return optionsText(tool, true);
}

std::string commandText(const CLI::App& command, bool isFull)
{
    const CommandDescription description = describe(command);
    std::string usage = "Usage: " + description.name + " [OPTIONS]";
    for (const OptionDescription& argument : description.arguments) {
        usage += ' ' + argument.usage();
    }
    std::string text = wrapped(description.summary, 0) + "\n\n" + usage + '\n';
    if (!description.arguments.empty()) {
        text += "\nArguments:\n";
        for (const OptionDescription& argument : description.arguments) {
            text += entry(argument);
        }
    }
    text += optionsText(description, isFull);
    if (command.get_parent() != nullptr) {
        text += toolOptionsText(describe(*command.get_parent()));
    }
    return text + (description.footer.empty() ? "" : '\n' + wrapped(description.footer, 0) + '\n');
}

std::string toolText(const CLI::App& tool, bool isFull)
{
    const CommandDescription description = describe(tool);
    std::string text = wrapped(description.summary, 0) + "\n\nUsage: zel COMMAND [OPTIONS]\n";
    text += "\nCommands:\n";
    for (const CommandDescription& command : describeCommands(tool)) {
        text += entry(command.name.substr(tool.get_name().size() + 1), command.summary);
    }
    text += optionsText(description, isFull);
    text += '\n' + wrapped(description.footer, 0) + '\n';
    if (isFull) {
        for (const CLI::App* const command :
             tool.get_subcommands([](const CLI::App* app) { return !app->get_group().empty(); })) {
            text += "\n\n" + commandText(*command, true);
        }
    }
    return text;
}

} // namespace

std::string HelpText::make_help(const CLI::App* app,
                                std::string /*name*/,
                                CLI::AppFormatMode mode) const
{
    const bool isFull = mode != CLI::AppFormatMode::Normal;
    return app->get_parent() == nullptr ? toolText(*app, isFull) : commandText(*app, isFull);
}

} // namespace zel::tool
