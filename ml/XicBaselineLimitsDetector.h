#pragma once

#include "common/core_mini/src/algo/parameters/XicDetectionOptions.h"
#include "common/ms_types/Interval.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

#include <memory>

namespace zel {

/// Finds where the peaks of an XIC leave the baseline and come back to it.
///
/// 1. Gaps of a few samples are bridged and the trace is smoothed by one sample; fourth differences
///    give the noise.
/// 2. The baseline is found on a smoother copy by peak clipping (SNIP; see ml/XicSignal_p.h).
/// 3. A peak is a run of samples above the baseline by `lowNoiseFactor` times the noise that holds
///    one above it by `highNoiseFactor` times: hysteresis, so that a weak flank belongs to its
///    peak, but noise makes none. A run that does not fall again before an end of the trace is
///    none.
/// 4. Each limit goes on outwards as long as the trace falls, then inwards past samples below
///    `relativeHeight` of the run's apex, and is the time of a sample.
///
/// Close peaks with signal between them are one run: see XicPeakSplitter. Serves one thread at a
/// time.
class ZEL_EXPORT XicBaselineLimitsDetector
{
public:
    XicBaselineLimitsDetector();
    ~XicBaselineLimitsDetector();
    XicBaselineLimitsDetector(const XicBaselineLimitsDetector&) = delete;
    XicBaselineLimitsDetector& operator=(const XicBaselineLimitsDetector&) = delete;

    /// Takes over the options; before it, they stand at their defaults.
    /// \return kBadParameterError, with nothing changed, for a factor or window that is negative or
    ///         not finite
    Error init(const XicBaselineLimitsDetectorOptions& options);

    /// The limits of all peaks of the trace, ascending and apart from each other; none with fewer
    /// than three samples above 0.
    /// \param xic  (minutes, intensity), times not descending
    /// \return kBadParameterError when a value is not finite or the times descend
    Result<QList<Interval<double>>> integrateXIC(const QList<QPointF>& xic);

    /// The peaks that hold the time, give or take one sample; if there is none, the nearest one,
    /// provided that it ends or starts within `minPeakWidth` of the time.
    /// \param mode  1; kBadParameterError for any other
    Result<QList<Interval<double>>> integrateXIC(const QList<QPointF>& xic,
                                                 double retentionTime,
                                                 int mode);

private:
    class Private;
    std::unique_ptr<Private> m_private;
};

} // namespace zel
