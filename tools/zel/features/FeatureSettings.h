#pragma once

#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
}

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

private:
    template <typename T, typename Check>
    void add(CLI::App& command,
             const std::string& name,
             T SettableFeatureFinderParameters::*field,
             const std::string& meaning,
             Check check);
    template <typename Access, typename Check>
    void addField(CLI::App& command,
                  const std::string& name,
                  Access access,
                  const std::string& meaning,
                  Check check);
    void addAcceptance(CLI::App& command);
    void addReading(CLI::App& command);
    void addMatrices(CLI::App& command);
    void addHills(CLI::App& command);
    template <typename Group>
    auto memberAdder(CLI::App& command,
                     Group SettableFeatureFinderParameters::*group,
                     const std::string& note = {});
    void addPeakSplitter(CLI::App& command);
    void addPeakLimits(CLI::App& command);

    std::string m_preset = "auto";
    std::string m_networkFile;
    std::optional<int> m_version;
    SettableFeatureFinderParameters m_given;
    /// Copies one field of m_given if its option was given.
    std::vector<std::function<void(SettableFeatureFinderParameters&)>> m_copyIfGiven;
};

} // namespace zel::tool
