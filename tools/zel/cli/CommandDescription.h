#pragma once

#include <string>
#include <vector>

namespace CLI {
class App;
}

namespace zel::tool {

/// Heading of the settings that are shown by --help-all only.
inline constexpr const char* kUnreadGroup = "Settings that no run of this command reads";

/// An option or an argument as users read about it.
struct OptionDescription
{
    std::vector<std::string> names; ///< with their hyphens; that of an argument has none
    std::string value;              ///< stands for what is given: "NUMBER", "FILE"; empty for flags
    std::vector<std::string> choices; ///< where only some values are taken
    std::string range;                ///< "0 to 1"; empty where anything is taken
    std::string defaultText;
    std::string meaning;
    std::string group; ///< heading
    bool isRequired = false;
    bool isRepeated = false;           ///< may be given several times
    std::vector<std::string> needed;   ///< options that it needs
    std::vector<std::string> excluded; ///< options that it excludes

    /// The first long name, or that of an argument.
    const std::string& name() const;
    /// "-o, --output FILE", "--preset auto|tims", "files...".
    std::string usage() const;
    /// "0 to 1; default 0.5": all that is not the meaning; may be empty.
    std::string details() const;
};

/// A command, or the tool itself. What help, manual, completion and configuration files are made
/// of.
struct CommandDescription
{
    std::string name; ///< "zel features"
    std::string summary;
    std::string footer;
    std::vector<OptionDescription> arguments;
    std::vector<OptionDescription> options;

    /// The headings of the options in their order, kUnreadGroup last.
    std::vector<std::string> groups() const;
};

/// Describes a command as it is declared, without hidden options.
CommandDescription describe(const CLI::App& command);

/// The commands of the tool in the order of their declaration, without hidden ones.
std::vector<CommandDescription> describeCommands(const CLI::App& tool);

} // namespace zel::tool
