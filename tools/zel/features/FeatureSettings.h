#pragma once

#include "common/core_mini/src/algo/parameters/FeatureFinderSettingTable.h"
#include "tools/zel/cli/SettingOptions.h"

#include <optional>
#include <string>
#include <vector>

namespace zel::tool {

/// The settings of feature finding as options of a command: one for each field of the record, and
/// `--preset`, from which those start that are not given.
class FeatureSettings
{
public:
    /// Declares the options. This object must outlive the parsing, and must not move.
    void addTo(CLI::App& command);

    /// Whether `forRun` makes use of the width of profile peaks.
    bool fitsKernel() const { return m_preset == "auto"; }

    /// The settings for a run: the preset, or the one for its kind of data, with what was given
    /// put in. The version is 2 with mobility and 1 without, unless given. Where the preset is
    /// chosen by the run, the m/z kernel is made for the peaks of profile spectra.
    /// \param peakWidthMz  full width at half height of a profile peak, Th; nothing for centroids
    SettableFeatureFinderParameters forRun(bool hasMobility,
                                           std::optional<double> peakWidthMz) const;

    /// The options that were given although a run with these settings does not read them.
    std::vector<std::string> givenButUnread(const SettableFeatureFinderParameters& params,
                                            bool isAutoSet) const;

    /// The presets that `--preset` knows beside the default one.
    static std::vector<SettingPreset<SettableFeatureFinderParameters>> presets();

private:
    std::string m_preset = "auto";
    SettingOptions<SettableFeatureFinderParameters> m_options;
};

} // namespace zel::tool
