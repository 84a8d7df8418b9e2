#pragma once

#include "common/ms_types/Interval.h"
#include "common/stable/Error.h"
#include "common/stable/Export.h"
#include "common/stable/PlotBase.h"
#include "ms_feature/records/PeptideSpectrumMatch.h"

#include <QList>
#include <QPointF>
#include <QString>

namespace zel {

/// One chromatographic interval of a feature, with its apex and area. A plain value.
class ZEL_EXPORT ApexInterval
{
public:
    /// All zero.
    ApexInterval() = default;
    /// Mind the order of the arguments: it is not that of the accessors below.
    ApexInterval(const Interval<double>& interval,
                 double fwhm,
                 const QPointF& apex,
                 double auc,
                 double apexAveragineCorrelation);

    /// Start and end, minutes.
    const Interval<double>& interval() const { return m_interval; }
    void setInterval(const Interval<double>& interval) { m_interval = interval; }

    /// (minutes, intensity).
    const QPointF& apex() const { return m_apex; }
    void setApex(const QPointF& apex) { m_apex = apex; }

    /// The correlation of the apex spectrum with an averagine pattern; 0 when nobody computed it.
    double apexAveragineCorrelation() const { return m_apexAveragineCorrelation; }
    void setApexAveragineCorrelation(double value) { m_apexAveragineCorrelation = value; }

    /// The full width at half maximum, minutes.
    double fwhm() const { return m_fwhm; }
    void setFwhm(double fwhm) { m_fwhm = fwhm; }

    /// The area under the curve inside the interval; intensity * seconds where a finder run filled
    /// it.
    double auc() const { return m_auc; }
    void setAuc(double auc) { m_auc = auc; }

    /// Moves interval and apex by `dt` minutes.
    void translate(double dt);

private:
    Interval<double> m_interval;
    QPointF m_apex;
    double m_apexAveragineCorrelation = 0.0;
    double m_fwhm = 0.0;
    double m_auc = 0.0;
};

/// The MS1 feature of one peptide ion: its XIC, one or more time intervals on it, and the matches
/// that belong to it. Two or more intervals are a proposal to split. A plain value.
class ZEL_EXPORT Ms1Feature
{
public:
    Ms1Feature() = default;
    Ms1Feature(const Ms1Feature&) = default;
    Ms1Feature(Ms1Feature&&) = default;
    Ms1Feature& operator=(const Ms1Feature&) = default;
    Ms1Feature& operator=(Ms1Feature&&) = default;
    virtual ~Ms1Feature();

    QList<ApexInterval> timeIntervalList() const { return m_timeIntervalList; }
    void setTimeIntervalList(const QList<ApexInterval>& list) { m_timeIntervalList = list; }

    /// The shift in minutes that cross-sample alignment has applied so far: what must be added to
    /// this feature's times to reach the shared time axis.
    double warpOffset() const { return m_warpOffset; }
    void setWarpOffset(double minutes) { m_warpOffset = minutes; }

    QList<PeptideSpectrumMatch> peptideSpectrumMatches() const { return m_peptideSpectrumMatches; }
    void setPeptideSpectrumMatches(const QList<PeptideSpectrumMatch>& matches)
    {
        m_peptideSpectrumMatches = matches;
    }

    /// The XIC on which the intervals were found.
    const PlotBase& xicPlot() const { return m_xicPlot; }
    void setXicPlot(const PlotBase& plot) { m_xicPlot = plot; }

    /// The peptide hash under which the matches were grouped.
    const QString& hash() const { return m_hash; }
    void setHash(const QString& hash) { m_hash = hash; }

    /// The list in one interval: from the smallest start to the largest end, with the sum of the
    /// areas; apex, width and correlation of the interval with the highest apex, the first of
    /// equals. The default interval for an empty list.
    ApexInterval timeInterval() const;
    /// Replaces the whole list by this one interval.
    void setTimeInterval(const ApexInterval& interval);

    /// True with two or more intervals.
    bool hasSplitProposals() const { return m_timeIntervalList.size() >= 2; }

    /// Appends the intervals and the matches of `other`, in its order, without looking for
    /// duplicates. \return no error
    Error mergeTimeIntervalsAndPsmFrom(const Ms1Feature& other);

private:
    QList<ApexInterval> m_timeIntervalList;
    double m_warpOffset = 0.0;
    QList<PeptideSpectrumMatch> m_peptideSpectrumMatches;
    PlotBase m_xicPlot;
    QString m_hash;
};

} // namespace zel
