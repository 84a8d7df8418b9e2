#include "common/stable/MathUtils.h"
#include "ms_feature/finders/PrototypeWindow_p.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

namespace zel::prototype {

namespace {

double clamp01(double value)
{
    return MathUtils::clamp(0.0, 1.0, value);
}

double lerp(double a, double b, double fraction)
{
    return a + (b - a) * fraction;
}

std::pair<double, double> sortedEnds(const QPointF& range)
{
    return std::minmax({range.x(), range.y()});
}

/// How much of a curve is left at `x`, on the way from `foot` (nothing) to `edge` (all).
double fade(double x, double foot, double edge)
{
    if (foot == edge) {
        return 1.0;
    }
    const double v = clamp01((x - foot) / (edge - foot));
    const double smooth = 3.0 * v * v - 2.0 * v * v * v;
    return clamp01(std::pow(smooth, 4.0));
}

} // namespace

double windowScore(const MsFeatureFinderSettings& settings, double start, double end)
{
    const double pi = 2.0 * std::acos(0.0);
    const double limit = settings.prototypeElasticity * settings.xicAreaTimeWindow;
    const double base = clamp01((end - start) / limit);
    return clamp01(std::cos(std::pow(base, settings.prototypePower) * pi) * 0.5 + 0.5);
}

double intervalScore(const MsFeatureFinderSettings& settings,
                     const QList<QPointF>& points,
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
    return sum * windowScore(settings, start, end);
}

double cumulativeScore(const MsFeatureFinderSettings& settings,
                       const QList<QPointF>& cumulative,
                       double rate,
                       double firstX,
                       const QPointF& range)
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
    return windowScore(settings, start, end) * (sumUpTo(end) - sumUpTo(start));
}

Error optimize(const MsFeatureFinderSettings& settings,
               const QList<QPointF>& cumulative,
               double rate,
               double firstX,
               double center,
               QPointF* range)
{
    constexpr int maxRounds = 100;
    constexpr double shrinkage = 0.6;
    if (cumulative.size() < 2) {
        ZEL_RETURN_ERROR(
            kError,
            QStringLiteral("A window cannot be fitted to %1 points").arg(cumulative.size()));
    }
    const auto score = [&](const QPointF& window) {
        return cumulativeScore(settings, cumulative, rate, firstX, window);
    };
    const double grid = cumulative[1].x() - cumulative[0].x();
    double delta = std::max(grid * 4.0, settings.xicAreaTimeWindow / 5.0);
    QPointF window(center - settings.xicAreaTimeWindow, center + settings.xicAreaTimeWindow);
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

Error findApex(const QList<QPointF>& points, double start, double end, QPointF* apex)
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

void preintegrate(QList<QPointF>* points)
{
    double sum = 0.0;
    for (QPointF& point : *points) {
        sum += point.y();
        point.setY(sum);
    }
}

void easeInOut(QList<QPointF>* points, double start, double end)
{
    if (points->isEmpty()) {
        return;
    }
    constexpr double greatestWidening = 10.0;
    const double first = points->constFirst().x();
    const double last = points->constLast().x();
    const double width = end - start;
    const double wideness = clamp01((width / (last - first) - 0.1) / 0.9);
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
}

} // namespace zel::prototype
