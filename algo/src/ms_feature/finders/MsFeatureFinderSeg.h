#pragma once

#include "ms_feature/finders/MsFeatureFinderSegBase.h"

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
class ZEL_EXPORT MsFeatureFinderSeg : public MsFeatureFinderSegBase
{
public:
    explicit MsFeatureFinderSeg(const MsFeatureFinderSettings& settings);
    ~MsFeatureFinderSeg() override;

protected:
    /// \return as findBy
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
    segmentation::Policy policy() const;
};

} // namespace zel
