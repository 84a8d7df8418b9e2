#pragma once

#include "common/ms_types/Interval.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"

#include <QList>
#include <QPointF>

#include <utility>

namespace zel {

/// The peaks of one XIC, with the places at which each may be split, and what its callers ask of
/// them. All times are in the unit of the XIC, minutes by rule. A plain value.
class ZEL_EXPORT XicIntegratorResult
{
public:
    struct XicPeak
    {
        Interval<double> limits;
        QList<std::pair<double, double>> splits; ///< position and weight, in any order
    };

    /// No peaks, no points, and a time of 0.
    XicIntegratorResult() = default;
    /// \param retentionTime  where the target is expected
    /// \param xic            (minutes, intensity), ascending in time
    /// \param minPeakWidth   narrower peaks, and pieces of peaks, are dropped
    XicIntegratorResult(double retentionTime, const QList<QPointF>& xic, double minPeakWidth);

    /// Appends a peak, unless it is narrower than the minimum or overlaps an earlier one: then it
    /// is dropped.
    void addXicPeak(const Interval<double>& limits, const QList<std::pair<double, double>>& splits);

    /// Whether a peak holds the retention time, its limits included.
    bool containsRetentionTime() const { return m_containsRetentionTime; }

    /// In order of addition.
    QList<XicPeak> allPeakLimitsAndSplits() const { return m_peaks; }
    /// The first peak that holds the retention time; a default one when there is none.
    XicPeak peaksLimitsAndSplitsContainingRetentionTime() const;

    /// The pieces into which their splits cut all peaks. Pieces narrower than the minimum are left
    /// out.
    /// \return kBadParameterError "Start is greater than end" for a split outside its peak
    Result<QList<Interval<double>>> allPeakLimitsSplitsApplied() const;
    /// The same of the peak that holds the retention time; empty when there is none.
    Result<QList<Interval<double>>> peakLimitsWithRetentionTimeSplitsApplied() const;
    /// The first of these pieces that holds the retention time; (0, 0) when there is none.
    Result<Interval<double>> peakLimitContainingRetentionTime() const;

    /// The apex inside the limits: its time and, with more than five points there, the height that
    /// smoothing by five points leaves it. (0, 0) when there are no points.
    Result<QPointF> apexPointByPeakLimits(const Interval<double>& limits) const;

    /// Whether the candidate shares more than 20 % of its union with any of the others, covers it,
    /// or is covered by it.
    static bool checkIfPeakOverlaps(const Interval<double>& candidate,
                                    const QList<Interval<double>>& others);

private:
    QList<XicPeak> m_peaks;
    bool m_containsRetentionTime = false;
    double m_retentionTime = 0.0;
    QList<QPointF> m_xic;
    double m_minPeakWidth = 0.0;
};

} // namespace zel
