#include "XicIntegrator.h"

#include "common/core_mini/src/algo/numeric/Point2dListUtils.h"
#include "common/stable/PlotBase.h"
#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "ms_feature/finders/MsFeatureFinderFactory.h"

#include <memory>

namespace zel {

namespace {

constexpr int kWholeTrace = 0;
constexpr int kAroundRetentionTime = 1;
constexpr int kTargetedFinder = 2;

/// No candidate is too weak for the finder, and its smoothing is narrow: the trace holds one peak
/// already, of which all is wanted.
MsFeatureFinderSettings finderSettings(const XicPeakSplitterOptions& options)
{
    MsFeatureFinderSettings settings;
    settings.adaptiveScoreNegligibleRatio = -1.0;
    settings.adaptiveSmoothingStDev = 1.0 / 18.0;
    settings.adaptiveMergeIntensityRatio = options.mergeIntensityRatio;
    settings.adaptiveMinSkew = options.minSkew;
    return settings;
}

} // namespace

XicIntegrator::XicIntegrator() = default;

XicIntegrator::~XicIntegrator() = default;

Error XicIntegrator::init(const XicBaselineLimitsDetectorOptions& detectorOptions,
                          const XicPeakSplitterOptions& splitterOptions)
{
    Error e;
    ZEL_RETURN_IF_ERROR(m_detector.init(detectorOptions));
    ZEL_RETURN_IF_ERROR(m_splitter.init(splitterOptions));
    m_detectorOptions = detectorOptions;
    m_splitterOptions = splitterOptions;
    return kNoError;
}

void XicIntegrator::setMsFeatureFinderFactory(const QSharedPointer<MsFeatureFinderFactory>& factory)
{
    m_finderFactory = factory;
}

Result<XicIntegratorResult> XicIntegrator::integratePeak(const QList<QPointF>& xic,
                                                         double retentionTime)
{
    XicIntegratorResult result(retentionTime, xic, m_detectorOptions.minPeakWidth);
    ZEL_ASSIGN_OR_RETURN(const QList<Interval<double>> limits, limitsOf(xic, retentionTime));
    for (const Interval<double>& peak : limits) {
        QList<std::pair<double, double>> splits;
        if (!m_splitterOptions.splittingDisabled) {
            ZEL_ASSIGN_OR_RETURN(
                splits,
                m_splitter.splitXIC(Point2dListUtils::extractPoints(xic, peak.start, peak.end)));
        }
        result.addXicPeak(peak, splits);
    }
    return result;
}

Result<QList<Interval<double>>> XicIntegrator::limitsOf(const QList<QPointF>& xic,
                                                        double retentionTime)
{
    const int mode = m_detectorOptions.detectionMode;
    if (mode == kTargetedFinder && m_finderFactory) {
        return limitsByFinder(xic);
    }
    if (mode == kWholeTrace || m_detectorOptions.ignoreRetentionTime) {
        return m_detector.integrateXIC(xic);
    }
    if (mode == kAroundRetentionTime) {
        return m_detector.integrateXIC(xic, retentionTime, kAroundRetentionTime);
    }
    return QList<Interval<double>>();
}

QList<Interval<double>> XicIntegrator::limitsByFinder(const QList<QPointF>& xic) const
{
    const std::unique_ptr<const MsFeatureFinderBase> finder(
        m_finderFactory->create(finderSettings(m_splitterOptions)));
    QList<Interval<double>> limits;
    if (!finder) {
        return limits;
    }
    const auto found = finder->findFeature({}, PlotBase(xic));
    if (found.isOk() && found.value()) {
        for (const ApexInterval& interval : found.value()->timeIntervalList()) {
            limits.append(interval.interval());
        }
    }
    return limits;
}

} // namespace zel
