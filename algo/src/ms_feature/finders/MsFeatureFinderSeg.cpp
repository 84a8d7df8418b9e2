#include "ms_feature/finders/MsFeatureFinderSeg.h"

#include "common/core_mini/src/algo/numeric/Convolution.h"
#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

constexpr double kMaxSamplesPerMinute = 40.0;
constexpr double kFillerHeight = 0.0; ///< a maximum of exactly this height is a filler
constexpr double kKeepFillers = -1.0;

/// Replaces the heights by their convolution with the kernel.
void smooth(const std::vector<double>& kernel, QList<QPointF>* curve)
{
    std::vector<double> heights;
    heights.reserve(static_cast<std::size_t>(curve->size()));
    std::transform(curve->cbegin(),
                   curve->cend(),
                   std::back_inserter(heights),
                   [](const QPointF& p) { return p.y(); });
    std::vector<double> smoothed;
    if (!core::conv(heights, kernel, 0, &smoothed)) {
        return;
    }
    for (std::size_t i = 0; i < std::min(heights.size(), smoothed.size()); ++i) {
        (*curve)[static_cast<qsizetype>(i)].setY(smoothed[i]);
    }
}

} // namespace

MsFeatureFinderSeg::MsFeatureFinderSeg(const MsFeatureFinderSettings& settings)
    : MsFeatureFinderSegBase(settings)
{}

MsFeatureFinderSeg::~MsFeatureFinderSeg() = default;

Result<std::optional<Ms1Feature>> MsFeatureFinderSeg::findFeature(
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
    ZEL_RETURN_IF_ERROR(distributePSMToFeatures(psms, &candidates));
    std::vector<Feature> matched;
    ZEL_RETURN_IF_ERROR(filterFeaturesByScore(candidates, &matched));
    std::vector<Feature> features;
    ZEL_RETURN_IF_ERROR(filterFeaturesByDistance(matched, &features));
    return std::optional<Ms1Feature>(assembleFeature(psms, xic, smoothed, extremes, features));
}

Error MsFeatureFinderSeg::findFeaturesBeforeFilters(const PlotBase& xic,
                                                    QList<QPointF>* smoothed,
                                                    QList<QPointF>* extremes,
                                                    std::vector<Feature>* features) const
{
    Error e;
    const double rate =
        segmentation::limitedRate(settings().adaptiveSamplesPerMinute, kMaxSamplesPerMinute);
    ZEL_ASSIGN_OR_RETURN(*smoothed, onGrid(xic, rate));
    // The width goes by the setting as it stands, although the grid was laid with the limited rate.
    smooth(segmentation::smoothingKernel(settings().adaptiveSamplesPerMinute *
                                         settings().adaptiveSmoothingStDev),
           smoothed);
    ZEL_RETURN_IF_ERROR(extremeSegmentation(*smoothed, extremes));
    ZEL_RETURN_IF_ERROR(adjustExtremes(xic, extremes));
    ZEL_RETURN_IF_ERROR(extractFeatures(xic, *extremes, features));
    return e;
}

Error MsFeatureFinderSeg::extremeSegmentation(const QList<QPointF>& smoothed,
                                              QList<QPointF>* extremes) const
{
    *extremes = segmentation::alternatingExtremes(smoothed);
    return kNoError;
}

Error MsFeatureFinderSeg::adjustExtremes(const PlotBase& plot, QList<QPointF>* extremes)
{
    segmentation::moveExtremesTo(plot, kFillerHeight, extremes);
    return kNoError;
}

Error MsFeatureFinderSeg::extractFeatures(const PlotBase& plot,
                                          const QList<QPointF>& extremes,
                                          std::vector<Feature>* features) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::cutFeatures(plot, extremes, kKeepFillers, features));
    return e;
}

} // namespace zel
