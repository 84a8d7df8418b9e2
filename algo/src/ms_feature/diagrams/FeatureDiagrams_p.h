#pragma once

#include "common/stable/PlotBase.h"
#include "ms_feature/records/Ms1Feature.h"
#include "ms_feature/records/SegmentationFeature.h"

#include <QList>
#include <QPointF>
#include <QString>

#include <vector>

/// The diagrams that show what the adaptive finders and the alignment decided. All of them go to
/// the end of GraphyCollection.
namespace zel::diagrams {

/// What an adaptive finder saw on its way to a feature.
struct FinderTrace
{
    const PlotBase& xic;
    const QList<QPointF>& smoothed;
    const QList<QPointF>& extremes;
    const std::vector<SegmentationFeature>& features;
    const QList<PeptideSpectrumMatch>& psms;
};

/// Appends four diagrams: the XIC; the smoothed curve; the XIC with the extremes; the XIC with the
/// features, their half-maximum ranges and the matches. One without a curve is left blank.
void appendFinderDiagrams(const FinderTrace& trace, const QString& title);

/// The regular grid that curves of several samples share, minutes.
struct SharedGrid
{
    double start = 0.0;
    double end = 0.0;
    double step = 0.0;
};

/// Appends, one sample a row, each curve before and after its shift, with the intervals and the
/// whole minutes.
/// \param shifts  grid steps
void appendShiftedCurves(const QList<QList<double>>& plots,
                         const QList<int>& shifts,
                         const QList<Ms1Feature*>& features,
                         const SharedGrid& grid,
                         double correlation);

/// Appends the sum of the shifted curves with the intervals found on it and the matches of all
/// samples.
void appendSummedCurve(const QList<double>& summed,
                       const QList<Ms1Feature*>& features,
                       const SharedGrid& grid,
                       const Ms1Feature& summedFeature);

/// Appends the XIC of each sample with its intervals, on the sample's own time. Once 1000 diagrams
/// are there, in full rows of three, they go to "FeatureRefinerAlignment.<number>.html" in the
/// current folder.
void appendFeatures(const QList<Ms1Feature*>& features);

} // namespace zel::diagrams
