#pragma once

#include "common/stable/Error.h"
#include "ms_feature/records/MsFeatureFinderSettings.h"

#include <QList>
#include <QPointF>

/// The arithmetic of MsFeatureFinderPrototype. A window is a QPointF that holds its two ends in any
/// order, minutes.
namespace zel::prototype {

/// The penalty of a window's width: 1 without width, 0 from `prototypeElasticity` times
/// `xicAreaTimeWindow` on, (1 + cos(pi * share^prototypePower)) / 2 in between.
double windowScore(const MsFeatureFinderSettings& settings, double start, double end);

/// The score of a window on a curve: the sum of its points inside, times the penalty.
double intervalScore(const MsFeatureFinderSettings& settings,
                     const QList<QPointF>& points,
                     const QPointF& range);

/// The same in constant time on a regular curve of running sums. A time in the first half of a
/// sample's slot reads the sample before.
/// \param rate    samples per minute
/// \param firstX  where the first slot begins
double cumulativeScore(const MsFeatureFinderSettings& settings,
                       const QList<QPointF>& cumulative,
                       double rate,
                       double firstX,
                       const QPointF& range);

/// Climbs to the window with the best score. At most 601 windows are scored.
/// \param center  the middle of the window to start with
/// \param range   the ends, ascending
/// \return kError for fewer than two points
Error optimize(const MsFeatureFinderSettings& settings,
               const QList<QPointF>& cumulative,
               double rate,
               double firstX,
               double center,
               QPointF* range);

/// Raises `apex` to the highest point from `start` to `end`, the first of equals.
/// \return kError when no point there is higher than `apex` on entry, which then stays
Error findApex(const QList<QPointF>& points, double start, double end, QPointF* apex);

/// Replaces each y by the sum of all y up to and including it.
void preintegrate(QList<QPointF>* points);

/// Fades a curve to zero outside the window, over flanks that reach half-way to the ends of the
/// curve for a narrow window and all the way for a wide one.
void easeInOut(QList<QPointF>* points, double start, double end);

} // namespace zel::prototype
