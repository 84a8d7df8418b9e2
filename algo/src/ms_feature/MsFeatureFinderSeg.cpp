#include "ms_feature/MsFeatureFinderSeg.h"

#include "common/core_mini/src/algo/Convolution.h"
#include "ms_feature/SegmentationCurve_p.h"
#include "ms_feature/SegmentationExtremes_p.h"
#include "ms_feature/SegmentationFeatures_p.h"

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

MsFeatureFinderSeg::Feature::Feature(const Interval<double>& timeInterval,
                                     double auc,
                                     const QPointF& apex,
                                     const Interval<double>& halfMaxInterval)
    : m_timeInterval(timeInterval)
    , m_auc(auc)
    , m_apex(apex)
    , m_halfMaxInterval(halfMaxInterval)
{}

double MsFeatureFinderSeg::Feature::FWHM() const
{
    return std::abs(m_halfMaxInterval.end - m_halfMaxInterval.start);
}

double MsFeatureFinderSeg::Feature::duration() const
{
    return std::abs(m_timeInterval.end - m_timeInterval.start);
}

double MsFeatureFinderSeg::Feature::averageIntensity() const
{
    return duration() > 0.0 ? m_auc / duration() : 0.0;
}

double MsFeatureFinderSeg::Feature::score() const
{
    return m_auc * static_cast<double>(m_psms.size());
}

double MsFeatureFinderSeg::Feature::distance(double time) const
{
    if (m_timeInterval.start <= time && time <= m_timeInterval.end) {
        return 0.0;
    }
    return std::min(std::abs(time - m_timeInterval.start), std::abs(time - m_timeInterval.end));
}

void MsFeatureFinderSeg::Feature::mergeFrom(const Feature& other)
{
    m_timeInterval.start = std::min(m_timeInterval.start, other.m_timeInterval.start);
    m_timeInterval.end = std::max(m_timeInterval.end, other.m_timeInterval.end);
    m_auc += other.m_auc;
    if (other.m_apex.y() > m_apex.y()) {
        m_apex = other.m_apex;
        m_apexAveragineCorrelation = other.m_apexAveragineCorrelation;
        m_halfMaxInterval = other.m_halfMaxInterval;
    }
    m_psms.append(other.m_psms);
}

MsFeatureFinderSeg::MsFeatureFinderSeg(const MsFeatureFinderSettings& settings)
    : MsFeatureFinderBase(settings)
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
    std::vector<Feature> large;
    ZEL_RETURN_IF_ERROR(filterFeaturesByAUC(candidates, &large));
    for (Feature& feature : large) {
        ZEL_RETURN_IF_ERROR(tightenFeature(xic, &feature));
    }
    segmentation::removeOverlaps(xic, &large);
    ZEL_RETURN_IF_ERROR(distributePSMToFeatures(psms, &large));
    std::vector<Feature> matched;
    ZEL_RETURN_IF_ERROR(filterFeaturesByScore(large, &matched));
    std::vector<Feature> features;
    ZEL_RETURN_IF_ERROR(filterFeaturesByDistance(matched, &features));
    return std::optional<Ms1Feature>(segmentation::assembleFeature(features, xic));
}

Error MsFeatureFinderSeg::findFeaturesBeforeFilters(const PlotBase& xic,
                                                    QList<QPointF>* smoothed,
                                                    QList<QPointF>* extremes,
                                                    std::vector<Feature>* features) const
{
    Error e;
    constexpr double wholePlot = -1.0;
    const double rate =
        segmentation::limitedRate(settings().adaptiveSamplesPerMinute, kMaxSamplesPerMinute);
    ZEL_ASSIGN_OR_RETURN(const int sampleCount, segmentation::gridSampleCount(xic, rate));
    ZEL_RETURN_IF_ERROR(resamplePlot(xic, smoothed, sampleCount, wholePlot, wholePlot));
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

Error MsFeatureFinderSeg::filterFeaturesByAUC(const std::vector<Feature>& in,
                                              std::vector<Feature>* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::filterByShare(in, &Feature::auc, settings().adaptiveAucNegligibleRatio, out));
    return e;
}

Error MsFeatureFinderSeg::filterFeaturesByScore(const std::vector<Feature>& in,
                                                std::vector<Feature>* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::filterByShare(
        in, &Feature::score, settings().adaptiveScoreNegligibleRatio, out));
    return e;
}

Error MsFeatureFinderSeg::filterFeaturesByDistance(const std::vector<Feature>& in,
                                                   std::vector<Feature>* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::filterByDistance(in, settings().xicTimeWindowToExtract(), out));
    return e;
}

Error MsFeatureFinderSeg::tightenFeature(const PlotBase& plot, Feature* feature) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::tightenFeature(plot, settings().adaptiveTightenNegligibleRatio, feature));
    return e;
}

Error MsFeatureFinderSeg::distributePSMToFeatures(const QList<PeptideSpectrumMatch>& psms,
                                                  std::vector<Feature>* features)
{
    segmentation::distributePsms(psms, features);
    return kNoError;
}

Error MsFeatureFinderSeg::nearestPointIndex(const PlotBase& plot, double time, int* index)
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::nearestPointIndex(plot, time, index));
    return e;
}

} // namespace zel
