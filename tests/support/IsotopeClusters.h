#pragma once

#include "common/core_mini/src/algo/isotopes/AveragineGenerator.h"
#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"
#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"

#include <Eigen/SparseCore>
#include <QList>
#include <QPointF>

#include <algorithm>

namespace zel::test {

/// The isotopes of averagine from 0.1 % of the highest on, which has this height.
inline QList<QPointF> isotopePeaks(double massDa, int charge, double height)
{
    QList<QPointF> peaks = AveragineGenerator(massDa).generateSignal(charge);
    const double highest = FeatureFinderUtilities::findPoint2dListMaximum(peaks);
    peaks.removeIf([highest](const QPointF& peak) { return peak.y() < 1e-3 * highest; });
    for (QPointF& peak : peaks) {
        peak.setY(peak.y() / highest * height);
    }
    return peaks;
}

/// The number of the highest peak.
inline int apexOf(const QList<QPointF>& peaks)
{
    const auto apex = std::ranges::max_element(peaks, {}, [](const QPointF& p) { return p.y(); });
    return static_cast<int>(apex - peaks.begin());
}

/// A slice around an m/z that holds these peaks, in any order.
inline Eigen::SparseVector<double> sliceOf(const QList<QPointF>& peaks, double centreMz)
{
    const auto& fixed = g_immutableFeatureFinderParameters;
    const int centre = FeatureFinderUtilities::hashMz(centreMz, fixed.clusterMzHashFactor);
    Eigen::SparseVector<double> slice(2 * fixed.clusterSliceHalfWidth + 1);
    for (const QPointF& peak : peaks) {
        const int index = FeatureFinderUtilities::hashMz(peak.x(), fixed.clusterMzHashFactor) -
                          centre + fixed.clusterSliceCentre;
        if (index >= 0 && index < slice.size()) {
            slice.coeffRef(index) += peak.y();
        }
    }
    return slice;
}

} // namespace zel::test
