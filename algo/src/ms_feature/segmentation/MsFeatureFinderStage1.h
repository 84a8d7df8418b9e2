#pragma once

#include "common/ms_types/Interval.h"
#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QPointF>

namespace zel {

class PlotBase;

/// The geometry of chromatographic peaks that the targeted finders share. Plots are (minutes,
/// intensity). No state, and no operation changes its plot: safe to call from several threads.
class ZEL_EXPORT MsFeatureFinderStage1
{
public:
    struct Peak
    {
        Interval<double> interval; ///< the window around the apex, minutes
        QPointF apex;              ///< (minutes, intensity)
        double fwhm = 0.0;         ///< full width at half maximum, minutes
    };

    /// Where the plot crosses half the apex's height on either side of it, minutes. A side without
    /// a crossing stays at the apex's time, as do both sides of an apex of height 0 or less.
    /// \return no error
    static Error findHalfMaxRange(const PlotBase& plot,
                                  const QPointF& apex,
                                  double* left,
                                  double* right);

    /// The same, with `left` not below `start` and `right` not above `end`.
    static Error findHalfMaxRange(const PlotBase& plot,
                                  const QPointF& apex,
                                  double start,
                                  double end,
                                  double* left,
                                  double* right);

    /// The highest point of the plot and its half-maximum range.
    static Error findApexAndFWHM(const PlotBase& plot, QPointF* apex, double* left, double* right);

    /// The area between two times in minutes, in intensity * seconds (trapezoidal rule).
    /// \return kBadParameterError for start above end; `auc` is then unchanged
    static Error getAreaUnderCurve(const PlotBase& plot, double start, double end, double* auc);

    /// The peak with the greatest product of height and full width at half maximum; of several the
    /// first. Candidates are the points strictly above both neighbours, beyond the ends of the
    /// plot being 0; of these, a point inside the window of the best so far that is lower than its
    /// apex is passed over.
    ///
    /// A width is measured between the places where the curve comes down to half height, which are
    /// interpolated on the chord from the apex to the first point at or below that height; the
    /// first and the last point of the plot end a flank as they stand.
    /// \param widthFactor  how many widths the window extends to each side of the apex; it is cut
    ///                     at the ends of the plot
    /// \return the window of the whole plot with apex (0, 0) when there is no candidate;
    ///         kBadParameterError for fewer than two points
    static Result<Peak> findMajorPeak(const PlotBase& plot, double widthFactor);
};

} // namespace zel
