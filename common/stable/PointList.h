#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <QList>
#include <QPointF>

namespace zel {

class PlotBase;

// Free helpers over point lists: spectra as (m/z, intensity) and chromatograms as (minutes,
// intensity), ascending in x.

/// Copies the points with x between the limits into `out`, which is cleared first.
/// \param inclusive  true: start <= x <= end; false: start < x < end
/// \note O(log n + points copied).
ZEL_EXPORT void getPointsInBetween(
    const QList<QPointF>& in, double start, double end, QList<QPointF>& out, bool inclusive);

/// The highest y of the points with start <= x <= end; 0 when there are none.
/// \param interpolateAtLimits  true: the heights of the line through the points at the limits count
/// too
ZEL_EXPORT double getYMaxBetween(const QList<QPointF>& in,
                                 double start,
                                 double end,
                                 bool interpolateAtLimits);

/// Keeps at most `maxCount` points, those of highest y; of points of equal y the earlier ones. NaN
/// counts as lowest. It is how the limits on the ions of a scan are carried out.
/// \param keepOrder  true: the kept points stay in their order; false: they are left in descending
///                   y
/// \return how many points were removed
/// \note O(n) with `keepOrder`.
ZEL_EXPORT int removeLowIntensePoints(QList<QPointF>& points, int maxCount, bool keepOrder);

/// Smooths y in place by a Gaussian kernel over x, normalised at each point, so that unevenly
/// spaced points and the ends keep their level (Nadaraya 1964, Watson 1964). The kernel is cut off
/// at 4 sigma.
/// \param sigma  standard deviation of the kernel, in units of x
/// \return kBadParameterError unless sigma is positive and finite; the plot is then unchanged
ZEL_EXPORT Error gaussianSmooth(PlotBase& plot, double sigma);

} // namespace zel
