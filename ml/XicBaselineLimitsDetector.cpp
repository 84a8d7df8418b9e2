#include "ml/XicBaselineLimitsDetector.h"

#include "common/stable/MathUtils.h"
#include "ml/XicSignal_p.h"

#include <algorithm>
#include <vector>

namespace zel {

namespace {

constexpr std::ptrdiff_t kMinPositiveSamples = 3;
/// The baseline follows nothing narrower than this, whatever the sampling.
constexpr double kMinBaselineHalfWindowSamples = 8.0;
/// How the smoothing before the baseline is found follows its half window.
constexpr double kBaselineWindowPerSigma = 8.0;
constexpr int kAroundRetentionTime = 1;

/// The median of the times between samples; 0 when there is none.
double medianStep(const QList<QPointF>& xic)
{
    std::vector<double> steps;
    for (qsizetype i = 1; i < xic.size(); ++i) {
        steps.push_back(xic[i].x() - xic[i - 1].x());
    }
    return MathUtils::median(std::move(steps));
}

/// Samples from `first` to `last`, both included.
struct Run
{
    std::size_t first;
    std::size_t last;
};

/// The runs above `low` that hold a sample above `high`.
std::vector<Run> runsAbove(const std::vector<double>& heights, double low, double high)
{
    std::vector<Run> runs;
    for (std::size_t i = 0; i < heights.size(); ++i) {
        if (heights[i] <= low) {
            continue;
        }
        Run run{i, i};
        double highest = heights[i];
        while (run.last + 1 < heights.size() && heights[run.last + 1] > low) {
            highest = std::max(highest, heights[++run.last]);
        }
        if (highest > high) {
            runs.push_back(run);
        }
        i = run.last;
    }
    return runs;
}

/// Whether the apex lies inside the trace: a run that touches an end of it must have fallen again
/// by `least` there, or it is a slope.
bool hasApexInside(const Run& run, const std::vector<double>& heights, double least)
{
    const auto begin = heights.begin() + static_cast<std::ptrdiff_t>(run.first);
    const auto end = heights.begin() + static_cast<std::ptrdiff_t>(run.last) + 1;
    const double apex = *std::max_element(begin, end);
    return (run.first > 0 || apex - heights.front() >= least) &&
           (run.last + 1 < heights.size() || apex - heights.back() >= least);
}

/// Moves both ends inwards past samples below a share of the highest one.
Run trimmed(Run run, const std::vector<double>& heights, double share)
{
    const auto begin = heights.begin();
    const auto end = begin + static_cast<std::ptrdiff_t>(run.last) + 1;
    const double least =
        share * *std::max_element(begin + static_cast<std::ptrdiff_t>(run.first), end);
    while (run.first < run.last && heights[run.first] < least) {
        ++run.first;
    }
    while (run.last > run.first && heights[run.last] < least) {
        --run.last;
    }
    return run;
}

/// Moves both ends outwards as long as the trace falls: down to the foot of the peak, which lies
/// below what stands out of the noise.
Run downToFoot(Run run, const std::vector<double>& heights)
{
    while (run.first > 0 && heights[run.first - 1] < heights[run.first]) {
        --run.first;
    }
    while (run.last + 1 < heights.size() && heights[run.last + 1] < heights[run.last]) {
        ++run.last;
    }
    return run;
}

double distanceTo(const Interval<double>& peak, double time)
{
    return std::max({peak.start - time, time - peak.end, 0.0});
}

} // namespace

class XicBaselineLimitsDetector::Private
{
public:
    XicBaselineLimitsDetectorOptions options;

    std::vector<double> aboveBaseline(const XicSignal& signal, double step) const
    {
        const auto sampleCount = static_cast<double>(signal.raw.size());
        const double wanted = step > 0.0 ? options.baselineHalfWindow / step : sampleCount;
        const double halfWindow =
            std::clamp(wanted, kMinBaselineHalfWindowSamples, sampleCount + 8.0);
        // Of a trace as smooth as that the clipping leaves no deep troughs of noise to lie in,
        // while a peak stays narrower than the window.
        const std::vector<double> baseline =
            snipBaseline(gaussianSmoothed(signal.raw, halfWindow / kBaselineWindowPerSigma),
                         static_cast<std::size_t>(halfWindow));
        std::vector<double> heights(signal.smoothed.size());
        std::transform(signal.smoothed.begin(),
                       signal.smoothed.end(),
                       baseline.begin(),
                       heights.begin(),
                       std::minus<>());
        return heights;
    }
};

XicBaselineLimitsDetector::XicBaselineLimitsDetector()
    : m_private(std::make_unique<Private>())
{}

XicBaselineLimitsDetector::~XicBaselineLimitsDetector() = default;

Error XicBaselineLimitsDetector::init(const XicBaselineLimitsDetectorOptions& options)
{
    if (!isSize(options.baselineHalfWindow) || !isSize(options.highNoiseFactor) ||
        !isSize(options.lowNoiseFactor) || !isSize(options.relativeHeight) ||
        options.maxGapPoints < 0 || !isSize(options.minPeakWidth)) {
        ZEL_RETURN_ERROR(kBadParameterError,
                         "Windows and factors of peak detection must be finite and not negative");
    }
    m_private->options = options;
    return kNoError;
}

Result<QList<Interval<double>>> XicBaselineLimitsDetector::integrateXIC(const QList<QPointF>& xic)
{
    const XicBaselineLimitsDetectorOptions& options = m_private->options;
    ZEL_ASSIGN_OR_RETURN(const XicSignal signal, xicSignal(xic, options.maxGapPoints));
    QList<Interval<double>> peaks;
    if (signal.positiveCount() < kMinPositiveSamples) {
        return peaks;
    }
    const std::vector<double> heights = m_private->aboveBaseline(signal, medianStep(xic));
    for (const Run& run : runsAbove(heights,
                                    options.lowNoiseFactor * signal.noise,
                                    options.highNoiseFactor * signal.noise)) {
        if (!hasApexInside(run, heights, options.lowNoiseFactor * signal.noise)) {
            continue;
        }
        const Run kept = trimmed(downToFoot(run, heights), heights, options.relativeHeight);
        peaks.append({xic[static_cast<qsizetype>(kept.first)].x(),
                      xic[static_cast<qsizetype>(kept.last)].x()});
    }
    return peaks;
}

Result<QList<Interval<double>>> XicBaselineLimitsDetector::integrateXIC(const QList<QPointF>& xic,
                                                                        double retentionTime,
                                                                        int mode)
{
    if (mode != kAroundRetentionTime) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("Peaks are detected around a time by mode 1, not %1").arg(mode));
    }
    ZEL_ASSIGN_OR_RETURN(const QList<Interval<double>> all, integrateXIC(xic));
    const double oneSample = medianStep(xic);
    QList<Interval<double>> around;
    const Interval<double>* nearest = nullptr;
    for (const Interval<double>& peak : all) {
        const double distance = distanceTo(peak, retentionTime);
        if (distance <= oneSample) {
            around.append(peak);
        }
        if (nearest == nullptr || distance < distanceTo(*nearest, retentionTime)) {
            nearest = &peak;
        }
    }
    if (around.isEmpty() && nearest != nullptr &&
        distanceTo(*nearest, retentionTime) <= m_private->options.minPeakWidth) {
        around.append(*nearest);
    }
    return around;
}

} // namespace zel
