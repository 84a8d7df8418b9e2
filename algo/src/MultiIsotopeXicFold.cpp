#include "MultiIsotopeXicFold_p.h"

#include <boost/math/special_functions/lambert_w.hpp>

#include <algorithm>
#include <cmath>
#include <vector>

namespace zel {

namespace {

/// Lambert W at 1, so that a base peak as high as the tallest isotope leaves the offset at its
/// plain value.
constexpr double kLambertWOfOne = 0.567143;

/// The offset of the mean at one point: a share of the tallest isotope `top`, lifted by the base
/// peak when asked for.
double offsetOfMean(double top, qsizetype pointIndex, const WhmParams& params)
{
    const double offset = top / params.intensityDivisor;
    if (!params.useBasePeakFloor) {
        return offset;
    }
    const QList<double>& basePeaks = params.basePeakIntensities;
    const double basePeak =
        basePeaks.isEmpty() ? 0.0 : basePeaks[std::min(basePeaks.size() - 1, pointIndex)];
    const double lifted =
        basePeak / lambertW(basePeak / top) / params.intensityDivisor * kLambertWOfOne;
    return std::isnan(lifted) ? offset : std::max(offset, lifted);
}

} // namespace

Error checkHaveOneSize(const QList<QList<QPointF>>& xics)
{
    const auto differs = [&xics](const QList<QPointF>& xic) {
        return xic.size() != xics.constFirst().size();
    };
    if (std::ranges::any_of(xics, differs)) {
        ZEL_RETURN_ERROR(kError, "Cannot aggregate different sized XICs.");
    }
    return kNoError;
}

QList<QPointF> sumXics(const QList<QList<QPointF>>& xics)
{
    if (xics.isEmpty()) {
        return {};
    }
    QList<QPointF> sum = xics.constFirst();
    for (const QList<QPointF>& xic : xics.mid(1)) {
        for (qsizetype i = 0; i < sum.size(); ++i) {
            sum[i].ry() += xic[i].y();
        }
    }
    return sum;
}

QList<QList<QPointF>> smoothXics(const QList<QList<QPointF>>& xics, int window)
{
    if (window <= 1) {
        return xics;
    }
    const qsizetype half = window / 2;
    QList<QList<QPointF>> smoothed = xics;
    for (qsizetype k = 0; k < xics.size(); ++k) {
        const QList<QPointF>& raw = xics[k];
        for (qsizetype i = 0; i < raw.size(); ++i) {
            const qsizetype first = std::max<qsizetype>(i - half, 0);
            const qsizetype last = std::min(i + half, raw.size() - 1);
            double sum = 0.0;
            for (qsizetype j = first; j <= last; ++j) {
                sum += raw[j].y();
            }
            smoothed[k][i].setY(sum / static_cast<double>(last - first + 1));
        }
    }
    return smoothed;
}

Result<QList<QPointF>> whmXics(const QList<QList<QPointF>>& xics,
                               const QList<double>& weights,
                               const WhmParams& params)
{
    const QList<QList<QPointF>> smoothed = smoothXics(xics, params.smoothingWindow);
    if (smoothed.size() != weights.size() || smoothed.isEmpty()) {
        ZEL_RETURN_ERROR(kError, "Error in whmXics.");
    }
    Error e;
    ZEL_RETURN_IF_ERROR(checkHaveOneSize(xics));
    QList<QPointF> mean;
    mean.reserve(smoothed.constFirst().size());
    std::vector<double> values(static_cast<std::size_t>(smoothed.size()));
    for (qsizetype i = 0; i < smoothed.constFirst().size(); ++i) {
        std::ranges::transform(
            smoothed, values.begin(), [i](const QList<QPointF>& xic) { return xic[i].y(); });
        const double time = smoothed.constFirst()[i].x();
        const double top = std::max(0.0, *std::ranges::max_element(values));
        if (top <= 0.0) {
            mean.append(QPointF(time, 0.0));
            continue;
        }
        ZEL_ASSIGN_OR_RETURN(const double y,
                             weightedHarmonicMean(values, weights, offsetOfMean(top, i, params)));
        mean.append(QPointF(time, y));
    }
    return mean;
}

Result<double> weightedHarmonicMean(std::span<const double> values,
                                    std::span<const double> weights,
                                    double c)
{
    constexpr double floorFactor = 1.1;
    if (values.size() != weights.size() || values.empty()) {
        ZEL_RETURN_ERROR(kError, "Input vectors must have the same non-zero size.");
    }
    double weightSum = 0.0;
    double inverseSum = 0.0;      // of the lifted values
    double inverseFloorSum = 0.0; // of an ion without any signal
    double greatestWeight = 0.0;
    for (std::size_t k = 0; k < values.size(); ++k) {
        if (!(weights[k] > 0.0)) {
            ZEL_RETURN_ERROR(kError, "Weights must be positive and non-zero.");
        }
        weightSum += weights[k];
        inverseSum += weights[k] / (c + values[k]);
        inverseFloorSum += weights[k] / c;
        greatestWeight = std::max(greatestWeight, weights[k]);
    }
    const double aboveFloor =
        1.0 / (inverseSum * weightSum) - floorFactor / (inverseFloorSum * weightSum);
    return std::max(0.0, aboveFloor * static_cast<double>(values.size()) * greatestWeight);
}

double lambertW(double x)
{
    return x > 0.0 && std::isfinite(x) ? boost::math::lambert_w0(x) : 0.0;
}

Result<QList<QPointF>> subtract(const QList<QPointF>& a, const QList<QPointF>& b, double f)
{
    if (a.size() != b.size() || a.isEmpty()) {
        ZEL_RETURN_ERROR(kError, "Cannot subtract XICs of different size.");
    }
    QList<QPointF> difference;
    difference.reserve(a.size());
    for (qsizetype i = 0; i < a.size(); ++i) {
        if (a[i].x() != b[i].x()) {
            ZEL_RETURN_ERROR(kError, "Retention times should be equivalent, check input params.");
        }
        difference.append(QPointF(a[i].x(), std::max(a[i].y() - (1.0 - f) * b[i].y(), 0.0)));
    }
    return difference;
}

} // namespace zel
