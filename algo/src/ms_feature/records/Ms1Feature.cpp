#include "ms_feature/records/Ms1Feature.h"

#include <algorithm>

namespace zel {

ApexInterval::ApexInterval(const Interval<double>& interval,
                           double fwhm,
                           const QPointF& apex,
                           double auc,
                           double apexAveragineCorrelation)
    : m_interval(interval)
    , m_apex(apex)
    , m_apexAveragineCorrelation(apexAveragineCorrelation)
    , m_fwhm(fwhm)
    , m_auc(auc)
{}

void ApexInterval::translate(double dt)
{
    m_interval.start += dt;
    m_interval.end += dt;
    m_apex.rx() += dt;
}

Ms1Feature::~Ms1Feature() = default;

ApexInterval Ms1Feature::timeInterval() const
{
    if (m_timeIntervalList.isEmpty()) {
        return {};
    }
    Interval<double> span = m_timeIntervalList.constFirst().interval();
    double auc = 0.0;
    for (const ApexInterval& part : m_timeIntervalList) {
        span.start = std::min(span.start, part.interval().start);
        span.end = std::max(span.end, part.interval().end);
        auc += part.auc();
    }
    const auto highest = std::max_element(
        m_timeIntervalList.cbegin(),
        m_timeIntervalList.cend(),
        [](const ApexInterval& a, const ApexInterval& b) { return a.apex().y() < b.apex().y(); });
    return {span, highest->fwhm(), highest->apex(), auc, highest->apexAveragineCorrelation()};
}

void Ms1Feature::setTimeInterval(const ApexInterval& interval)
{
    m_timeIntervalList = {interval};
}

Error Ms1Feature::mergeTimeIntervalsAndPsmFrom(const Ms1Feature& other)
{
    m_timeIntervalList.append(other.timeIntervalList());
    m_peptideSpectrumMatches.append(other.peptideSpectrumMatches());
    return kNoError;
}

} // namespace zel
