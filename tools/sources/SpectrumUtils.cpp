#include "tools/sources/SpectrumUtils.h"

#include <algorithm>
#include <cmath>

namespace zel::msreader {

namespace {

bool mzBelow(const QPointF& a, const QPointF& b)
{
    return a.x() < b.x();
}

} // namespace

QList<QPointF> mergeSpectra(QList<QList<QPointF>> spectra)
{
    if (spectra.size() == 1) {
        return std::move(spectra.first());
    }
    qsizetype pointCount = 0;
    for (const QList<QPointF>& spectrum : std::as_const(spectra)) {
        pointCount += spectrum.size();
    }
    QList<QPointF> merged;
    merged.reserve(pointCount);
    for (const QList<QPointF>& spectrum : std::as_const(spectra)) {
        merged.append(spectrum);
    }
    sortAndJoinEqualMz(merged);
    return merged;
}

void sortAndJoinEqualMz(QList<QPointF>& points)
{
    // Stable, so that the sum of equal m/z is taken in the order in which they came.
    std::stable_sort(points.begin(), points.end(), mzBelow);
    auto last = points.begin();
    for (auto point = points.begin(); point != points.end(); ++point) {
        if (point == last) {
            continue;
        }
        if (point->x() == last->x()) {
            last->ry() += point->y();
        } else {
            *++last = *point;
        }
    }
    if (last != points.end()) {
        points.erase(last + 1, points.end());
    }
}

QString firstFaultOf(const QList<QPointF>& points)
{
    double previousMz = 0.0;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const double mz = points[i].x();
        const double intensity = points[i].y();
        if (!std::isfinite(mz) || mz <= 0.0) {
            return QStringLiteral("m/z must be finite and positive, but point %1 has %2")
                .arg(i)
                .arg(mz);
        }
        if (mz < previousMz) {
            return QStringLiteral("m/z must ascend, but point %1 has %2 after %3")
                .arg(i)
                .arg(mz, 0, 'g', 17)
                .arg(previousMz, 0, 'g', 17);
        }
        if (!std::isfinite(intensity) || intensity < 0.0) {
            return QStringLiteral(
                       "intensities must be finite and not negative, but point %1 has %2")
                .arg(i)
                .arg(intensity);
        }
        previousMz = mz;
    }
    return {};
}

void restrictToMz(QList<QPointF>& points, const math::ClosedMultiInterval<double, 10>& mz)
{
    if (mz.isUnbounded()) {
        return;
    }
    points.removeIf([&mz](const QPointF& point) { return !mz.contains(point.x()); });
}

} // namespace zel::msreader
