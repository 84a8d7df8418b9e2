#pragma once

#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "ms_feature/records/SegmentationFeature.h"

#include <vector>

namespace zel {

namespace segmentation {
struct Policy;
} // namespace segmentation

/// What the editions of the adaptive finder share: the record of a candidate, and all steps, which
/// each edition takes by a policy of its own.
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
    /// The whole way from an XIC to its feature, which is also drawn when diagrams are asked for.
    /// \return no value when the XIC has no candidate; kBadParameterError for an XIC without two
    ///         points apart; kError when every candidate is negligible, as are two and more
    ///         candidates when there is no match
    Result<std::optional<Ms1Feature>> findBy(const segmentation::Policy& policy,
                                             const QList<PeptideSpectrumMatch>& psms,
                                             const PlotBase& xic) const;

    /// Cuts the XIC into candidates.
    /// \param smoothed  the smoothed curve on the regular grid
    /// \param extremes  minimum, maximum, ..., minimum, on the curve that the policy cuts
    static Error cutBy(const segmentation::Policy& policy,
                       const PlotBase& xic,
                       QList<QPointF>* smoothed,
                       QList<QPointF>* extremes,
                       std::vector<Feature>* features);

private:
    static Result<QList<QPointF>> onGrid(const PlotBase& xic, double samplesPerMinute);
    Error cleanFeatures(const PlotBase& xic, std::vector<Feature>* features) const;
    Error mergeFeatures(const PlotBase& xic, std::vector<Feature>* features) const;
};

} // namespace zel
