#include "tools/zel/cli/CommandDescription.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace zel::tool {

namespace {

std::string joined(const std::vector<std::string>& texts, const char* separator)
{
    return CLI::detail::join(texts, separator);
}

std::string placeholder(const std::string& type)
{
    return type == "FLOAT" ? "NUMBER" : type == "INT" || type == "UINT" ? "N" : type;
}

/// Takes apart a text such as "FLOAT:0 to 1" or "TEXT:{a,b}": type, then what each check accepts.
void describeValue(const CLI::Option& option, OptionDescription& description)
{
    for (const std::string& part : CLI::detail::split(option.get_type_name(), ':')) {
        if (part.size() > 2 && part.front() == '{') {
            description.choices = CLI::detail::split(part.substr(1, part.size() - 2), ',');
        } else if (description.value.empty()) {
            description.value = placeholder(part);
        } else {
            description.range = part;
        }
    }
}

std::vector<std::string> sortedNames(const std::set<CLI::Option*>& options)
{
    std::vector<std::string> names;
    names.reserve(options.size());
    for (const CLI::Option* const option : options) {
        names.push_back(option->get_name());
    }
    std::ranges::sort(names);
    return names;
}

OptionDescription describeOption(const CLI::Option& option)
{
    OptionDescription description;
    if (option.get_positional()) {
        description.names = {option.get_name()};
    }
    for (const std::string& name : option.get_snames()) {
        description.names.push_back('-' + name);
    }
    for (const std::string& name : option.get_lnames()) {
        description.names.push_back("--" + name);
    }
    if (option.get_type_size() != 0) {
        describeValue(option, description);
        description.defaultText = option.get_default_str();
    }
    description.meaning = option.get_description();
    description.group = option.get_group();
    description.isRequired = option.get_required();
    description.isRepeated = option.get_expected_max() >= CLI::detail::expected_max_vector_size;
    description.needed = sortedNames(option.get_needs());
    description.excluded = sortedNames(option.get_excludes());
    return description;
}

} // namespace

const std::string& OptionDescription::name() const
{
    const auto isLong = [](const std::string& name) { return name.starts_with("--"); };
    const auto name = std::ranges::find_if(names, isLong);
    return name == names.end() ? names.back() : *name;
}

std::string OptionDescription::usage() const
{
    std::string text = joined(names, ", ");
    if (!choices.empty()) {
        text += ' ' + joined(choices, "|");
    } else if (!value.empty() && names.front().front() == '-') {
        text += ' ' + value;
    }
    return text + (isRepeated && names.front().front() != '-' ? "..." : "");
}

std::string OptionDescription::details() const
{
    std::vector<std::string> parts;
    if (isRequired) {
        parts.emplace_back("required");
    }
    if (!range.empty()) {
        parts.push_back(range);
    }
    if (!defaultText.empty()) {
        parts.push_back("default " + defaultText);
    }
    if (!needed.empty()) {
        parts.push_back("needs " + joined(needed, ", "));
    }
    if (!excluded.empty()) {
        parts.push_back("not with " + joined(excluded, ", "));
    }
    return joined(parts, "; ");
}

std::vector<std::string> CommandDescription::groups() const
{
    std::vector<std::string> found;
    for (const OptionDescription& option : options) {
        if (std::ranges::find(found, option.group) == found.end()) {
            found.push_back(option.group);
        }
    }
    std::stable_partition(
        found.begin(), found.end(), [](const std::string& group) { return group != kUnreadGroup; });
    return found;
}

CommandDescription describe(const CLI::App& command)
{
    CommandDescription description;
    for (const CLI::App* app = &command; app != nullptr; app = app->get_parent()) {
        description.name = app->get_name() + (app == &command ? "" : " ") + description.name;
    }
    description.summary = command.get_description();
    description.footer = command.get_footer();
    for (const CLI::Option* const option : command.get_options()) {
        if (option->get_group().empty()) {
            continue; // hidden
        }
        auto& list = option->get_positional() ? description.arguments : description.options;
        list.push_back(describeOption(*option));
    }
    return description;
}

std::vector<CommandDescription> describeCommands(const CLI::App& tool)
{
    std::vector<CommandDescription> commands;
    for (const CLI::App* const command : tool.get_subcommands({})) {
        if (!command->get_group().empty()) {
            commands.push_back(describe(*command));
        }
    }
    return commands;
}

} // namespace zel::tool
