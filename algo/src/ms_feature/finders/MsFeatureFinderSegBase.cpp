#include "ms_feature/finders/MsFeatureFinderSegBase.h"

#include "ms_feature/diagrams/FeatureDiagrams_p.h"
#include "ms_feature/diagrams/GraphyCollection.h"
#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"

#include <QFile>

#include <algorithm>
#include <cmath>

namespace zel {

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

Error MsFeatureFinderSegBase::cleanFeatures(const PlotBase& xic,
                                            std::vector<Feature>* features) const
{
    Error e;
    std::vector<Feature> large;
    ZEL_RETURN_IF_ERROR(filterFeaturesByAUC(*features, &large));
    for (Feature& feature : large) {
        ZEL_RETURN_IF_ERROR(tightenFeature(xic, &feature));
    }
    segmentation::removeOverlaps(xic, &large);
    *features = std::move(large);
    return e;
}

Error MsFeatureFinderSegBase::filterFeaturesByAUC(const std::vector<Feature>& in,
                                                  std::vector<Feature>* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::filterByShare(in, &Feature::auc, settings().adaptiveAucNegligibleRatio, out));
    return e;
}

Error MsFeatureFinderSegBase::filterFeaturesByScore(const std::vector<Feature>& in,
                                                    std::vector<Feature>* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::filterByShare(
        in, &Feature::score, settings().adaptiveScoreNegligibleRatio, out));
    return e;
}

Error MsFeatureFinderSegBase::filterFeaturesByDistance(const std::vector<Feature>& in,
                                                       std::vector<Feature>* out) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::filterByDistance(in, settings().xicTimeWindowToExtract(), out));
    return e;
}

Error MsFeatureFinderSegBase::tightenFeature(const PlotBase& plot, Feature* feature) const
{
    Error e;
    ZEL_RETURN_IF_ERROR(
        segmentation::tightenFeature(plot, settings().adaptiveTightenNegligibleRatio, feature));
    return e;
}

Error MsFeatureFinderSegBase::distributePSMToFeatures(const QList<PeptideSpectrumMatch>& psms,
                                                      std::vector<Feature>* features)
{
    segmentation::distributePsms(psms, features);
    return kNoError;
}

Ms1Feature MsFeatureFinderSegBase::assembleFeature(const QList<PeptideSpectrumMatch>& psms,
                                                   const PlotBase& xic,
                                                   const QList<QPointF>& smoothed,
                                                   const QList<QPointF>& extremes,
                                                   const std::vector<Feature>& features) const
{
    if (!settings().adaptiveHtmlDumpFilename.isEmpty()) {
        const QString title =
            QStringLiteral("%1 - z=%2")
                .arg(maxScorePSM().sequence(), QString::number(maxScorePSM().charge()));
        diagrams::appendFinderDiagrams({xic, smoothed, extremes, features, psms}, title);
    }
    return segmentation::assembleFeature(features, xic);
}

Error MsFeatureFinderSegBase::nearestPointIndex(const PlotBase& plot, double time, int* index)
{
    Error e;
    ZEL_RETURN_IF_ERROR(segmentation::nearestPointIndex(plot, time, index));
    return e;
}

} // namespace zel
