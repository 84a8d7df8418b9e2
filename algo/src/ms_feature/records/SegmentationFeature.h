#pragma once

#include "common/ms_types/Interval.h"
#include "common/stable/Export.h"
#include "ms_feature/records/PeptideSpectrumMatch.h"

#include <QList>
#include <QPointF>

namespace zel {

/// A candidate of the adaptive finders: a piece of an XIC that may be the peak. A plain value.
class ZEL_EXPORT SegmentationFeature
{
public:
    /// All zero.
    SegmentationFeature() = default;
    SegmentationFeature(const Interval<double>& timeInterval,
                        double auc,
                        const QPointF& apex,
                        const Interval<double>& halfMaxInterval);

    /// The cut points, minutes.
    const Interval<double>& timeInterval() const { return m_timeInterval; }
    Interval<double>& timeInterval() { return m_timeInterval; }

    /// The area between the cut points, intensity * minutes.
    double auc() const { return m_auc; }
    void setAUC(double auc) { m_auc = auc; }

    /// (minutes, intensity).
    const QPointF& apex() const { return m_apex; }
    void setApex(const QPointF& apex) { m_apex = apex; }

    /// The matches assigned to this candidate.
    const QList<PeptideSpectrumMatch>& peptideSpectrumMatches() const { return m_psms; }
    void addPSM(const PeptideSpectrumMatch& psm) { m_psms.append(psm); }

    /// 0 unless set.
    double apexAvaragineCorrelation() const { return m_apexAveragineCorrelation; }
    void setApexAveragineCorrelation(double value) { m_apexAveragineCorrelation = value; }

    /// The crossings of half the apex's height, minutes.
    const Interval<double>& halfMaxInterval() const { return m_halfMaxInterval; }
    Interval<double>& halfMaxInterval() { return m_halfMaxInterval; }

    /// The width of the half-maximum interval, minutes.
    double FWHM() const;
    /// The width of the time interval, minutes.
    double duration() const;
    /// The area over the duration; 0 without a duration.
    double averageIntensity() const;
    /// The area times the number of matches.
    double score() const;
    /// How far `time` lies outside the time interval, minutes; 0 inside, ends included.
    double distance(double time) const;

    /// Becomes the hull of both, with the sum of the areas and all matches; apex, correlation
    /// and half-maximum interval are those of the higher apex, this one's when equal.
    void mergeFrom(const SegmentationFeature& other);

private:
    Interval<double> m_timeInterval;
    double m_auc = 0.0;
    QPointF m_apex;
    QList<PeptideSpectrumMatch> m_psms;
    double m_apexAveragineCorrelation = 0.0;
    Interval<double> m_halfMaxInterval;
};

} // namespace zel
