#pragma once

#include "XicIntegratorResult.h"
#include "common/core_mini/src/algo/parameters/XicDetectionOptions.h"
#include "common/stable/Export.h"
#include "common/stable/Result.h"
#include "ml/XicBaselineLimitsDetector.h"
#include "ml/XicPeakSplitter.h"

#include <QList>
#include <QPointF>
#include <QSharedPointer>

namespace zel {

class MsFeatureFinderFactory;

/// Turns an XIC and the time of a target into the limits of peaks, and the places at which each may
/// be split. Built and initialised once, then used for any number of XICs by one thread at a time.
class ZEL_EXPORT XicIntegrator
{
public:
    /// With the options at their defaults.
    XicIntegrator();
    ~XicIntegrator();
    Q_DISABLE_COPY_MOVE(XicIntegrator)

    /// \return the failure of the detector's or the splitter's options
    Error init(const XicBaselineLimitsDetectorOptions& detectorOptions,
               const XicPeakSplitterOptions& splitterOptions);

    /// Gives detection mode 2 its finder; may be null.
    void setMsFeatureFinderFactory(const QSharedPointer<MsFeatureFinderFactory>& factory);

    /// Finds the peaks by the detection mode: 0 on the whole trace, 1 around the time, 2 by a
    /// targeted finder. Mode 2 without a factory, and any other mode, find no peaks, unless
    /// `ignoreRetentionTime` asks for the whole trace. A finder that fails finds no peaks either.
    ///
    /// In mode 2 the finder has no matches to score its candidates by: with two candidates or more
    /// none is left.
    /// \param xic            (minutes, intensity), ascending in time
    /// \param retentionTime  of the target, minutes
    /// \return the failure of the detector or the splitter
    Result<XicIntegratorResult> integratePeak(const QList<QPointF>& xic, double retentionTime);

private:
    Result<QList<Interval<double>>> limitsOf(const QList<QPointF>& xic, double retentionTime);
    QList<Interval<double>> limitsByFinder(const QList<QPointF>& xic) const;

    XicBaselineLimitsDetector m_detector;
    XicPeakSplitter m_splitter;
    XicBaselineLimitsDetectorOptions m_detectorOptions;
    XicPeakSplitterOptions m_splitterOptions;
    QSharedPointer<MsFeatureFinderFactory> m_finderFactory;
};

} // namespace zel
