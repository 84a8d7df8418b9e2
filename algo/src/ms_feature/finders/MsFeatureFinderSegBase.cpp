#include "ms_feature/finders/MsFeatureFinderSegBase.h"

#include "ms_feature/diagrams/FeatureDiagrams_p.h"
#include "ms_feature/diagrams/GraphyCollection.h"
#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"
#include "ms_feature/segmentation/SegmentationPolicy_p.h"

#include <QFile>

namespace zel {

using segmentation::Policy;

namespace {

QString diagramTitle(const PeptideSpectrumMatch& psm)
{
    return QStringLiteral("%1 - z=%2").arg(psm.sequence(), QString::number(psm.charge()));
}

} // namespace

MsFeatureFinderSegBase::MsFeatureFinderSegBase(const MsFeatureFinderSettings& settings)
    : MsFeatureFinderBase(settings)
{}

MsFeatureFinderSegBase::~MsFeatureFinderSegBase()
{
    constexpr int diagramsPerFeature = 4;
    const QString& path = settings().adaptiveHtmlDumpFilename;
    if (!path.isEmpty()) {
        GraphyCollection::instance().flush(QFile::encodeName(path).constData(), diagramsPerFeature);
    }
}

Result<std::optional<Ms1Feature>> MsFeatureFinderSegBase::findBy(
    const Policy& policy, const QList<PeptideSpectrumMatch>& psms, const PlotBase& xic) const
{
    using Merging = Policy::Merging;
    Error e;
    QList<QPointF> smoothed;
    QList<QPointF> extremes;
    std::vector<Feature> features;
    ZEL_RETURN_IF_ERROR(cutBy(policy, xic, &smoothed, &extremes, &features));
    if (features.empty()) {
        return std::optional<Ms1Feature>();
    }
    ZEL_RETURN_IF_ERROR(cleanFeatures(xic, &features));
    if (policy.merging == Merging::BeforeScoring) {
        ZEL_RETURN_IF_ERROR(mergeFeatures(xic, &features));
    }
    segmentation::distributePSMToFeatures(psms, &features);
    ZEL_ASSIGN_OR_RETURN(features,
                         segmentation::filterByShare(
                             features, &Feature::score, settings().adaptiveScoreNegligibleRatio));
    if (policy.merging != Merging::BeforeScoring) {
        ZEL_ASSIGN_OR_RETURN(
            features,
            segmentation::filterByDistance(features, settings().xicTimeWindowToExtract()));
    }
    if (policy.merging == Merging::AtEnd) {
        ZEL_RETURN_IF_ERROR(mergeFeatures(xic, &features));
    }
    if (!settings().adaptiveHtmlDumpFilename.isEmpty()) {
        diagrams::appendFinderDiagrams({xic, smoothed, extremes, features, psms},
                                       diagramTitle(maxScorePSM()));
    }
    return std::optional<Ms1Feature>(segmentation::assembleFeature(features, xic));
}

Error MsFeatureFinderSegBase::cutBy(const Policy& policy,
                                    const PlotBase& xic,
                                    QList<QPointF>* smoothed,
                                    QList<QPointF>* extremes,
                                    std::vector<Feature>* features)
{
    constexpr double noFillers = -1.0;
    Error e;
    ZEL_ASSIGN_OR_RETURN(const QList<QPointF> samples, onGrid(xic, policy.samplesPerMinute));
    *smoothed = segmentation::smoothed(samples, policy.kernel, policy.smoothsMagnitudes);
    *extremes = policy.extremesOf(*smoothed);
    const PlotBase plot = policy.cutsOnGrid ? PlotBase(samples) : xic;
    segmentation::adjustExtremes(plot, policy.fillerHeight, extremes);
    ZEL_RETURN_IF_ERROR(segmentation::extractFeatures(
        plot, *extremes, policy.keepsFillers ? noFillers : policy.fillerHeight, features));
    return e;
}

/// The plot on a regular grid, each sample the mean height of its bin.
Result<QList<QPointF>> MsFeatureFinderSegBase::onGrid(const PlotBase& xic, double samplesPerMinute)
{
    Error e;
    constexpr double wholePlot = -1.0;
    ZEL_ASSIGN_OR_RETURN(const int sampleCount,
                         segmentation::gridSampleCount(xic, samplesPerMinute));
    QList<QPointF> samples;
    ZEL_RETURN_IF_ERROR(resamplePlot(xic, &samples, sampleCount, wholePlot, wholePlot));
    return samples;
}

/// Drops what has a negligible area, trims the flanks and removes overlaps of neighbours.
Error MsFeatureFinderSegBase::cleanFeatures(const PlotBase& xic,
                                            std::vector<Feature>* features) const
{
    Error e;
    ZEL_ASSIGN_OR_RETURN(*features,
                         segmentation::filterByShare(
                             *features, &Feature::auc, settings().adaptiveAucNegligibleRatio));
    for (Feature& feature : *features) {
        ZEL_RETURN_IF_ERROR(
            segmentation::tightenFeature(xic, settings().adaptiveTightenNegligibleRatio, &feature));
    }
    segmentation::removeOverlaps(xic, features);
    return e;
}

Error MsFeatureFinderSegBase::mergeFeatures(const PlotBase& xic,
                                            std::vector<Feature>* features) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::mergeContiguousFeatures(
        xic, settings().adaptiveMergeIntensityRatio, settings().adaptiveMinSkew, features));
    return e;
}

} // namespace zel
