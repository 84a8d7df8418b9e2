#pragma once

#include "common/stable/PlotBase.h"
#include "ms_feature/records/Ms1Feature.h"
#include "ms_feature/records/PeptideSpectrumMatch.h"
#include "tests/support/Matchers.h"
#include "tests/support/SourceProbe.h"

#include <cmath>
#include <optional>
#include <utility>

namespace zel::test {

/// Serves the same XIC for every box, cut by its times, and notes what it is asked for.
class XicSource : public SourceProbe
{
public:
    explicit XicSource(const QList<QPointF>& xic)
        : SourceProbe(nullptr)
        , m_xic(xic)
    {}

    QList<QList<XicDimensions>> requests;
    QList<std::optional<std::pair<int, msreader::PeakPickingFilter>>> filters;
    bool dropsLastXic = false;

    Result<math::ClosedMultiInterval<double, 6>> retentionTimeRange() override
    {
        using TimeSet = math::ClosedMultiInterval<double, 6>;
        return failRangeWith.hasError()
                   ? Result<TimeSet>(failRangeWith)
                   : Result<TimeSet>(TimeSet(m_xic.constFirst().x(), m_xic.constLast().x()));
    }
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes) override
    {
        filters.append(std::nullopt);
        return serve(boxes);
    }
    Result<QList<QList<QPointF>>> xics(const QList<XicDimensions>& boxes,
                                       int msLevel,
                                       msreader::PeakPickingFilter filter) override
    {
        filters.append(std::pair(msLevel, filter));
        return serve(boxes);
    }

private:
    Result<QList<QList<QPointF>>> serve(const QList<XicDimensions>& boxes)
    {
        requests.append(boxes);
        QList<QList<QPointF>> xics;
        for (const XicDimensions& box : boxes) {
            xics.append(QList<QPointF>());
            std::copy_if(
                m_xic.cbegin(),
                m_xic.cend(),
                std::back_inserter(xics.last()),
                [&box](const QPointF& point) { return box.timeInterval().contains(point.x()); });
        }
        if (dropsLastXic) {
            xics.removeLast();
        }
        return xics;
    }

    QList<QPointF> m_xic;
};

/// A match of a doubly charged ion of m/z 500 at this time.
inline PeptideSpectrumMatch psmAt(double minutes, double score = 1.0, const QString& mods = {})
{
    PeptideSpectrumMatch psm;
    psm.setScanTimeMinutes(minutes);
    psm.setScore(score);
    psm.setTarnicStyleMods(mods);
    psm.setCharge(2);
    psm.setCalcMz(500.0);
    psm.setWtCalcMr(998.0);
    return psm;
}

/// A Gaussian elution peak.
struct ElutionPeak
{
    double apexMinutes;
    double height;
    double sigmaMinutes;

    double heightAt(double minutes) const
    {
        const double z = (minutes - apexMinutes) / sigmaMinutes;
        return height * std::exp(-0.5 * z * z);
    }
};

/// The sum of the peaks over a level, `pointCount` points from `start` to `end`.
inline QList<QPointF> chromatogramOf(
    const QList<ElutionPeak>& peaks, double start, double end, int pointCount, double level = 0.0)
{
    QList<QPointF> points;
    for (int i = 0; i < pointCount; ++i) {
        const double minutes = start + (end - start) * i / (pointCount - 1);
        double height = level;
        for (const ElutionPeak& peak : peaks) {
            height += peak.heightAt(minutes);
        }
        points.append(QPointF(minutes, height));
    }
    return points;
}

/// Points one apart, from 0, of these heights.
inline QList<QPointF> pointsOf(const QList<double>& heights)
{
    QList<QPointF> points;
    for (const double height : heights) {
        points.append(QPointF(static_cast<double>(points.size()), height));
    }
    return points;
}

/// 12 minutes of scans 0.02 min apart.
inline QList<QPointF> scansOf(const QList<ElutionPeak>& peaks, double level = 0.0)
{
    return chromatogramOf(peaks, 10.0, 22.0, 601, level);
}

/// Opens what an adaptive finder does with one XIC.
template <typename Finder>
class Opened : public Finder
{
public:
    using Finder::Finder;
    using Finder::findFeature;
    using Finder::findFeaturesBeforeFilters;

    QList<ApexInterval> intervalsOn(const QList<QPointF>& xic,
                                    const QList<PeptideSpectrumMatch>& psms) const
    {
        return valueOf(findFeature(psms, PlotBase(xic))).value_or(Ms1Feature()).timeIntervalList();
    }
};

} // namespace zel::test
