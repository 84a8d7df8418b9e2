#include "tools/zel/manual/SettingsPage.h"

#include "ms_feature/alignment/Ms1FeatureAlignSettingTable.h"
#include "ms_feature/records/MsFeatureFinderSettingTable.h"
#include "tools/simulate/SimulationSettingTable.h"
#include "tools/zel/cli/SettingOptions.h"
#include "tools/zel/features/FeatureSettings.h"

namespace zel::tool {

namespace {

/// A cell of a table; an upright stroke would end it.
std::string cell(const std::string& text)
{
    return CLI::detail::find_and_replace(text, "|", "\\|") + " | ";
}

std::string code(const std::string& text)
{
    return text.empty() ? text : '`' + text + '`';
}

std::string typeText(const SettingValue& value, const SettingLimits& limits)
{
    std::vector<std::string> names;
    for (const SettingChoice& choice : limits.choices) {
        names.emplace_back(choice.name);
    }
    return !names.empty()                                 ? CLI::detail::join(names, ", ")
           : std::holds_alternative<bool>(value)          ? "true or false"
           : std::holds_alternative<QString>(value)       ? "path"
           : std::holds_alternative<QList<double>>(value) ? "numbers"
           : std::holds_alternative<double>(value)        ? "number"
                                                          : "whole number";
}

std::string readersText(SettingReaders readBy, std::span<const char* const> readers)
{
    std::vector<std::string> names;
    for (std::size_t bit = 0; bit < readers.size(); ++bit) {
        if ((readBy >> bit & 1U) != 0) {
            names.emplace_back(readers[bit]);
        }
    }
    return CLI::detail::join(names, ", ");
}

template <typename Record>
std::string tableText(const SettingTable<Record>& table,
                      const Record& defaults = {},
                      const std::vector<SettingPreset<Record>>& presets = {})
{
    std::string text = "| Option | Field | Takes | Default | Read by | Meaning |\n"
                       "|---|---|---|---|---|---|\n";
    for (const Setting<Record>& setting : table.settings) {
        const SettingValue value = settingValue(setting, defaults);
        const std::string range = settingRangeText(setting.limits).toStdString();
        const std::string names = optionNames(setting);
        text += "| " + cell(code(CLI::detail::find_and_replace(names, ",", "`, `"))) +
                cell(code(setting.name)) +
                cell(typeText(value, setting.limits) + (range.empty() ? range : ", " + range)) +
                cell(defaultText(setting, defaults, presets)) +
                cell(readersText(setting.readBy, table.readers)) + setting.meaning;
        const std::string unit = setting.unit;
        text += (unit.empty() ? unit : ", " + unit) + " |\n";
    }
    return text;
}

} // namespace

std::string settingsPage()
{
    return "# Settings\n\n"
           "Made by `zel manual settings` from the descriptions that options and help come from. "
           "A setting without an\noption is for programs only.\n\n"
           "## Untargeted features, `zel features`: `SettableFeatureFinderParameters`\n\n"
           "Defaults are those of `orbitrap()`, with the presets that differ. A default record "
           "differs in `featureFinderVersion`\n(0) and `maxD1Gap` (5).\n\n" +
           tableText(featureFinderSettings(),
                     SettableFeatureFinderParameters::orbitrap(),
                     FeatureSettings::presets()) +
           "\n## Targeted features, `zel targeted`: `MsFeatureFinderSettings`\n\n" +
           tableText(msFeatureFinderSettings()) +
           "\n## Alignment across runs, `zel targeted`: `Ms1FeatureAlignSettings`\n\n" +
           tableText(ms1FeatureAlignSettings()) +
           "\n## Simulated runs, `zel simulate`: `SimulationSettings`\n\n" +
           tableText(simulate::simulationSettings());
}

} // namespace zel::tool
