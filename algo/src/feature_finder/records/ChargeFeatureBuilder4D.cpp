#include "feature_finder/records/ChargeFeatureBuilder4D.h"

#include "common/core_mini/src/algo/numeric/FeatureFinderUtilities.h"

#include <algorithm>

namespace zel {

void ChargeFeatureBuilder4D::pushBackChargeFeatureFrame(const ChargeFeatureFrame& frame)
{
    m_frames.append(frame);
    if (frame.intensity > m_frames.at(m_strongest).intensity) {
        m_strongest = m_frames.size() - 1;
    }
}

Interval<int> ChargeFeatureBuilder4D::d1Range() const
{
    if (m_frames.isEmpty()) {
        return {};
    }
    const auto [first, last] = std::minmax_element(
        m_frames.begin(),
        m_frames.end(),
        [](const ChargeFeatureFrame& a, const ChargeFeatureFrame& b) { return a.d1 < b.d1; });
    return {first->d1, last->d1};
}

Interval<int> ChargeFeatureBuilder4D::d2Range() const
{
    const ChargeFeatureFrame strongest = maxChargeFeatureFrameByIntensity();
    return {strongest.startD2, strongest.endD2};
}

QList<QPointF> ChargeFeatureBuilder4D::d1Xic() const
{
    QList<QPointF> xic = d1Points();
    std::stable_sort(
        xic.begin(), xic.end(), [](const QPointF& a, const QPointF& b) { return a.x() < b.x(); });
    return xic;
}

double ChargeFeatureBuilder4D::weightedD1() const
{
    return FeatureFinderUtilities::calculatedWeightedRetentionTime(d1Points());
}

ChargeFeatureFrame ChargeFeatureBuilder4D::maxChargeFeatureFrameByIntensity() const
{
    return m_frames.isEmpty() ? ChargeFeatureFrame() : m_frames.at(m_strongest);
}

QList<QPointF> ChargeFeatureBuilder4D::d1Points() const
{
    QList<QPointF> points;
    points.reserve(m_frames.size());
    for (const ChargeFeatureFrame& frame : m_frames) {
        points.append(QPointF(frame.d1, frame.intensity));
    }
    return points;
}

} // namespace zel
