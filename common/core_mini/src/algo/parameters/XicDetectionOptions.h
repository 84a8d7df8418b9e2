#pragma once

namespace zel {

/// How the limits of the peaks of an XIC are found: see ml/XicBaselineLimitsDetector.h for the
/// method that the later fields steer. Times are in the unit of the trace, minutes by rule.
struct XicBaselineLimitsDetectorOptions
{
    /// Peaks narrower than this are not kept, minutes.
    double minPeakWidth = 0.05;
    /// With `detectionMode` 1, or a mode 2 that has no finder: detect on the whole trace.
    bool ignoreRetentionTime = false;
    /// 0: the whole trace; 1: around the retention time; 2: by a targeted MS1 finder.
    int detectionMode = 1;
    /// Half width of the XIC that the limits of an untargeted feature are looked up on, minutes.
    double timeHalfWindow = 1.5;

    /// What is wider than twice this is baseline, not a peak; minutes, but at least 8 samples.
    double baselineHalfWindow = 0.75;
    /// A peak holds a point this many times the noise above the baseline. Larger: fewer false
    /// peaks, but weak ones are missed.
    double highNoiseFactor = 5.0;
    /// A peak ends where it falls to this many times the noise above the baseline.
    double lowNoiseFactor = 1.5;
    /// A peak ends where it falls to this share of its apex, too.
    double relativeHeight = 0.01;
    /// Gaps of at most this many samples of 0 between signal are bridged by a line.
    int maxGapPoints = 2;
};

/// How a peak is split at its valleys: see ml/XicPeakSplitter.h.
struct XicPeakSplitterOptions
{
    /// No splitter is run.
    bool splittingDisabled = false;
    /// Handed on to the targeted finder: see MsFeatureFinderSettings::adaptiveMergeIntensityRatio.
    double mergeIntensityRatio = 0.2;
    /// Handed on to the targeted finder: see MsFeatureFinderSettings::adaptiveMinSkew.
    double minSkew = 0.2;

    /// A maximum of its own stands this many times as high as the valley to the next higher one.
    double valleyRatio = 1.3;
    /// ... and this many times the noise above that valley.
    double noiseFactor = 3.0;
    /// ... and has at least this share of the height of the peak's tallest maximum.
    double minRelativeHeight = 0.01;
    /// Pieces with fewer samples are not cut off.
    int minPointsPerPeak = 3;
};

} // namespace zel
