#pragma once

#include "common/stable/Error.h"
#include "common/stable/PlotBase.h"
#include "ms_feature/records/SegmentationFeature.h"

#include <QList>
#include <QPointF>

#include <vector>

namespace zel::segmentation {

/// A sample at which a curve turns.
struct Turn
{
    qsizetype index = 0;
    bool isMaximum = false;
    /// One of the steps to the neighbours is flat: the turn is the edge of a plateau, or an end.
    bool fromFlatStep = false;
};

/// The samples at which the curve turns, ascending. A step is flat when its two heights are equal
/// or differ by less than `flatThreshold`. Between two steps that are not flat, a sample turns when
/// it is strictly above or below both neighbours; at the edge of a plateau it is a maximum when the
/// one step that is not flat leads down from it, else a minimum. At the ends of the curve the
/// missing step is flat.
std::vector<Turn> turnsOf(const QList<QPointF>& curve, double flatThreshold);

/// The turns of a curve as a list that alternates minimum, maximum, ..., minimum. Of maxima that
/// follow one another the highest stays (the first one of several); between two minima that follow
/// one another stands a filler, a maximum of height 0 at their midpoint. A maximum at the begin is
/// preceded by a minimum of height 0 at its time; one at the end is followed by the last sample.
QList<QPointF> alternatingExtremes(const QList<QPointF>& curve);

/// The same for a curve that is nowhere negative, with steps of less than 1e-9 taken as flat. A
/// plateau or falling begin of the curve is preceded by its first sample as a minimum, not by one
/// of height 0. Of minima that follow one another only the first and the last stay, with one filler
/// between them. Negative maxima are dropped.
QList<QPointF> alternatingRealExtremes(const QList<QPointF>& curve);

/// Moves the extremes onto a plot: each minimum to the lowest point between the midpoints to its
/// neighbours, then each maximum to the highest, counting from the moved minima. An extreme without
/// points in reach stays, as does a filler, which is a maximum not more than `fillerHeight` away
/// from 0.
void adjustExtremes(const PlotBase& plot, double fillerHeight, QList<QPointF>* extremes);

/// One candidate from minimum to minimum, with area and half-maximum range measured on the plot.
/// Neighbours share their cut point.
/// \param fillerHeight  a candidate whose apex is a filler, or that has no area, is skipped;
///                      negative: none is
Error extractFeatures(const PlotBase& plot,
                      const QList<QPointF>& extremes,
                      double fillerHeight,
                      std::vector<SegmentationFeature>* features);

} // namespace zel::segmentation
