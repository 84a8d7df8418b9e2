#pragma once

#include "common/ms_types/Interval.h"
#include "ms_feature/MsFeatureFinderBase.h"

#include <vector>

namespace zel {

/// The adaptive finder: cuts the smoothed XIC at its minima into candidates, one for each maximum,
/// and keeps what is large enough, holds matches and lies near the strongest candidate. Two or more
/// intervals are a proposal to split.
///
/// 1. The XIC is laid on a regular grid of at most 40 samples a minute and smoothed by a difference
///    of Gaussians (Marr & Hildreth 1980).
/// 2. Minima and maxima of the smoothed curve alternate; each is moved to the lowest or highest
///    point of the XIC near by.
/// 3. From minimum to minimum reaches a candidate. Those of negligible area go, flanks of hardly
///    any signal are trimmed, overlaps of neighbours are removed.
/// 4. Each match goes to the nearest candidate. Candidates of negligible score, and those that do
///    not lie within the extraction window around the strongest one, go.
///
/// All times are in minutes. A flat XIC has no candidates.
class ZEL_EXPORT MsFeatureFinderSeg : public MsFeatureFinderBase
{
public:
    /// A candidate. A plain value.
    class ZEL_EXPORT Feature
    {
    public:
        /// All zero.
        Feature() = default;
        Feature(const Interval<double>& timeInterval,
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
        void mergeFrom(const Feature& other);

    private:
        Interval<double> m_timeInterval;
        double m_auc = 0.0;
        QPointF m_apex;
        QList<PeptideSpectrumMatch> m_psms;
        double m_apexAveragineCorrelation = 0.0;
        Interval<double> m_halfMaxInterval;
    };

    explicit MsFeatureFinderSeg(const MsFeatureFinderSettings& settings);
    ~MsFeatureFinderSeg() override;

protected:
    /// \return no value when the XIC has no candidate; kBadParameterError for an XIC without two
    ///         points apart; kError when every candidate is negligible, as are two and more
    ///         candidates when there is no match
    Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& psms,
                                                  const PlotBase& xic) const override;

    /// Steps 1 to the cutting of step 3.
    /// \param smoothed  the smoothed curve on the regular grid
    /// \param extremes  minimum, maximum, ..., minimum, on the XIC
    Error findFeaturesBeforeFilters(const PlotBase& xic,
                                    QList<QPointF>* smoothed,
                                    QList<QPointF>* extremes,
                                    std::vector<Feature>* features) const;

private:
    Error extremeSegmentation(const QList<QPointF>& smoothed, QList<QPointF>* extremes) const;
    static Error adjustExtremes(const PlotBase& plot, QList<QPointF>* extremes);
    Error extractFeatures(const PlotBase& plot,
                          const QList<QPointF>& extremes,
                          std::vector<Feature>* features) const;
    Error filterFeaturesByAUC(const std::vector<Feature>& in, std::vector<Feature>* out) const;
    Error filterFeaturesByScore(const std::vector<Feature>& in, std::vector<Feature>* out) const;
    Error filterFeaturesByDistance(const std::vector<Feature>& in, std::vector<Feature>* out) const;
    Error tightenFeature(const PlotBase& plot, Feature* feature) const;
    static Error distributePSMToFeatures(const QList<PeptideSpectrumMatch>& psms,
                                         std::vector<Feature>* features);
    static Error nearestPointIndex(const PlotBase& plot, double time, int* index);
};

} // namespace zel
