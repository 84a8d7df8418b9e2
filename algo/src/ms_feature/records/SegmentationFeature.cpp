#include "ms_feature/records/SegmentationFeature.h"

#include <algorithm>
#include <cmath>

namespace zel {

SegmentationFeature::SegmentationFeature(const Interval<double>& timeInterval,
                                         double auc,
                                         const QPointF& apex,
                                         const Interval<double>& halfMaxInterval)
    : m_timeInterval(timeInterval)
    , m_auc(auc)
    , m_apex(apex)
    , m_halfMaxInterval(halfMaxInterval)
{}

double SegmentationFeature::FWHM() const
{
    return std::abs(m_halfMaxInterval.end - m_halfMaxInterval.start);
}

double SegmentationFeature::duration() const
{
    return std::abs(m_timeInterval.end - m_timeInterval.start);
}

double SegmentationFeature::averageIntensity() const
{
    return duration() > 0.0 ? m_auc / duration() : 0.0;
}

double SegmentationFeature::score() const
{
    return m_auc * static_cast<double>(m_psms.size());
}

double SegmentationFeature::distance(double time) const
{
    if (m_timeInterval.start <= time && time <= m_timeInterval.end) {
        return 0.0;
    }
    return std::min(std::abs(time - m_timeInterval.start), std::abs(time - m_timeInterval.end));
}

void SegmentationFeature::mergeFrom(const SegmentationFeature& other)
{
    m_timeInterval.start = std::min(m_timeInterval.start, other.m_timeInterval.start);
    m_timeInterval.end = std::max(m_timeInterval.end, other.m_timeInterval.end);
    m_auc += other.m_auc;
    if (other.m_apex.y() > m_apex.y()) {
        m_apex = other.m_apex;
        m_apexAveragineCorrelation = other.m_apexAveragineCorrelation;
        m_halfMaxInterval = other.m_halfMaxInterval;
    }
    m_psms.append(other.m_psms);
}

} // namespace zel
