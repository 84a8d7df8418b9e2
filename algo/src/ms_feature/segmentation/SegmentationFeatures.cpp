#include "common/stable/SharedNumbers.h"
#include "ms_feature/segmentation/MsFeatureFinderStage1.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"

#include <algorithm>
#include <cmath>

namespace zel::segmentation {

namespace {

/// How far the plot at `time` lies from the height of the apex, as a share of itself; infinite
/// where the plot has no height.
double relativeRise(const PlotBase& plot, const Feature& feature, double time)
{
    return std::abs(feature.apex().y() / plot.evaluate(time, 1, 0) - 1.0);
}

/// Whether the boundary between two neighbours is no real valley.
bool belongTogether(const PlotBase& plot,
                    double intensityRatio,
                    double minSkew,
                    const Feature& left,
                    const Feature& right)
{
    constexpr double greatestGap = 0.01; // minutes
    const double leftEnd = left.timeInterval().end;
    const double rightStart = right.timeInterval().start;
    const double leftSkew = (leftEnd - left.apex().x()) / left.duration();
    const double rightSkew = (right.apex().x() - rightStart) / right.duration();
    return std::abs(leftEnd - rightStart) < greatestGap &&
           (relativeRise(plot, left, leftEnd) < intensityRatio ||
            relativeRise(plot, right, rightStart) < intensityRatio) &&
           (leftSkew <= minSkew || rightSkew <= minSkew);
}

/// The highest place of the plot in the interval: a point, or, in an interval between two
/// neighbouring points, one of its ends.
QPointF highestPlace(const PlotBase& plot, const Interval<double>& span)
{
    QPointF highest;
    if (plot.getMinMaxPoints_slow(span.start, span.end, nullptr, &highest)) {
        return highest;
    }
    const QPointF start(span.start, plot.evaluate(span.start, 1, 0));
    const QPointF end(span.end, plot.evaluate(span.end, 1, 0));
    return end.y() > start.y() ? end : start;
}

} // namespace

Result<Feature> measured(const PlotBase& plot, const Interval<double>& span, const QPointF& apex)
{
    Error e;
    const double auc =
        plot.computeAreaNoUnitConversion(span.start, span.end, true, ComputeAreaTrapezoid);
    Interval<double> halfMax;
    ZEL_RETURN_IF_ERROR(MsFeatureFinderStage1::findHalfMaxRange(
        plot, apex, span.start, span.end, &halfMax.start, &halfMax.end));
    return Feature(span, auc, apex, halfMax);
}

Result<std::vector<Feature>> filterByShare(const std::vector<Feature>& features,
                                           double (Feature::*value)() const,
                                           double ratio)
{
    if (features.size() == 1) {
        return features;
    }
    double greatest = features.empty() ? 0.0 : (features.front().*value)();
    for (const Feature& feature : features) {
        greatest = std::max(greatest, (feature.*value)());
    }
    std::vector<Feature> kept;
    std::ranges::copy_if(features, std::back_inserter(kept), [=](const Feature& feature) {
        const double own = (feature.*value)();
        return std::abs(own) > kNegligible && own >= greatest * ratio;
    });
    if (kept.empty()) {
        ZEL_RETURN_ERROR(
            kError, QStringLiteral("All of %1 candidates are negligible").arg(features.size()));
    }
    return kept;
}

Result<std::vector<Feature>> filterByDistance(const std::vector<Feature>& features, double window)
{
    if (features.empty()) {
        ZEL_RETURN_ERROR(kError, "There is no candidate to choose from");
    }
    const Feature& strongest = *std::ranges::max_element(features, {}, &Feature::auc);
    const double center = strongest.apex().x();
    std::vector<Feature> kept;
    std::ranges::copy_if(features, std::back_inserter(kept), [=](const Feature& feature) {
        const Interval<double>& span = feature.timeInterval();
        return std::max(std::abs(center - span.end), std::abs(center - span.start)) <= window;
    });
    if (kept.empty()) {
        kept.push_back(strongest);
    }
    return kept;
}

Error nearestPointIndex(const PlotBase& plot, double time, int* index)
{
    const QList<QPointF>& points = plot.getPointList();
    if (points.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError, "A plot without points has none near a time");
    }
    const auto notBefore = std::ranges::lower_bound(points, time, {}, &QPointF::x);
    qsizetype nearest = std::max<qsizetype>(notBefore - points.cbegin() - 1, 0);
    const bool nextIsNearer =
        notBefore != points.cend() && nearest + 1 < points.size() &&
        std::abs(points[nearest].x() - time) > std::abs(points[nearest + 1].x() - time);
    *index = static_cast<int>(nextIsNearer ? nearest + 1 : nearest);
    return kNoError;
}

Error tightenFeature(const PlotBase& plot, double ratio, Feature* feature)
{
    Error e;
    int first = 0;
    int last = 0;
    Interval<double>& span = feature->timeInterval();
    ZEL_RETURN_IF_ERROR(nearestPointIndex(plot, span.start, &first));
    ZEL_RETURN_IF_ERROR(nearestPointIndex(plot, span.end, &last));
    if (first == last) {
        return e;
    }
    if (first > last) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("A candidate starts at %1 min and ends at %2 min")
                             .arg(span.start)
                             .arg(span.end));
    }
    const QList<QPointF>& points = plot.getPointList();
    QPointF highest;
    plot.getMinMaxPoints_slow(points[first].x(), points[last].x(), nullptr, &highest);
    const double level = highest.y() * ratio;
    // Some point reaches the level, as long as it is a share of a positive height.
    while (first < last && points[first].y() < level) {
        ++first;
    }
    while (last > first && points[last].y() < level) {
        --last;
    }
    if (first > 0 && points[first].y() - points[first - 1].y() > level) {
        --first;
    }
    if (last + 1 < points.size() && points[last].y() - points[last + 1].y() > level) {
        ++last;
    }
    span = {points[first].x(), points[last].x()};
    return e;
}

void removeOverlaps(const PlotBase& plot, std::vector<Feature>* features)
{
    for (std::size_t i = 0; i + 1 < features->size(); ++i) {
        double& end = (*features)[i].timeInterval().end;
        double& nextStart = (*features)[i + 1].timeInterval().start;
        if (!(end > nextStart)) {
            continue;
        }
        if (plot.evaluate(nextStart, 1, 0) > plot.evaluate(end, 1, 0)) {
            nextStart = end;
        } else {
            end = nextStart;
        }
    }
}

Error mergeContiguousFeatures(const PlotBase& plot,
                              double intensityRatio,
                              double minSkew,
                              std::vector<Feature>* features)
{
    Error e;
    if (features->size() < 2 || intensityRatio <= 0.0) {
        return e;
    }
    std::vector<Interval<double>> spans = {features->front().timeInterval()};
    for (std::size_t i = 1; i < features->size(); ++i) {
        const Feature& right = (*features)[i];
        if (belongTogether(plot, intensityRatio, minSkew, (*features)[i - 1], right)) {
            spans.back().end = right.timeInterval().end;
        } else {
            spans.push_back(right.timeInterval());
        }
    }
    std::vector<Feature> merged;
    for (const Interval<double>& span : spans) {
        ZEL_ASSIGN_OR_RETURN(const Feature feature, measured(plot, span, highestPlace(plot, span)));
        if (feature.auc() > 0.0) {
            merged.push_back(feature);
        }
    }
    *features = std::move(merged);
    return e;
}

void distributePSMToFeatures(const QList<PeptideSpectrumMatch>& psms,
                             std::vector<Feature>* features)
{
    if (features->empty()) {
        return;
    }
    for (const PeptideSpectrumMatch& psm : psms) {
        const double time = psm.scanTimeMinutes();
        std::min_element(features->begin(),
                         features->end(),
                         [time](const Feature& a, const Feature& b) {
                             return a.distance(time) < b.distance(time);
                         })
            ->addPSM(psm);
    }
}

Ms1Feature assembleFeature(const std::vector<Feature>& features, const PlotBase& xic)
{
    QList<ApexInterval> intervals;
    for (const Feature& feature : features) {
        intervals.append(ApexInterval(feature.timeInterval(),
                                      feature.FWHM(),
                                      feature.apex(),
                                      0.0,
                                      feature.apexAvaragineCorrelation()));
    }
    Ms1Feature assembled;
    assembled.setTimeIntervalList(intervals);
    assembled.setXicPlot(xic);
    return assembled;
}

} // namespace zel::segmentation
