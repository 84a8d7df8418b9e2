#include "tools/zel/targeted/TargetedOptions.h"

#include <algorithm>

namespace zel::tool {

namespace {

constexpr double kLongestMinutes = 1000.0;

/// With three diagrams of the alignment for each ion, fewer than the 1000 from which on the library
/// would start files of its own.
constexpr int kMaxDiagramIons = 333;

void addInputs(CLI::App& command, TargetedOptions& options)
{
    command.add_option("runs", options.runs, "mzML or mzXML files, plain or gzip-compressed")
        ->required();
    command
        .add_option(
            "--psms",
            options.psms,
            "Spectrum matches: a table (TSV) with the columns sequence, charge, rt (min) "
            "and, if wanted, run, modifications, mz or mass, score; or mzIdentML or pepXML. "
            "May be given several times")
        ->required()
        ->allow_extra_args(false);
    command.add_option("--score",
                       options.score,
                       "Column or term that is the score; \"score\", or the first of a search "
                       "engine, if not given");
    command.add_flag(
        "--any-run", options.anyRun, "Look for each match in every run, whichever run it names");
    addRunSelection(command, options.selection);
    command.add_flag(
        "--profile", options.profile, "Sum profile points where the file has them, not centroids");
    command.add_option(
        "-o,--output", options.output, "Table of features (TSV); standard output if not given");
    command.add_option("--diagrams",
                       options.diagrams,
                       "Page of what the adaptive finders decided (HTML); with several runs also "
                       "NAME.alignment.html");
}

void addXicSettings(CLI::App& command, TargetedOptions& options)
{
    MsFeatureFinderSettings& settings = options.settings;
    command
        .add_option("--ppm,--xic-mz-tolerance-ppm",
                    settings.xicMzTolerancePpm,
                    "Half width of the m/z window, ppm")
        ->check(CLI::Range(1e-3, 1e5));
    command
        .add_option("--xic-area-time-window",
                    settings.xicAreaTimeWindow,
                    "Half width of the window of fixed, and of the first one of prototype, minutes")
        ->check(CLI::Range(1e-3, kLongestMinutes));
    command
        .add_option("--xic-apex-search-window",
                    settings.xicApexSearchWindow,
                    "How far around a match its apex is searched, minutes. Three times the larger "
                    "window is cut around the matches")
        ->check(CLI::Range(1e-3, kLongestMinutes));
    command
        .add_option("--isotope-selector",
                    options.isotopeMasses,
                    "Masses, Da: an ion above the first is cut at isotope 1, above the second at "
                    "isotope 2, ...")
        ->delimiter(',')
        ->allow_extra_args(false);
    command
        .add_option("--multi-isotope-method",
                    options.isotopes,
                    "One isotope, or the weighted harmonic mean of the leading ones")
        ->check(CLI::IsMember({"single", "whm"}));
    command
        .add_option("--whm-min-denominator-constant",
                    settings.whmMinDenominatorConstant,
                    "The tallest isotope over this is the offset of the mean")
        ->check(CLI::PositiveNumber);
    command.add_option("--whm-use-bpi-for-min-denominator",
                       settings.whmUseBpiForMinDenominator,
                       "Whether the base peak lifts that offset");
    command
        .add_option("--whm-moving-average-sampling-count",
                    settings.whmMovingAverageSamplingCount,
                    "Width of the moving mean before folding, points")
        ->check(CLI::Range(1, 10'000));
}

void addPrototypeSettings(CLI::App& command, MsFeatureFinderSettings& settings)
{
    command
        .add_option("--prototype-elasticity",
                    settings.prototypeElasticity,
                    "A window this many times --xic-area-time-window wide scores 0")
        ->check(CLI::PositiveNumber);
    command
        .add_option("--prototype-power",
                    settings.prototypePower,
                    "How suddenly the score fades near that width")
        ->check(CLI::PositiveNumber);
}

void addAdaptiveSettings(CLI::App& command, TargetedOptions& options)
{
    MsFeatureFinderSettings& settings = options.settings;
    const auto ratio = CLI::Range(0.0, 1.0);
    command
        .add_option("--adaptive-auc-negligible-ratio",
                    settings.adaptiveAucNegligibleRatio,
                    "Peaks below this share of the largest area are dropped")
        ->check(ratio);
    command
        .add_option("--adaptive-score-negligible-ratio",
                    settings.adaptiveScoreNegligibleRatio,
                    "The same by area times number of matches")
        ->check(ratio);
    command
        .add_option("--adaptive-tighten-negligible-ratio",
                    settings.adaptiveTightenNegligibleRatio,
                    "Flanks below this share of the height are trimmed")
        ->check(ratio);
    command
        .add_option("--adaptive-samples-per-minute",
                    settings.adaptiveSamplesPerMinute,
                    "Density of the grid on which peaks are searched; adaptive uses at most 40, "
                    "but scales the smoothing by the full number")
        ->check(CLI::Range(1.0, 10'000.0));
    command
        .add_option("--adaptive-smoothing-st-dev",
                    settings.adaptiveSmoothingStDev,
                    "Width of the smoothing kernel, minutes at the full number of samples")
        ->check(CLI::Range(0.0, 10.0));
    command
        .add_option("--adaptive-merge-intensity-ratio",
                    settings.adaptiveMergeIntensityRatio,
                    "adaptive-v2: a valley is none where an apex beside it rises by less than this "
                    "share of its height; 0: nothing is merged")
        ->check(CLI::NonNegativeNumber);
    command
        .add_option("--adaptive-min-skew",
                    settings.adaptiveMinSkew,
                    "adaptive-v2: and an apex lies within this share of its peak's width from it")
        ->check(ratio);
    command
        .add_option("--adaptive-kernel-filter-width",
                    options.kernelFilterWidth,
                    "adaptive-v2: full width of the smoothing filter, minutes; 0: as "
                    "--adaptive-smoothing-st-dev says")
        ->check(CLI::Range(0.0, 10.0));
    command.add_option("--adaptive-merge-before-scoring",
                       options.mergeBeforeScoring,
                       "adaptive-v2: merge before matches are given to peaks, not at the end");
}

void addAlignSettings(CLI::App& command, TargetedOptions& options)
{
    command
        .add_option("--align",
                    options.align,
                    "Which ions are aligned across runs: none, those with different numbers of "
                    "peaks, or all")
        ->check(CLI::IsMember({"disabled", "different-topology", "full"}));
    command
        .add_option("--correlation-threshold",
                    options.alignment.correlationThreshold,
                    "Least correlation of the aligned chromatograms")
        ->check(CLI::Range(-1.0, 1.0));
    command.add_option("--power",
                       options.alignment.power,
                       "Shape of the penalty on shifts: 1 - |share of the greatest shift|^power");
}

} // namespace

std::vector<double> defaultIsotopeMasses()
{
    const QList<double> masses = IsotopeSelector().isotopeMasses();
    return {masses.cbegin(), masses.cend()};
}

void addTargetedOptions(CLI::App& command, TargetedOptions& options)
{
    addInputs(command, options);
    // From here on --help tells the defaults.
    command.option_defaults()->always_capture_default();
    command
        .add_option("--max-diagram-ions",
                    options.maxDiagramIons,
                    "Most ions that are drawn, evenly chosen from all")
        ->check(CLI::Range(1, kMaxDiagramIons));
    command.add_option("--mode", options.mode, "How a peak is found on its chromatogram")
        ->check(CLI::IsMember({"fixed", "prototype", "adaptive", "adaptive-v2"}));
    command.option_defaults()->group("Chromatograms");
    addXicSettings(command, options);
    command.option_defaults()->group("Mode prototype");
    addPrototypeSettings(command, options.settings);
    command.option_defaults()->group("Modes adaptive and adaptive-v2");
    addAdaptiveSettings(command, options);
    command.option_defaults()->group("Alignment across runs");
    addAlignSettings(command, options);
}

bool isAdaptive(const TargetedOptions& options)
{
    return options.mode == "adaptive" || options.mode == "adaptive-v2";
}

MsFeatureFinderSettings finderSettings(const TargetedOptions& options)
{
    using Settings = MsFeatureFinderSettings;
    Settings settings = options.settings;
    settings.mode = options.mode == "fixed"       ? Settings::Mode::FixedWidth
                    : options.mode == "prototype" ? Settings::Mode::Prototype
                                                  : Settings::Mode::Adaptive;
    settings.multiIsotopeMethod = options.isotopes == "whm"
                                      ? Settings::MultiIsotopeMethod::WeightedHarmonicMean
                                      : Settings::MultiIsotopeMethod::SingleIsotope;
    settings.isotopeSelector.setIsotopeMasses(
        QList<double>(options.isotopeMasses.cbegin(), options.isotopeMasses.cend()));
    return settings;
}

Ms1FeatureAlignSettings alignmentSettings(const TargetedOptions& options)
{
    using Settings = Ms1FeatureAlignSettings;
    Settings settings = options.alignment;
    settings.featureFinderSettings = finderSettings(options);
    settings.mode = options.align == "disabled" ? Settings::Mode::Disabled
                    : options.align == "full"   ? Settings::Mode::Full
                                                : Settings::Mode::DifferentTopologyOnly;
    return settings;
}

} // namespace zel::tool
