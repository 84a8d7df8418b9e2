#include "ms_feature/finders/MsFeatureFinderPrototype.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <tuple>
#include <utility>

namespace zel {

namespace {

/// Two samples a minute, at least 250 and at most 500.
int sampleCount(double spanMinutes)
{
    return static_cast<int>(std::max(250.0, std::min(2.0 * spanMinutes, 500.0)));
}

std::pair<double, double> sortedEnds(const QPointF& range)
{
    return std::minmax({range.x(), range.y()});
}

/// Rounded as written, other than std::lerp.
double lerp(double a, double b, double fraction)
{
    return a + (b - a) * fraction;
}

/// How much of a curve is left at `x`, on the way from `foot` (nothing) to `edge` (all).
double fade(double x, double foot, double edge)
{
    if (foot == edge) {
        return 1.0;
    }
    const double v = std::clamp((x - foot) / (edge - foot), 0.0, 1.0);
    const double smooth = 3.0 * v * v - 2.0 * v * v * v;
    return std::clamp(std::pow(smooth, 4.0), 0.0, 1.0);
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
    return singlePeak(xic, {range.x(), range.y()}, apex);
}

double MsFeatureFinderPrototype::XicWindowScore(double start, double end) const
{
    const double limit = settings().prototypeElasticity * settings().xicAreaTimeWindow;
    const double base = std::clamp((end - start) / limit, 0.0, 1.0);
    const double phase = std::pow(base, settings().prototypePower) * std::numbers::pi;
    return std::clamp(std::cos(phase) * 0.5 + 0.5, 0.0, 1.0);
}

double MsFeatureFinderPrototype::calculateXICIntervalScore(const QList<QPointF>& points,
                                                           const QPointF& range)
{
    const auto [start, end] = sortedEnds(range);
    double sum = 0.0;
    for (const QPointF& point : points) {
        if (point.x() > end) {
            break;
        }
        if (point.x() >= start) {
            sum += point.y();
        }
    }
    return sum * XicWindowScore(start, end);
}

double MsFeatureFinderPrototype::calculateXICIntervalScorePreint(const QList<QPointF>& cumulative,
                                                                 double rate,
                                                                 double firstX,
                                                                 const QPointF& range) const
{
    if (cumulative.isEmpty()) {
        return 0.0;
    }
    const auto [start, end] = sortedEnds(range);
    const auto sumUpTo = [&](double time) {
        const double slot = (time - firstX) * rate;
        double index = std::trunc(slot);
        if (slot - index < 0.5) {
            index -= 1.0;
        }
        const auto last = static_cast<double>(cumulative.size() - 1);
        return cumulative[static_cast<qsizetype>(std::max(0.0, std::min(index, last)))].y();
    };
    return XicWindowScore(start, end) * (sumUpTo(end) - sumUpTo(start));
}

Error MsFeatureFinderPrototype::optimize(const QList<QPointF>& cumulative,
                                         double rate,
                                         double firstX,
                                         double center,
                                         QPointF* range) const
{
    constexpr int maxRounds = 100;
    constexpr double shrinkage = 0.6;
    if (cumulative.size() < 2) {
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("A window cannot be fitted to %1 points").arg(cumulative.size()));
    }
    const auto score = [&](const QPointF& window) {
        return calculateXICIntervalScorePreint(cumulative, rate, firstX, window);
    };
    const double grid = cumulative[1].x() - cumulative[0].x();
    double delta = std::max(grid * 4.0, settings().xicAreaTimeWindow / 5.0);
    QPointF window(center - settings().xicAreaTimeWindow, center + settings().xicAreaTimeWindow);
    double best = score(window);
    for (int round = 0; round < maxRounds && grid < delta; ++round) {
        const std::array<QPointF, 6> steps = {QPointF(delta, delta),
                                              QPointF(-delta, -delta),
                                              QPointF(-delta, 0.0),
                                              QPointF(delta, 0.0),
                                              QPointF(0.0, -delta),
                                              QPointF(0.0, delta)};
        const QPointF before = window;
        bool improved = false;
        for (const QPointF& step : steps) {
            const double trial = score(before + step);
            if (trial > best) {
                best = trial;
                window = before + step;
                improved = true;
            }
        }
        if (!improved) {
            delta *= shrinkage;
        }
    }
    const auto [start, end] = sortedEnds(window);
    *range = QPointF(start, end);
    return kNoError;
}

Error MsFeatureFinderPrototype::findApex(const QList<QPointF>& points,
                                         double start,
                                         double end,
                                         QPointF* apex)
{
    bool found = false;
    for (const QPointF& point : points) {
        if (start <= point.x() && point.x() <= end && point.y() > apex->y()) {
            *apex = point;
            found = true;
        }
    }
    if (!found) {
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("No point from %1 to %2 min is high enough").arg(start).arg(end));
    }
    return kNoError;
}

Error MsFeatureFinderPrototype::preintegrate(QList<QPointF>* points)
{
    double sum = 0.0;
    for (QPointF& point : *points) {
        sum += point.y();
        point.setY(sum);
    }
    return kNoError;
}

Error MsFeatureFinderPrototype::easeInOutPlot(QList<QPointF>* points, double start, double end)
{
    if (points->isEmpty()) {
        return kNoError;
    }
    constexpr double greatestWidening = 10.0;
    const double first = points->constFirst().x();
    const double last = points->constLast().x();
    const double width = end - start;
    const double wideness = std::clamp((width / (last - first) - 0.1) / 0.9, 0.0, 1.0);
    double leftFoot = lerp((first + start) * 0.5, first, wideness);
    const double rightFoot = lerp((last + end) * 0.5, last, wideness);
    if (rightFoot - leftFoot > width * greatestWidening) {
        leftFoot = (leftFoot + start) * 0.5;
    }
    for (QPointF& point : *points) {
        if (point.x() < start) {
            point.ry() *= fade(point.x(), leftFoot, start);
        } else if (point.x() >= end) {
            point.ry() *= fade(point.x(), rightFoot, end);
        }
    }
    return kNoError;
}

} // namespace zel
