#include "ms_feature/alignment/MSLocalAlign.h"

#include "ms_feature/alignment/ShiftedCurves_p.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

namespace zel {

namespace {

/// The grid index of a sample's apex.
double apexIndex(const MSLocalAlignData& sample)
{
    if (sample.apexHint() >= 0) {
        return sample.apexHint();
    }
    const QList<double>& plot = sample.xicPlot();
    const qint64 end = sample.featureEndHint() < 0
                           ? plot.size()
                           : std::min<qint64>(qint64{sample.featureEndHint()} + 1, plot.size());
    const qint64 first = std::max(sample.featureStartHint(), 0);
    if (first >= end) {
        return static_cast<double>(first);
    }
    const auto highest = std::max_element(plot.cbegin() + first, plot.cbegin() + end);
    return static_cast<double>(highest - plot.cbegin());
}

double contiguousDotProduct(const double* a, const double* b, qint64 count)
{
    constexpr qint64 laneCount = 8;
    std::array<double, laneCount> lanes{};
    qint64 i = 0;
    for (; i + laneCount <= count; i += laneCount) {
        for (qint64 lane = 0; lane < laneCount; ++lane) {
            lanes[static_cast<std::size_t>(lane)] += a[i + lane] * b[i + lane];
        }
    }
    double rest = 0.0;
    for (; i < count; ++i) {
        rest += a[i] * b[i];
    }
    return ((lanes[0] + lanes[1]) + (lanes[2] + lanes[3])) +
           ((lanes[4] + lanes[5]) + (lanes[6] + lanes[7])) + rest;
}

Error selectPivotSample(const QList<MSLocalAlignData>& data, int* pivot)
{
    *pivot = -1;
    if (data.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError, "There is no curve to choose a pivot from");
    }
    std::vector<double> apexes;
    std::transform(data.cbegin(), data.cend(), std::back_inserter(apexes), apexIndex);
    *pivot = shifted::middleOne(apexes);
    return kNoError;
}

} // namespace

MSLocalAlignData::~MSLocalAlignData() = default;

Error MSLocalAlign::align(
    const QList<MSLocalAlignData>& data, int pivot, int maxShift, QList<int>* shifts, double power)
{
    Error e;
    shifts->clear();
    if (data.isEmpty()) {
        ZEL_RETURN_ERROR(kBadParameterError, "There is no curve to align");
    }
    shifts->resize(data.size());
    if (data.size() == 1) {
        return e;
    }
    if (pivot >= data.size()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("Curve %1 of %2 was named as the pivot").arg(pivot).arg(data.size()));
    }
    if (pivot < 0) {
        ZEL_RETURN_IF_ERROR(selectPivotSample(data, &pivot));
    }
    for (qsizetype i = 0; i < data.size(); ++i) {
        if (i != pivot) {
            ZEL_RETURN_IF_ERROR(alignUniformPlots(
                data[pivot].xicPlot(), data[i].xicPlot(), power, maxShift, &(*shifts)[i]));
        }
    }
    return e;
}

Error MSLocalAlign::alignUniformPlots(
    const QList<double>& pivot, const QList<double>& plot, double power, int maxShift, int* shift)
{
    constexpr double leastContrast = 0.001; // of the best value
    *shift = 0;
    const qint64 range = std::abs(qint64{maxShift});
    if (range == 0) {
        return kNoError;
    }
    // Curves that do not meet have the product 0: there is no need to go further than they reach.
    const qint64 reach = std::min<qint64>(range, std::max(pivot.size(), plot.size()));
    const auto valueAt = [&](qint64 s) {
        return shiftedDotProductV2(pivot, plot, static_cast<int>(s)) *
               shifted::penalty(s, range, power);
    };
    double best = valueAt(-reach);
    double worst = best;
    for (qint64 s = 1 - reach; s <= reach; ++s) {
        const double value = valueAt(s);
        if (value > best) {
            best = value;
            *shift = static_cast<int>(s);
        }
        worst = std::min(worst, value);
    }
    if (best <= 0.0 || (best - worst) / best < leastContrast) {
        *shift = 0;
    }
    return kNoError;
}

double MSLocalAlign::shiftedDotProductV1(const QList<double>& a, const QList<double>& b, int shift)
{
    const shifted::Overlap common(b.size(), a.size(), shift);
    double sum = 0.0;
    for (qint64 i = common.first; i < common.last; ++i) {
        sum += a[i + shift] * b[i];
    }
    return sum;
}

double MSLocalAlign::shiftedDotProductV2(const QList<double>& a, const QList<double>& b, int shift)
{
    const shifted::Overlap common(b.size(), a.size(), shift);
    return common.first == common.last ? 0.0
                                       : contiguousDotProduct(a.constData() + common.first + shift,
                                                              b.constData() + common.first,
                                                              common.last - common.first);
}

} // namespace zel
