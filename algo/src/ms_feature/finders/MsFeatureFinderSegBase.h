#pragma once

#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "ms_feature/records/SegmentationFeature.h"

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
    using Feature = SegmentationFeature;

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
