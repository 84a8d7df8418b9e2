#include "ms_feature/records/MsFeatureFinderSettingTable.h"

namespace zel {

namespace {

using Record = MsFeatureFinderSettings;

constexpr const char* kXics = "Chromatograms";
constexpr const char* kPrototype = "Mode prototype";
constexpr const char* kAdaptive = "Modes adaptive and adaptive-v2";

constexpr const char* kReaders[] = {"fixed", "prototype", "adaptive", "adaptive-v2", "whm"};
constexpr SettingReaders kBothAdaptive = kAdaptiveFinder | kAdaptiveV2Finder;
constexpr SettingReaders kEveryFinder = kFixedWidthFinder | kPrototypeFinder | kBothAdaptive;

constexpr SettingChoice kModes[] = {{"fixed", static_cast<int>(Record::Mode::FixedWidth)},
                                    {"prototype", static_cast<int>(Record::Mode::Prototype)},
                                    {"adaptive", static_cast<int>(Record::Mode::Adaptive)}};
constexpr SettingChoice kFoldings[] = {
    {"single", static_cast<int>(Record::MultiIsotopeMethod::SingleIsotope)},
    {"whm", static_cast<int>(Record::MultiIsotopeMethod::WeightedHarmonicMean)}};

constexpr SettingLimits kFraction = {0, 1};
constexpr SettingLimits kPositive = {.lowest = SettingLimits::kAboveZero};
constexpr SettingLimits kMinutes = {1e-3, 1000};
constexpr SettingLimits kFilterMinutes = {0, 10};

constexpr Setting<Record> kSettings[] = {
    {ZEL_ENUM_SETTING(mode),
     .group = kXics,
     .meaning = "How a peak is found on its chromatogram",
     .limits = {.choices = kModes},
     .readBy = kEveryFinder},
    {ZEL_ENUM_SETTING(multiIsotopeMethod),
     .group = kXics,
     .meaning = "One isotope, or the weighted harmonic mean of the leading ones",
     .limits = {.choices = kFoldings},
     .readBy = kEveryFinder},
    {ZEL_SETTING(whmMinDenominatorConstant),
     .group = kXics,
     .meaning = "The tallest isotope over this is the offset of the mean",
     .limits = kPositive,
     .readBy = kHarmonicMean},
    {ZEL_SETTING(whmUseBpiForMinDenominator),
     .group = kXics,
     .meaning = "Whether the base peak lifts that offset",
     .readBy = kHarmonicMean},
    {ZEL_SETTING(whmMovingAverageSamplingCount),
     .group = kXics,
     .meaning = "Width of the moving mean before folding",
     .unit = "points",
     .limits = {1, 10'000},
     .readBy = kHarmonicMean},
    {ZEL_SETTING(xicMzTolerancePpm),
     .group = kXics,
     .meaning = "Half width of the m/z window",
     .unit = "ppm",
     .limits = {1e-3, 1e5},
     .readBy = kEveryFinder,
     .option = "ppm,xic-mz-tolerance-ppm"},
    {ZEL_SETTING(xicAreaTimeWindow),
     .group = kXics,
     .meaning = "Half width of the window of fixed, and of the first one of prototype",
     .unit = "min",
     .limits = kMinutes,
     .readBy = kEveryFinder},
    {ZEL_SETTING(xicApexSearchWindow),
     .group = kXics,
     .meaning = "How far around a match its apex is searched. Three times the larger window is cut "
                "around the matches",
     .unit = "min",
     .limits = kMinutes,
     .readBy = kEveryFinder},
    {.name = "isotopeSelector",
     .field = SettingProperty<Record, QList<double>>{
         [](const Record& record) { return record.isotopeSelector.isotopeMasses(); },
         [](Record& record, const QList<double>& masses) {
             record.isotopeSelector.setIsotopeMasses(masses);
         }},
     .group = kXics,
     .meaning = "Ascending masses: an ion above the first is cut at isotope 1, above the second at "
                "isotope 2, ...",
     .unit = "Da",
     .limits = kPositive,
     .readBy = kEveryFinder},
    {ZEL_SETTING(prototypeElasticity),
     .group = kPrototype,
     .meaning = "A window this many times --xic-area-time-window wide scores 0",
     .limits = kPositive,
     .readBy = kPrototypeFinder},
    {ZEL_SETTING(prototypePower),
     .group = kPrototype,
     .meaning = "How suddenly the score fades near that width",
     .limits = kPositive,
     .readBy = kPrototypeFinder},
    {ZEL_SETTING(adaptiveAucNegligibleRatio),
     .group = kAdaptive,
     .meaning = "Peaks below this share of the largest area are dropped",
     .limits = kFraction,
     .readBy = kBothAdaptive},
    {ZEL_SETTING(adaptiveScoreNegligibleRatio),
     .group = kAdaptive,
     .meaning = "The same by area times number of matches",
     .limits = kFraction,
     .readBy = kBothAdaptive},
    {ZEL_SETTING(adaptiveTightenNegligibleRatio),
     .group = kAdaptive,
     .meaning = "Flanks below this share of the height are trimmed",
     .limits = kFraction,
     .readBy = kBothAdaptive},
    {ZEL_SETTING(adaptiveSamplesPerMinute),
     .group = kAdaptive,
     .meaning = "Density of the grid on which peaks are searched; adaptive uses at most 40, but "
                "scales the smoothing by the full number",
     .unit = "per min",
     .limits = {1, 10'000},
     .readBy = kBothAdaptive},
    {ZEL_SETTING(adaptiveSmoothingStDev),
     .group = kAdaptive,
     .meaning = "Width of the smoothing kernel at the full number of samples",
     .unit = "min",
     .limits = kFilterMinutes,
     .readBy = kBothAdaptive},
    {ZEL_SETTING(adaptiveMergeIntensityRatio),
     .group = kAdaptive,
     .meaning = "adaptive-v2: a valley is none where an apex beside it rises by less than this "
                "share of its height; 0: nothing is merged",
     .limits = {.lowest = 0},
     .readBy = kAdaptiveV2Finder},
    {ZEL_SETTING(adaptiveMinSkew),
     .group = kAdaptive,
     .meaning = "adaptive-v2: and an apex lies within this share of its peak's width from it",
     .limits = kFraction,
     .readBy = kAdaptiveV2Finder},
    {ZEL_SETTING(adaptiveHtmlDumpFilename),
     .group = kAdaptive,
     .meaning = "Page of diagrams of what the finder decided (HTML)",
     .readBy = kBothAdaptive,
     .option = ""},
};

} // namespace

SettingTable<MsFeatureFinderSettings> msFeatureFinderSettings()
{
    return {kSettings, kReaders};
}

} // namespace zel
