#include "tools/zel/targeted/TargetedOptions.h"

namespace zel::tool {

namespace {

constexpr const char* kAdaptiveGroup = "Modes adaptive and adaptive-v2";

/// With three diagrams of the alignment for each ion, fewer than the 1000 from which on the library
/// would start files of its own.
constexpr int kMaxDiagramIons = 333;

void addInputs(CLI::App& command, TargetedOptions& options)
{
    command.add_option("runs", options.runs, "mzML or mzXML files, plain or gzip-compressed")
        ->required()
        ->type_name("FILE");
    command
        .add_option(
            "--psms",
            options.psms,
            "Spectrum matches: a table (TSV) with the columns sequence, charge, rt (min) "
            "and, if wanted, run, modifications, mz or mass, score; or mzIdentML or pepXML. "
            "May be given several times")
        ->required()
        ->allow_extra_args(false)
        ->type_name("FILE");
    command.add_option("--score",
                       options.score,
                       "Column or term that is the score; \"score\", or the first of a search "
                       "engine, if not given");
    command.add_flag(
        "--any-run", options.anyRun, "Look for each match in every run, whichever run it names");
    addRunSelection(command, options.selection);
    command.add_flag(
        "--profile", options.profile, "Sum profile points where the file has them, not centroids");
    command
        .add_option(
            "-o,--output", options.output, "Table of features (TSV); standard output if not given")
        ->type_name("FILE");
    command
        .add_option("--diagrams",
                    options.diagrams,
                    "Page of what the adaptive finders decided (HTML); with several runs also "
                    "NAME.alignment.html")
        ->type_name("FILE");
    command
        .add_option("--max-diagram-ions",
                    options.maxDiagramIons,
                    "Most ions that are drawn, evenly chosen from all")
        ->capture_default_str()
        ->check(isWholeNumber(1, kMaxDiagramIons));
}

/// What adaptive-v2 takes beside the settings.
void addAdaptiveV2Arguments(CLI::App& command, TargetedOptions& options)
{
    command
        .add_option("--adaptive-kernel-filter-width",
                    options.kernelFilterWidth,
                    "adaptive-v2: full width of the smoothing filter, min; 0: as "
                    "--adaptive-smoothing-st-dev says")
        ->capture_default_str()
        ->check(isNumber({0, 10}))
        ->group(kAdaptiveGroup);
    command
        .add_option("--adaptive-merge-before-scoring",
                    options.mergeBeforeScoring,
                    "adaptive-v2: merge before matches are given to peaks, not at the end")
        ->capture_default_str()
        ->check(isTruth())
        ->group(kAdaptiveGroup);
}

} // namespace

void addTargetedOptions(CLI::App& command, TargetedOptions& options)
{
    constexpr SettingReaders any = ~SettingReaders(0);
    addInputs(command, options);
    command.add_option("--mode", options.mode, "How a peak is found on its chromatogram")
        ->capture_default_str()
        ->check(isOneOf({"fixed", "prototype", "adaptive", "adaptive-v2"}))
        ->group("Chromatograms");
    options.finderOptions.addTo(command, msFeatureFinderSettings(), any);
    addAdaptiveV2Arguments(command, options);
    options.alignmentOptions.addTo(command, ms1FeatureAlignSettings(), any);
}

bool isAdaptive(const TargetedOptions& options)
{
    return options.mode == "adaptive" || options.mode == "adaptive-v2";
}

MsFeatureFinderSettings finderSettings(const TargetedOptions& options)
{
    using Mode = MsFeatureFinderSettings::Mode;
    MsFeatureFinderSettings settings;
    options.finderOptions.copyGiven(&settings);
    settings.mode = options.mode == "fixed"       ? Mode::FixedWidth
                    : options.mode == "prototype" ? Mode::Prototype
                                                  : Mode::Adaptive;
    return settings;
}

Ms1FeatureAlignSettings alignmentSettings(const TargetedOptions& options)
{
    Ms1FeatureAlignSettings settings;
    options.alignmentOptions.copyGiven(&settings);
    settings.featureFinderSettings = finderSettings(options);
    return settings;
}

} // namespace zel::tool
