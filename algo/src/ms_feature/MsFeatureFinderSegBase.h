#pragma once

#include "common/ms_types/Interval.h"
#include "ms_feature/MsFeatureFinderBase.h"

#include <vector>

namespace zel {

/// What the two adaptive finders share: the record of a candidate, and the steps that they take
/// alike. How they cut an XIC into candidates is their own.
///
/// With `adaptiveHtmlDumpFilename` set, each feature leaves four diagrams in GraphyCollection, and
/// the destructor writes that collection to the file, one feature a row, and clears it. So a finder
/// that is to share a page with others outlives them.
class ZEL_EXPORT MsFeatureFinderSegBase : public MsFeatureFinderBase
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

    explicit MsFeatureFinderSegBase(const MsFeatureFinderSettings& settings);
    ~MsFeatureFinderSegBase() override;

protected:
    /// The plot on a regular grid, each sample the mean height of its bin.
    /// \param samplesPerMinute  see segmentation::limitedRate; there are at least 10 samples
    /// \return kBadParameterError for a plot without two points apart
    static Result<QList<QPointF>> onGrid(const PlotBase& xic, double samplesPerMinute);

    /// Drops what has a negligible area, trims the flanks and removes overlaps of neighbours.
    Error cleanFeatures(const PlotBase& xic, std::vector<Feature>* features) const;

    /// Keep the candidates whose area, or score, is not negligible beside the greatest one.
    /// \return kError when none stays
    Error filterFeaturesByAUC(const std::vector<Feature>& in, std::vector<Feature>* out) const;
    Error filterFeaturesByScore(const std::vector<Feature>& in, std::vector<Feature>* out) const;
    /// Keeps the candidates near the one with the largest area.
    Error filterFeaturesByDistance(const std::vector<Feature>& in, std::vector<Feature>* out) const;
    /// Trims the flanks of hardly any signal.
    Error tightenFeature(const PlotBase& plot, Feature* feature) const;
    /// Gives each match to the nearest candidate.
    static Error distributePSMToFeatures(const QList<PeptideSpectrumMatch>& psms,
                                         std::vector<Feature>* features);
    /// The candidates as the intervals of one feature, which is also drawn when diagrams are asked
    /// for.
    Ms1Feature assembleFeature(const QList<PeptideSpectrumMatch>& psms,
                               const PlotBase& xic,
                               const QList<QPointF>& smoothed,
                               const QList<QPointF>& extremes,
                               const std::vector<Feature>& features) const;
    /// The index of the point nearest to `time`, the earlier one of two.
    static Error nearestPointIndex(const PlotBase& plot, double time, int* index);
};

} // namespace zel
