#pragma once

#include "common/stable/Export.h"
#include "ms_feature/records/IsotopeSelector.h"

#include <QString>

namespace zel {

/// The settings of all targeted finders. A plain record that is copied into each finder; every
/// default stands beside its field as `<field>Default`.
struct ZEL_EXPORT MsFeatureFinderSettings
{
    /// Which finder MsFeatureFinderFactory makes.
    enum class Mode : int {
        FixedWidth = 0, ///< MsFeatureFinder
        Prototype = 1,  ///< MsFeatureFinderPrototype
        Adaptive = 2,   ///< MsFeatureFinderSeg
    };

    /// How XICs are cut. Every value but WeightedHarmonicMean stands for a single isotope.
    enum class MultiIsotopeMethod : int {
        SingleIsotope = 0,        ///< one isotope, all ions in one bulk request
        WeightedHarmonicMean = 2, ///< MultiIsotopeXic, ion by ion
    };

    static constexpr Mode modeDefault = Mode::Adaptive;
    static constexpr MultiIsotopeMethod multiIsotopeMethodDefault =
        MultiIsotopeMethod::SingleIsotope;
    static constexpr double whmMinDenominatorConstantDefault = 400.0;
    static constexpr bool whmUseBpiForMinDenominatorDefault = true;
    static constexpr int whmMovingAverageSamplingCountDefault = 3;
    static constexpr double xicMzTolerancePpmDefault = 18.0;
    static constexpr double xicAreaTimeWindowDefault = 2.0;
    static constexpr double xicApexSearchWindowDefault = 2.0;
    static constexpr double prototypeElasticityDefault = 4.0;
    static constexpr double prototypePowerDefault = 6.0;
    static constexpr double adaptiveAucNegligibleRatioDefault = 0.0;
    static constexpr double adaptiveScoreNegligibleRatioDefault = 0.01;
    static constexpr double adaptiveTightenNegligibleRatioDefault = 0.001;
    static constexpr double adaptiveSamplesPerMinuteDefault = 100.0;
    static constexpr double adaptiveSmoothingStDevDefault = 0.1;
    static constexpr double adaptiveMergeIntensityRatioDefault = 0.2;
    static constexpr double adaptiveMinSkewDefault = 0.2;
    static const QString adaptiveHtmlDumpFilenameDefault; ///< ""

    MsFeatureFinderSettings();

    Mode mode = modeDefault;
    MultiIsotopeMethod multiIsotopeMethod = multiIsotopeMethodDefault;

    // With WeightedHarmonicMean only; see MultiIsotopeXic::WHMParams.
    /// The tallest isotope's intensity divided by this is the offset of the mean.
    double whmMinDenominatorConstant = whmMinDenominatorConstantDefault;
    /// Whether the base peak lifts that offset.
    bool whmUseBpiForMinDenominator = whmUseBpiForMinDenominatorDefault;
    /// Width of the moving mean, points.
    int whmMovingAverageSamplingCount = whmMovingAverageSamplingCountDefault;

    /// Half width of the m/z window of an XIC, parts per million.
    double xicMzTolerancePpm = xicMzTolerancePpmDefault;
    /// Half width of the fixed window, and of the window that the prototype finder starts with,
    /// minutes.
    double xicAreaTimeWindow = xicAreaTimeWindowDefault;
    /// How far around a match its apex is searched, minutes.
    double xicApexSearchWindow = xicApexSearchWindowDefault;
    /// Picks the isotope to extract.
    IsotopeSelector isotopeSelector;

    /// Prototype finder: a window this many times `xicAreaTimeWindow` wide scores 0.
    double prototypeElasticity = prototypeElasticityDefault;
    /// Prototype finder: how suddenly the score fades as the window nears that width.
    double prototypePower = prototypePowerDefault;

    // The adaptive finders.
    /// Candidates with less than this share of the greatest area are dropped.
    double adaptiveAucNegligibleRatio = adaptiveAucNegligibleRatioDefault;
    /// The same by score, which is area * number of matches.
    double adaptiveScoreNegligibleRatio = adaptiveScoreNegligibleRatioDefault;
    /// Flanks below this share of a candidate's height are trimmed.
    double adaptiveTightenNegligibleRatio = adaptiveTightenNegligibleRatioDefault;
    /// Density of the regular grid on which candidates are searched.
    double adaptiveSamplesPerMinute = adaptiveSamplesPerMinuteDefault;
    /// Width of the smoothing kernel, minutes.
    double adaptiveSmoothingStDev = adaptiveSmoothingStDevDefault;
    /// MsFeatureFinderSegV2: a boundary between two candidates is no valley when an apex beside it
    /// rises by less than this share of its height.
    double adaptiveMergeIntensityRatio = adaptiveMergeIntensityRatioDefault;
    /// MsFeatureFinderSegV2: an apex stands close to a boundary when it is within this share of its
    /// candidate's duration.
    double adaptiveMinSkew = adaptiveMinSkewDefault;
    /// When not empty, the adaptive finders write a diagram of each ion there.
    QString adaptiveHtmlDumpFilename = adaptiveHtmlDumpFilenameDefault;

    /// The half width of the m/z window at `mz`, Th.
    double mzMargin(double mz) const;

    /// How far an XIC reaches before the first and after the last match, minutes: three times the
    /// larger one of the two time windows.
    double xicTimeWindowToExtract() const;

    /// One line a setting; those of the isotope folding are left out.
    QString toString() const;
};

} // namespace zel
