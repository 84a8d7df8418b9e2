#include "ms_feature/finders/MsFeatureFinderPrototype.h"

#include "ms_feature/finders/PrototypeWindow_p.h"
#include "ms_feature/segmentation/MsFeatureFinderStage1.h"

#include <algorithm>
#include <cmath>
#include <tuple>

namespace zel {

namespace {

/// Two samples a minute, at least 250 and at most 500.
int sampleCount(double spanMinutes)
{
    return static_cast<int>(std::max(250.0, std::min(2.0 * spanMinutes, 500.0)));
}

} // namespace

MsFeatureFinderPrototype::MsFeatureFinderPrototype(const MsFeatureFinderSettings& settings)
    : MsFeatureFinderBase(settings)
{}

MsFeatureFinderPrototype::~MsFeatureFinderPrototype() = default;

Result<std::optional<Ms1Feature>> MsFeatureFinderPrototype::findFeature(
    const QList<PeptideSpectrumMatch>& /*psms*/, const PlotBase& xic) const
{
    Error e;
    if (xic.getPointListSize() == 0) {
        ZEL_RETURN_ERROR(kError, "An XIC without points has no feature");
    }
    const double firstTime = firstPSM().scanTimeMinutes();
    const double lastTime = lastPSM().scanTimeMinutes();
    const double firstX = xic.getPointList().constFirst().x();
    const double lastX = xic.getPointList().constLast().x();
    QPointF lowest;
    QPointF highest;
    xic.getMinMaxPoints_slow(firstTime, lastTime, &lowest, &highest);

    const int count = sampleCount(lastX - firstX);
    const double rate = count / (lastX - firstX);
    QList<QPointF> curve;
    ZEL_RETURN_IF_ERROR(resamplePlot(xic, &curve, count, firstX, lastX));
    QPointF apex;
    std::ignore = findApex(curve, firstTime, lastTime, &apex); // else the apex stays (0, 0)
    ZEL_RETURN_IF_ERROR(preintegrate(&curve));
    QPointF range;
    std::ignore = optimize(curve, rate, firstX, highest.x(), &range); // there are enough points

    double left = 0.0;
    double right = 0.0;
    ZEL_RETURN_IF_ERROR(
        MsFeatureFinderStage1::findHalfMaxRange(xic, apex, range.x(), range.y(), &left, &right));
    Ms1Feature feature;
    feature.setTimeInterval(
        ApexInterval({range.x(), range.y()}, std::abs(right - left), apex, 0.0, 0.0));
    return std::optional<Ms1Feature>(feature);
}

double MsFeatureFinderPrototype::XicWindowScore(double start, double end) const
{
    return prototype::windowScore(settings(), start, end);
}

double MsFeatureFinderPrototype::calculateXICIntervalScore(const QList<QPointF>& points,
                                                           const QPointF& range)
{
    return prototype::intervalScore(settings(), points, range);
}

double MsFeatureFinderPrototype::calculateXICIntervalScorePreint(const QList<QPointF>& cumulative,
                                                                 double rate,
                                                                 double firstX,
                                                                 const QPointF& range) const
{
    return prototype::cumulativeScore(settings(), cumulative, rate, firstX, range);
}

Error MsFeatureFinderPrototype::optimize(const QList<QPointF>& cumulative,
                                         double rate,
                                         double firstX,
                                         double center,
                                         QPointF* range) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(prototype::optimize(settings(), cumulative, rate, firstX, center, range));
    return e;
}

Error MsFeatureFinderPrototype::findApex(const QList<QPointF>& points,
                                         double start,
                                         double end,
                                         QPointF* apex)
{
    Error e;
    ZEL_RETURN_IF_ERROR(prototype::findApex(points, start, end, apex));
    return e;
}

Error MsFeatureFinderPrototype::preintegrate(QList<QPointF>* points)
{
    prototype::preintegrate(points);
    return kNoError;
}

Error MsFeatureFinderPrototype::easeInOutPlot(QList<QPointF>* points, double start, double end)
{
    prototype::easeInOut(points, start, end);
    return kNoError;
}

} // namespace zel
