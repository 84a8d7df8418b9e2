#pragma once

#include "common/stable/Setting.h"
#include "tools/zel/cli/CommandDescription.h"
#include "tools/zel/cli/CommandLine.h"

#include <CLI/CLI.hpp>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zel::tool {

/// Another set of defaults, and its name.
template <typename Record>
struct SettingPreset
{
    std::string name;
    Record values;
};

/// "10; qtof 15, tims 15": the default, and the presets that differ from it.
template <typename Record>
std::string defaultText(const Setting<Record>& setting,
                        const Record& defaults,
                        const std::vector<SettingPreset<Record>>& presets)
{
    const auto textOf = [&setting](const Record& record) {
        return settingText(settingValue(setting, record), setting.limits).toStdString();
    };
    std::string text = textOf(defaults);
    const char* separator = "; ";
    for (const SettingPreset<Record>& preset : presets) {
        if (const std::string other = textOf(preset.values); other != textOf(defaults)) {
            text += separator + preset.name + ' ' + other;
            separator = ", ";
        }
    }
    return text;
}

/// "Lowest mass, Da".
template <typename Record>
std::string meaningText(const Setting<Record>& setting)
{
    const std::string unit = setting.unit;
    return setting.meaning + (unit.empty() ? unit : ", " + unit);
}

/// The names of the option for a setting, with hyphens: "--ppm,--xic-mz-tolerance-ppm"; empty for
/// none.
template <typename Record>
std::string optionNames(const Setting<Record>& setting)
{
    const std::string names = setting.option != nullptr ? std::string(setting.option)
                                                        : settingOption(setting.name).toStdString();
    return names.empty() ? names : "--" + CLI::detail::find_and_replace(names, ",", ",--");
}

/// The settings of a record as options of a command. What they are given is kept by the command,
/// which must live as long.
template <typename Record>
class SettingOptions
{
public:
    /// Declares an option for each setting that has a name for one.
    /// \param readers  those that the command can have; what they do not read is of kUnreadGroup
    /// \param presets  are listed beside the defaults
    void addTo(CLI::App& command,
               const SettingTable<Record>& table,
               SettingReaders readers,
               const Record& defaults = {},
               const std::vector<SettingPreset<Record>>& presets = {})
    {
        for (const Setting<Record>& setting : table.settings) {
            const std::string names = optionNames(setting);
            if (names.empty() || command.get_option_no_throw(names) != nullptr) {
                continue; // none, or one that the command declares in its own way
            }
            CLI::Option* const option = addSettingOption(command,
                                                         {names, meaningText(setting)},
                                                         settingValue(setting, defaults),
                                                         setting.limits);
            option->default_str(defaultText(setting, defaults, presets))
                ->group((setting.readBy & readers) != 0 ? setting.group : kUnreadGroup);
            m_options.emplace_back(&setting, option);
        }
    }

    /// Puts what was given into a record.
    void copyGiven(Record* record) const
    {
        for (const auto& [setting, option] : m_options) {
            if (option->count() > 0) { // the text was checked when it was parsed
                const std::string text = CLI::detail::join(option->results(), ",");
                static_cast<void>(
                    setSettingFromText(*setting, QString::fromStdString(text), record));
            }
        }
    }

    /// The option of the setting with this name of a field; null if it has none.
    CLI::Option* option(std::string_view name) const
    {
        for (const auto& [setting, option] : m_options) {
            if (setting->name == name) {
                return option;
            }
        }
        return nullptr;
    }

    /// Whether the setting with this name of a field was given.
    bool isGiven(std::string_view name) const
    {
        const CLI::Option* const found = option(name);
        return found != nullptr && found->count() > 0;
    }

    /// The options that were given although none of `readers` reads them.
    std::vector<std::string> givenButUnread(SettingReaders readers) const
    {
        std::vector<std::string> names;
        for (const auto& [setting, option] : m_options) {
            if (option->count() > 0 && (setting->readBy & readers) == 0) {
                names.push_back(option->get_name());
            }
        }
        return names;
    }

private:
    std::vector<std::pair<const Setting<Record>*, CLI::Option*>> m_options;
};

} // namespace zel::tool
