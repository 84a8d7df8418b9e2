#pragma once

#include "WhmParams.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

#include <span>

namespace zel {

// The arithmetic of MultiIsotopeXic on XICs that are already cut. All XICs of a call share their
// times.

/// \return kError unless all XICs have the size of the first
Error checkHaveOneSize(const QList<QList<QPointF>>& xics);

/// The sum of all XICs at each point of the first; empty when there is none.
QList<QPointF> sumXics(const QList<QList<QPointF>>& xics);

/// Each point becomes the mean over window / 2 (whole number) neighbours to each side, as far as
/// there are.
QList<QList<QPointF>> smoothXics(const QList<QList<QPointF>>& xics, int window);

/// The weighted harmonic mean of the smoothed XICs at each point of the first. \return kError
/// unless there is one positive weight for each of at least one XIC
Result<QList<QPointF>> whmXics(const QList<QList<QPointF>>& xics,
                               const QList<double>& weights,
                               const WhmParams& params);

/// The harmonic mean of `values` above a floor: each value is lifted by the offset `c`, and what an
/// ion without any signal would give, times 1.1, is taken off; not below 0. \return kError for
/// lists of unequal or no size, and for a weight that is not positive
Result<double> weightedHarmonicMean(std::span<const double> values,
                                    std::span<const double> weights,
                                    double c);

/// The principal branch of w e^w = x for x >= 0; 0 for an `x` that is negative or not finite.
double lambertW(double x);

/// `a` less the share 1 - f of `b` at each point, not below 0. \return kError unless both have the
/// same times, at least one
Result<QList<QPointF>> subtract(const QList<QPointF>& a, const QList<QPointF>& b, double f);

} // namespace zel
