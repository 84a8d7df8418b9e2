#include "ms_feature/finders/MsFeatureFinderSegV2.h"

#include "common/core_mini/src/algo/numeric/Convolution.h"
#include "common/stable/MathUtils.h"
#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

constexpr double kDefaultFilterWidth = 0.2;  ///< minutes
constexpr double kFilterWidthPerSigma = 3.6; ///< how many sigma a filter width spans
constexpr double kMaxSamplesPerMinute = 1000.0;
constexpr double kFillerHeight = 1e-12; ///< up to here a height counts as none

/// The convolution of the heights' magnitudes with the kernel, nowhere below zero.
QList<QPointF> smoothed(const QList<QPointF>& curve, const std::vector<double>& kernel)
{
    std::vector<double> heights;
    heights.reserve(static_cast<std::size_t>(curve.size()));
    for (const QPointF& point : curve) {
        heights.push_back(std::abs(point.y()));
    }
    std::vector<double> result;
    core::conv(heights, kernel, 0, &result);
    QList<QPointF> points;
    points.reserve(static_cast<qsizetype>(result.size()));
    for (const double height : result) {
        points.append(QPointF(curve[points.size()].x(), std::max(height, 0.0)));
    }
    return points;
}

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
    Error e;
    QList<QPointF> smoothed;
    QList<QPointF> extremes;
    std::vector<Feature> candidates;
    ZEL_RETURN_IF_ERROR(findFeaturesBeforeFilters(xic, &smoothed, &extremes, &candidates));
    if (candidates.empty()) {
        return std::optional<Ms1Feature>();
    }
    ZEL_RETURN_IF_ERROR(cleanFeatures(xic, &candidates));
    const auto merge = [this, &xic](std::vector<Feature>* features) {
        return mergeContiguousFeatures(
            xic, settings().adaptiveMergeIntensityRatio, settings().adaptiveMinSkew, features);
    };
    if (m_mergeBeforeScoring) {
        ZEL_RETURN_IF_ERROR(merge(&candidates));
    }
    ZEL_RETURN_IF_ERROR(distributePSMToFeatures(psms, &candidates));
    std::vector<Feature> features;
    ZEL_RETURN_IF_ERROR(filterFeaturesByScore(candidates, &features));
    if (!m_mergeBeforeScoring) {
        std::vector<Feature> near;
        ZEL_RETURN_IF_ERROR(filterFeaturesByDistance(features, &near));
        ZEL_RETURN_IF_ERROR(merge(&near));
        features = std::move(near);
    }
    return std::optional<Ms1Feature>(assembleFeature(psms, xic, smoothed, extremes, features));
}

Error MsFeatureFinderSegV2::findFeaturesBeforeFilters(const PlotBase& xic,
                                                      QList<QPointF>* smoothed,
                                                      QList<QPointF>* extremes,
                                                      std::vector<Feature>* features) const
{
    Error e;
    const double rate =
        segmentation::limitedRate(settings().adaptiveSamplesPerMinute, kMaxSamplesPerMinute);
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> resampled, onGrid(xic, rate));
    const bool hasWidth = std::abs(m_kernelFilterWidth) > kFillerHeight;
    const double sigmaMinutes =
        hasWidth ? m_kernelFilterWidth / kFilterWidthPerSigma : settings().adaptiveSmoothingStDev;
    std::vector<double> kernel;
    ZEL_RETURN_IF_ERROR(getConvolutionKernel(rate * sigmaMinutes, &kernel));
    *smoothed = zel::smoothed(resampled, kernel);
    const PlotBase curve(resampled);
    ZEL_RETURN_IF_ERROR(extremeSegmentation(*smoothed, extremes));
    ZEL_RETURN_IF_ERROR(adjustExtremes(curve, extremes));
    ZEL_RETURN_IF_ERROR(extractFeatures(curve, *extremes, features));
    return e;
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

Error MsFeatureFinderSegV2::extremeSegmentation(const QList<QPointF>& smoothed,
                                                QList<QPointF>* extremes) const
{
    *extremes = segmentation::alternatingRealExtremes(smoothed);
    return kNoError;
}

Error MsFeatureFinderSegV2::adjustExtremes(const PlotBase& plot, QList<QPointF>* extremes)
{
    segmentation::moveExtremesTo(plot, kFillerHeight, extremes);
    return kNoError;
}

Error MsFeatureFinderSegV2::extractFeatures(const PlotBase& plot,
                                            const QList<QPointF>& extremes,
                                            std::vector<Feature>* features) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::cutFeatures(plot, extremes, kFillerHeight, features));
    return e;
}

Error MsFeatureFinderSegV2::mergeContiguousFeatures(const PlotBase& plot,
                                                    double intensityRatio,
                                                    double minSkew,
                                                    std::vector<Feature>* features)
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::mergeContiguousFeatures(plot, intensityRatio, minSkew, features));
    return e;
}

} // namespace zel
