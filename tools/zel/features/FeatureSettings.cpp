#include "tools/zel/features/FeatureSettings.h"

#include <algorithm>
#include <cmath>

namespace zel::tool {

using Parameters = SettableFeatureFinderParameters;

namespace {

/// Makes the m/z kernel as wide as a peak of profile spectra. Version 2 has a width of its own,
/// which holds two standard deviations of up to 8 bins to each side.
void setKernel(double peakWidthMz, Parameters& params)
{
    constexpr double sigmaOfWidth = 2.3548; // 2 sqrt(2 ln 2)
    const bool isMobility = params.featureFinderVersion == 2;
    const double widest = isMobility ? 8.0 : 100.0; // bins; what looks wider than 100 is no peak
    params.kernelSigma =
        std::clamp(peakWidthMz * params.mzHashFactor / sigmaOfWidth, params.kernelSigma, widest);
    if (!isMobility) {
        params.mzKernelWidth = 2 * static_cast<int>(std::lround(2.0 * params.kernelSigma)) + 1;
    }
}

} // namespace

std::vector<SettingPreset<Parameters>> FeatureSettings::presets()
{
    return {{"qtof", Parameters::qtof()}, {"tims", Parameters::trappedMobility()}};
}

void FeatureSettings::addTo(CLI::App& command)
{
    command
        .add_option("--preset",
                    m_preset,
                    "Settings to start from; auto: tims for runs with mobility, orbitrap for "
                    "others, with an m/z kernel as wide as the peaks of profile spectra")
        ->capture_default_str()
        ->check(isOneOf({"auto", "orbitrap", "qtof", "tims"}));
    m_options.addTo(command,
                    featureFinderSettings(),
                    kHillFinder | kFrameFinder | kAutoSet,
                    Parameters::orbitrap(),
                    presets());
    m_options.option("featureFinderVersion")->default_str("by the run");
    m_options.option("networkFilePath")->default_str("built in");
}

Parameters FeatureSettings::forRun(bool hasMobility, std::optional<double> peakWidthMz) const
{
    Parameters params = Parameters::orbitrap();
    if (m_preset == "qtof") {
        params = Parameters::qtof();
    } else if (m_preset == "tims" || (m_preset == "auto" && hasMobility)) {
        params = Parameters::trappedMobility();
    }
    if (fitsKernel() && peakWidthMz) {
        setKernel(*peakWidthMz, params);
    }
    params.featureFinderVersion = hasMobility ? 2 : 1;
    m_options.copyGiven(&params);
    return params;
}

std::vector<std::string> FeatureSettings::givenButUnread(const Parameters& params,
                                                         bool isAutoSet) const
{
    const SettingReaders versions[] = {kScanWiseFinder, kHillFinder, kFrameFinder};
    return m_options.givenButUnread(versions[params.featureFinderVersion] |
                                    (isAutoSet ? kAutoSet : SettingReaders(0)));
}

} // namespace zel::tool
