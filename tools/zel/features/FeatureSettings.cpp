#include "tools/zel/features/FeatureSettings.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cmath>
#include <sstream>

namespace zel::tool {

using Parameters = SettableFeatureFinderParameters;

namespace {

constexpr double kLargest = 1e12; // where there is no limit: keeps messages short
constexpr int kMostPoints = 100'000'000;

template <typename T>
std::string textOf(const T& value)
{
    std::ostringstream text;
    text << std::boolalpha << value;
    return text.str();
}

/// "10; qtof 15, tims 15": the default, and the presets that differ from it.
template <typename Access>
std::string defaultsOf(Access access)
{
    const Parameters orbitrap = Parameters::orbitrap();
    const auto& value = access(orbitrap);
    std::string text = textOf(value);
    const char* separator = "; ";
    for (const auto& [name, preset] :
         {std::pair("qtof ", Parameters::qtof()), {"tims ", Parameters::trappedMobility()}}) {
        if (!(access(preset) == value)) {
            text += separator + std::string(name) + textOf(access(preset));
            separator = ", ";
        }
    }
    return text;
}

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

template <typename T, typename Check>
void FeatureSettings::add(CLI::App& command,
                          const std::string& name,
                          T Parameters::*field,
                          const std::string& meaning,
                          Check check)
{
    addField(
        command, name, [field](auto& params) -> auto& { return params.*field; }, meaning, check);
}

/// \param access  gives the field of settings
template <typename Access, typename Check>
void FeatureSettings::addField(CLI::App& command,
                               const std::string& name,
                               Access access,
                               const std::string& meaning,
                               Check check)
{
    CLI::Option* const option = command.add_option(name, access(m_given), meaning)
                                    ->default_str(defaultsOf(access))
                                    ->check(check)
                                    ->group("Settings");
    m_copyIfGiven.emplace_back([this, option, access](Parameters& params) {
        if (option->count() > 0) {
            access(params) = access(m_given);
        }
    });
}

void FeatureSettings::addTo(CLI::App& command)
{
    command
        .add_option("--preset",
                    m_preset,
                    "Settings to start from; auto: tims for runs with mobility, orbitrap for "
                    "others, with an "
                    "m/z kernel as wide as the peaks of profile spectra")
        ->capture_default_str()
        ->check(CLI::IsMember({"auto", "orbitrap", "qtof", "tims"}));
    addAcceptance(command);
    addReading(command);
    addMatrices(command);
    addHills(command);
    addPeakSplitter(command);
    addPeakLimits(command);
}

/// What is accepted as a feature.
void FeatureSettings::addAcceptance(CLI::App& command)
{
    const auto fraction = CLI::Range(0.0, 1.0);
    const auto mass = CLI::Range(0.0, 1e7);
    const auto length = CLI::Range(-1, 1'000'000);
    add(command,
        "--min-averagine-score",
        &Parameters::minAveragineScore,
        "Least likeness of a cluster to the averagine pattern",
        fraction);
    add(command, "--min-mono-mass", &Parameters::minMonoMass, "Lowest mass, Da", mass);
    add(command, "--max-mono-mass", &Parameters::maxMonoMass, "Highest mass, Da", mass);
    add(command,
        "--min-isotope-count",
        &Parameters::minIsotopeCount,
        "Fewest isotopes of a cluster; small ions of low charge may have one less",
        CLI::Range(0, 100));
    add(command,
        "--min-hill-length-d1",
        &Parameters::minHillLengthD1,
        "Smallest extent along retention, MS1 scans or frames",
        length);
    add(command,
        "--min-hill-length-d2",
        &Parameters::minHillLengthD2,
        "Smallest extent along mobility, columns",
        length);
    add(command,
        "--relative-frame-noise-floor",
        &Parameters::relativeFrameNoiseFloor,
        "Points up to this multiple of the median are dropped; 0: none",
        CLI::Range(0.0, kLargest));
    add(command,
        "--ppm-tolerance",
        &Parameters::ppmTolerance,
        "Mass tolerance, ppm",
        CLI::Range(0, 100'000));
    add(command,
        "--max-d1-gap",
        &Parameters::maxD1Gap,
        "Largest distance along retention of what belongs together, MS1 scans or frames",
        CLI::Range(0, 1'000'000));
    add(command,
        "--max-d2-gap",
        &Parameters::maxD2Gap,
        "Largest distance along mobility, columns",
        CLI::Range(0, 1'000'000));
    add(command,
        "--min-feature-width",
        &Parameters::minFeatureWidth,
        "Narrowest feature that is matched between samples, min; of no effect on one run",
        CLI::Range(0.0, kLargest));
    add(command,
        "--min-intensity-dynamic-range",
        &Parameters::minIntensityDynamicRange,
        "Least ratio of strongest to weakest member; read by version 0 only",
        CLI::Range(0.0, kLargest));
    add(command,
        "--remove-charge-one-only-features",
        &Parameters::removeChargeOneOnlyFeatures,
        "Drop groups of charge 1 alone between samples; of no effect on one run",
        CLI::Validator());
}

/// What is read, by which finder, and the form of the results.
void FeatureSettings::addReading(CLI::App& command)
{
    command
        .add_option("--feature-finder-version",
                    m_version,
                    "0 scan by scan, 1 runs without mobility, 2 with mobility; by the run if not "
                    "given")
        ->check(CLI::Range(0, 2))
        ->group("Settings");
    command
        .add_option("--network-file-path",
                    m_networkFile,
                    "File of the charge and monoisotope classifiers; the built-in one if not given")
        ->group("Settings");
    add(command,
        "--uncharged-mass-flag",
        &Parameters::unchargedMassFlag,
        "Charges are protons taken up; false: protons given off",
        CLI::Validator());
    add(command,
        "--convert-d1-to-retention-time",
        &Parameters::convertD1ToRetentionTime,
        "Minutes in the .ftrs file; false: numbers of MS1 scans or frames",
        CLI::Validator());
    add(command,
        "--max-points-per-scan",
        &Parameters::maxPointsPerScan,
        "Points of a scan that version 0 keeps",
        CLI::Range(1, kMostPoints));
    add(command,
        "--max-ion-count",
        &Parameters::maxIonCount,
        "Points of a scan that version 1 and --auto keep",
        CLI::Range(1, kMostPoints));
}

/// The matrices of frames and runs.
void FeatureSettings::addMatrices(CLI::App& command)
{
    add(command,
        "--number-of-frames-to-sum",
        &Parameters::numberOfFramesToSum,
        "Frames in a sliding sum; 0: all",
        CLI::Range(0, 1'000'000));
    add(command,
        "--mz-hash-factor",
        &Parameters::mzHashFactor,
        "Bins per Th; version 2 takes 500",
        CLI::Range(1.0, 100'000.0));
    add(command,
        "--d2-hash-factor",
        &Parameters::d2HashFactor,
        "Mobility scans, without mobility MS1 scans, in a column",
        CLI::Range(0.01, 1e6));
}

/// The search for hills.
void FeatureSettings::addHills(CLI::App& command)
{
    const auto fraction = CLI::Range(0.0, 1.0);
    const auto width = CLI::Range(1, 100'000);
    const auto passes = CLI::Range(0, 1000);
    add(command,
        "--hill-limit-ratio-d2",
        &Parameters::hillLimitRatioD2,
        "Relative height at which a hill ends along mobility, without it along retention",
        fraction);
    add(command,
        "--hill-limit-ratio-mz",
        &Parameters::hillLimitRatioMz,
        "Relative height at which a hill ends along m/z",
        fraction);
    add(command,
        "--mz-kernel-width",
        &Parameters::mzKernelWidth,
        "Gaussian along m/z, bins; version 2 takes 35",
        CLI::Range(3, 100'000));
    add(command,
        "--mz-smoothing-passes",
        &Parameters::mzSmoothingPasses,
        "How often it is applied",
        passes);
    add(command,
        "--d2-kernel-width",
        &Parameters::d2KernelWidth,
        "Gaussian along mobility, without it along retention, columns",
        width);
    add(command,
        "--d2-smoothing-passes",
        &Parameters::d2SmoothingPasses,
        "How often it is applied",
        passes);
    add(command,
        "--kernel-sigma",
        &Parameters::kernelSigma,
        "Standard deviation of both, bins and columns",
        CLI::Range(0.0, 1e6));
}

/// Adds options for the fields of a record inside the settings.
/// \param note  ends the meaning of each
template <typename Group>
auto FeatureSettings::memberAdder(CLI::App& command,
                                  Group Parameters::*group,
                                  const std::string& note)
{
    return [this, &command, group, note](const std::string& name,
                                         auto Group::*field,
                                         const std::string& meaning,
                                         const CLI::Validator& check) {
        this->addField(
            command,
            name,
            [ group, field ](auto& params) -> auto& { return params.*group.*field; },
            meaning + note,
            check);
    };
}

/// How version 2 cuts what it has linked along retention.
void FeatureSettings::addPeakSplitter(CLI::App& command)
{
    const auto addTo = memberAdder(command, &Parameters::peakSplitterOptions);
    using Options = XicPeakSplitterOptions;
    const CLI::Range notNegative(0.0, kLargest);
    addTo("--splitting-disabled",
          &Options::splittingDisabled,
          "Do not split the peaks of chromatograms; not read by versions 1 and 2",
          CLI::Validator());
    addTo("--valley-ratio",
          &Options::valleyRatio,
          "Version 2: least height of a piece, relative to the valley before the next higher one",
          notNegative);
    addTo("--noise-factor",
          &Options::noiseFactor,
          "Version 2: least height of a piece above that valley, relative to the noise",
          notNegative);
    addTo("--min-relative-height",
          &Options::minRelativeHeight,
          "Version 2: least height of a piece, relative to the highest",
          CLI::Range(0.0, 1.0));
    addTo("--min-points-per-peak",
          &Options::minPointsPerPeak,
          "Version 2: fewest frames of a piece; a large number keeps features whole",
          CLI::Range(0, 1'000'000));
    addTo("--merge-intensity-ratio",
          &Options::mergeIntensityRatio,
          "Handed on to the targeted finder; of no effect on one run",
          notNegative);
    addTo("--min-skew",
          &Options::minSkew,
          "Handed on to the targeted finder; of no effect on one run",
          notNegative);
}

/// How the limits of a chromatogram's peaks are found.
void FeatureSettings::addPeakLimits(CLI::App& command)
{
    const auto addTo =
        memberAdder(command, &Parameters::baselineOptions, "; not read by versions 1 and 2");
    using Options = XicBaselineLimitsDetectorOptions;
    const CLI::Range notNegative(0.0, kLargest);
    addTo("--min-peak-width", &Options::minPeakWidth, "Narrowest peak, min", notNegative);
    addTo("--ignore-retention-time",
          &Options::ignoreRetentionTime,
          "Look for peaks on the whole trace",
          CLI::Validator());
    addTo("--detection-mode",
          &Options::detectionMode,
          "Look for peaks 0: on the whole trace, 1: around the retention time, 2: by a targeted "
          "finder",
          CLI::Range(0, 2));
    addTo("--time-half-window",
          &Options::timeHalfWindow,
          "Half width of the trace on which limits are looked up, min",
          notNegative);
    addTo("--baseline-half-window",
          &Options::baselineHalfWindow,
          "What is wider than twice this is baseline, min",
          notNegative);
    addTo("--high-noise-factor",
          &Options::highNoiseFactor,
          "Least height of a peak above the baseline, relative to the noise",
          notNegative);
    addTo("--low-noise-factor",
          &Options::lowNoiseFactor,
          "Height above the baseline, relative to the noise, at which a peak ends",
          notNegative);
    addTo("--relative-height",
          &Options::relativeHeight,
          "Height relative to the apex at which a peak ends",
          CLI::Range(0.0, 1.0));
    addTo("--max-gap-points",
          &Options::maxGapPoints,
          "Gaps of so many points of 0 are bridged",
          CLI::Range(0, 1'000'000));
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
    params.featureFinderVersion = m_version.value_or(hasMobility ? 2 : 1);
    if (!m_networkFile.empty()) {
        params.networkFilePath = QString::fromStdString(m_networkFile);
    }
    for (const auto& copy : m_copyIfGiven) {
        copy(params);
    }
    return params;
}

} // namespace zel::tool
