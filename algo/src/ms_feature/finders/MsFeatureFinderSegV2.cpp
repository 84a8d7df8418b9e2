#include "ms_feature/finders/MsFeatureFinderSegV2.h"

#include "common/stable/MathUtils.h"
#include "common/stable/SharedNumbers.h"
#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationPolicy_p.h"

#include <cmath>
#include <tuple>

namespace zel {

namespace {

constexpr double kDefaultFilterWidth = 0.2; ///< minutes

} // namespace

MsFeatureFinderSegV2::MsFeatureFinderSegV2(const MsFeatureFinderSettings& settings,
                                           const std::optional<double>& kernelFilterWidth,
                                           bool mergeBeforeScoring)
    : MsFeatureFinderSegBase(settings)
    , m_kernelFilterWidth(kernelFilterWidth.value_or(kDefaultFilterWidth))
    , m_mergeBeforeScoring(mergeBeforeScoring)
{}

MsFeatureFinderSegV2::~MsFeatureFinderSegV2() = default;

Result<std::optional<Ms1Feature>> MsFeatureFinderSegV2::findFeature(
    const QList<PeptideSpectrumMatch>& psms, const PlotBase& xic) const
{
    return findBy(policy(), psms, xic);
}

Error MsFeatureFinderSegV2::findFeaturesBeforeFilters(const PlotBase& xic,
                                                      QList<QPointF>* smoothed,
                                                      QList<QPointF>* extremes,
                                                      std::vector<Feature>* features) const
{
    return cutBy(policy(), xic, smoothed, extremes, features);
}

segmentation::Policy MsFeatureFinderSegV2::policy() const
{
    using segmentation::Policy;
    constexpr double maxSamplesPerMinute = 1000.0;
    constexpr double filterWidthPerSigma = 3.6;
    const double rate =
        segmentation::limitedRate(settings().adaptiveSamplesPerMinute, maxSamplesPerMinute);
    const bool hasWidth = std::abs(m_kernelFilterWidth) > kNegligible;
    const double sigmaMinutes =
        hasWidth ? m_kernelFilterWidth / filterWidthPerSigma : settings().adaptiveSmoothingStDev;
    Policy policy;
    policy.samplesPerMinute = rate;
    std::ignore = getConvolutionKernel(rate * sigmaMinutes, &policy.kernel); // cannot fail
    policy.smoothsMagnitudes = true;
    policy.extremesOf = segmentation::alternatingRealExtremes;
    policy.cutsOnGrid = true;
    policy.fillerHeight = kNegligible;
    policy.merging = m_mergeBeforeScoring ? Policy::Merging::BeforeScoring : Policy::Merging::AtEnd;
    return policy;
}

Error MsFeatureFinderSegV2::getConvolutionKernel(double sigma, std::vector<double>* kernel) const
{
    if (!MathUtils::nearlyEqual(sigma, m_cachedSigma)) {
        m_cachedKernel = segmentation::smoothingKernel(sigma);
        m_cachedSigma = sigma;
    }
    *kernel = m_cachedKernel;
    return kNoError;
}

} // namespace zel
