#include "ms_feature/alignment/ShiftedCurves_p.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace zel::shifted {

Overlap::Overlap(qsizetype size, qsizetype otherSize, qint64 offset)
    : first(std::clamp<qint64>(-offset, 0, size))
    , last(std::clamp<qint64>(otherSize - offset, first, size))
{}

double penalty(qint64 shift, qint64 maxShift, double power)
{
    if (maxShift < 1) {
        return 0.0;
    }
    const auto range = static_cast<double>(maxShift);
    const double share = std::abs(static_cast<double>(shift) / range);
    const double weight = power < 0.0 ? std::exp(-std::pow(share / range, 2.0) * std::abs(power))
                                      : 1.0 - std::pow(share, std::abs(power));
    return std::clamp(weight, 0.0, 1.0);
}

double correlation(const QList<double>& reference,
                   int referenceShift,
                   const QList<double>& plot,
                   int shift)
{
    const qint64 offset = qint64{shift} - referenceShift;
    const Overlap common(plot.size(), reference.size(), offset);
    const qint64 count = common.last - common.first;
    if (count == 0) {
        return 0.0;
    }
    double meanReference = 0.0;
    double meanPlot = 0.0;
    for (qint64 i = common.first; i < common.last; ++i) {
        meanReference += reference[i + offset];
        meanPlot += plot[i];
    }
    meanReference /= static_cast<double>(count);
    meanPlot /= static_cast<double>(count);

    double product = 0.0;
    double squaresReference = 0.0;
    double squaresPlot = 0.0;
    for (qint64 i = common.first; i < common.last; ++i) {
        const double deviationReference = reference[i + offset] - meanReference;
        const double deviationPlot = plot[i] - meanPlot;
        product += deviationReference * deviationPlot;
        squaresReference += deviationReference * deviationReference;
        squaresPlot += deviationPlot * deviationPlot;
    }
    if (squaresReference <= 0.0 || squaresPlot <= 0.0) {
        return 1.0;
    }
    return product / std::sqrt(squaresReference * squaresPlot);
}

Error sum(const QList<QList<double>>& plots, const QList<int>& shifts, QList<double>* summed)
{
    summed->clear();
    if (plots.isEmpty()) {
        ZEL_RETURN_ERROR(kError, "There is no curve to sum");
    }
    if (plots.size() == 1) {
        *summed = plots.constFirst();
        return kNoError;
    }
    if (plots.size() != shifts.size()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("%1 curves came with %2 shifts").arg(plots.size()).arg(shifts.size()));
    }
    summed->resize(plots.constFirst().size());
    double* sums = summed->data();
    for (qsizetype curve = 0; curve < plots.size(); ++curve) {
        const QList<double>& plot = plots[curve];
        const Overlap common(plot.size(), summed->size(), shifts[curve]);
        for (qint64 i = common.first; i < common.last; ++i) {
            sums[i + shifts[curve]] += plot[i];
        }
    }
    return kNoError;
}

int middleOne(const std::vector<double>& values)
{
    std::vector<std::size_t> order(values.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::stable_sort(order.begin(), order.end(), [&values](std::size_t a, std::size_t b) {
        return values[a] < values[b];
    });
    return static_cast<int>(order[order.size() / 2]);
}

} // namespace zel::shifted
