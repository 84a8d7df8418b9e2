#include "ms_feature/finders/MsFeatureFinder.h"

#include <algorithm>

namespace zel {

using Psm = PeptideSpectrumMatch;

MsFeatureFinder::MsFeatureFinder(const MsFeatureFinderSettings& settings)
    : MsFeatureFinderBase(settings)
{}

MsFeatureFinder::~MsFeatureFinder() = default;

Result<std::optional<Ms1Feature>> MsFeatureFinder::findFeature(const QList<Psm>& psms,
                                                               const PlotBase& xic) const
{
    ZEL_ASSIGN_OR_RETURN(const QList<Psm> kept, psmsOnXic(psms, xic));
    const double time = apexTime(kept);
    const QPointF apex(time, xic.evaluate(time, 1, 0));

    const double halfWidth = settings().xicAreaTimeWindow;
    const double start = std::max(time - halfWidth, xic.getPointList().constFirst().x());
    const double end = std::min(start + 2 * halfWidth, xic.getPointList().constLast().x());
    return singlePeak(xic, {start, end}, apex);
}

/// The matches on the XIC that lie within the extraction window around first and last match.
Result<QList<Psm>> MsFeatureFinder::psmsOnXic(const QList<Psm>& psms, const PlotBase& xic) const
{
    const QList<QPointF>& points = xic.getPointList();
    if (points.size() < 2) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("An XIC of %1 points is too short").arg(points.size()));
    }
    const double firstX = points.constFirst().x();
    const double lastX = points.constLast().x();
    const double firstTime = firstPSM().scanTimeMinutes();
    const double lastTime = lastPSM().scanTimeMinutes();
    if (firstTime > lastX || lastTime < firstX) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("The matches, %1 to %2 min, lie off the XIC, %3 to %4 min")
                             .arg(firstTime)
                             .arg(lastTime)
                             .arg(firstX)
                             .arg(lastX));
    }
    const double margin = settings().xicTimeWindowToExtract();
    const double low = std::max(firstTime - margin, firstX);
    const double high = std::min(lastTime + margin, lastX);
    QList<Psm> kept;
    std::copy_if(psms.cbegin(), psms.cend(), std::back_inserter(kept), [=](const Psm& psm) {
        return low <= psm.scanTimeMinutes() && psm.scanTimeMinutes() <= high;
    });
    if (kept.isEmpty()) {
        ZEL_RETURN_ERROR(kError,
                         QStringLiteral("No match lies from %1 to %2 min").arg(low).arg(high));
    }
    return kept;
}

double MsFeatureFinder::apexTime(const QList<Psm>& psms) const
{
    if (maxScorePSM().isWildType()) {
        return std::max_element(psms.cbegin(), psms.cend(), Psm::cmpApexIntensity)->apex().x();
    }
    constexpr qsizetype maxCount = 10;
    QList<Psm> best = psms;
    std::stable_sort(
        best.begin(), best.end(), [](const Psm& a, const Psm& b) { return Psm::cmpScore(b, a); });
    best.resize(std::min(best.size(), maxCount));
    std::stable_sort(best.begin(), best.end(), Psm::cmpScanTime);
    return best[best.size() / 2].apex().x();
}

} // namespace zel
