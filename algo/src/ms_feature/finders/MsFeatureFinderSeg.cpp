#include "ms_feature/finders/MsFeatureFinderSeg.h"

#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationPolicy_p.h"

namespace zel {

MsFeatureFinderSeg::MsFeatureFinderSeg(const MsFeatureFinderSettings& settings)
    : MsFeatureFinderSegBase(settings)
{}

MsFeatureFinderSeg::~MsFeatureFinderSeg() = default;

Result<std::optional<Ms1Feature>> MsFeatureFinderSeg::findFeature(
    const QList<PeptideSpectrumMatch>& psms, const PlotBase& xic) const
{
    return findBy(policy(), psms, xic);
}

Error MsFeatureFinderSeg::findFeaturesBeforeFilters(const PlotBase& xic,
                                                    QList<QPointF>* smoothed,
                                                    QList<QPointF>* extremes,
                                                    std::vector<Feature>* features) const
{
    return cutBy(policy(), xic, smoothed, extremes, features);
}

segmentation::Policy MsFeatureFinderSeg::policy() const
{
    constexpr double maxSamplesPerMinute = 40.0;
    const double rate = settings().adaptiveSamplesPerMinute;
    segmentation::Policy policy;
    policy.samplesPerMinute = segmentation::limitedRate(rate, maxSamplesPerMinute);
    // The width goes by the setting as it stands, although the grid is laid with the limited rate.
    policy.kernel = segmentation::smoothingKernel(rate * settings().adaptiveSmoothingStDev);
    policy.extremesOf = segmentation::alternatingExtremes;
    policy.keepsFillers = true;
    return policy;
}

} // namespace zel
