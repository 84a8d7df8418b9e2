#include "tools/sources/SpectrumUtils.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>
#include <vector>

namespace zel::msreader {

namespace {

bool mzBelow(const QPointF& a, const QPointF& b)
{
    return a.x() < b.x();
}

/// Where a point lies on a coarse scale of m/z.
struct CoarsePlace
{
    std::uint32_t mz;
    std::uint32_t index;
};

/// The points in ascending order of their coarse m/z, those of equal one in their own order (radix
/// sort from the lower digit).
std::vector<CoarsePlace> coarselySorted(const QList<QPointF>& points)
{
    constexpr int kDigitBits = 11;
    constexpr std::uint32_t kDigitCount = 1U << kDigitBits;
    const auto [lowest, highest] = std::minmax_element(points.cbegin(), points.cend(), mzBelow);
    const double origin = lowest->x();
    const double range = std::max(highest->x() - origin, std::numeric_limits<double>::min());
    const double scale = (kDigitCount * kDigitCount - 1) / range;
    std::vector<CoarsePlace> places;
    places.reserve(static_cast<std::size_t>(points.size()));
    for (const QPointF& point : points) {
        places.push_back({static_cast<std::uint32_t>((point.x() - origin) * scale),
                          static_cast<std::uint32_t>(places.size())});
    }
    std::vector<CoarsePlace> sorted(places.size());
    for (const int shift : {0, kDigitBits}) {
        const auto digitOf = [shift](const CoarsePlace& place) {
            return (place.mz >> shift) % kDigitCount;
        };
        std::vector<std::size_t> next(kDigitCount + 1, 0);
        for (const CoarsePlace& place : places) {
            ++next[digitOf(place) + 1];
        }
        std::partial_sum(next.begin(), next.end(), next.begin());
        for (const CoarsePlace& place : places) {
            sorted[next[digitOf(place)]++] = place;
        }
        places.swap(sorted);
    }
    return places;
}

/// The indices of the most intense points.
QList<qsizetype> strongestOf(const QList<QPointF>& points)
{
    constexpr qsizetype kLeastCount = 10;
    constexpr qsizetype kShare = 20;
    QList<qsizetype> indices(points.size());
    std::iota(indices.begin(), indices.end(), qsizetype{0});
    const qsizetype count = std::min(points.size(), std::max(kLeastCount, points.size() / kShare));
    const auto isStronger = [&points](qsizetype a, qsizetype b) {
        return points[a].y() != points[b].y() ? points[a].y() > points[b].y() : a < b;
    };
    std::nth_element(indices.begin(), indices.begin() + count, indices.end(), isStronger);
    indices.resize(count);
    return indices;
}

/// Whether the neighbours of a point look like samples of the same peak.
bool isInsidePeak(const QList<QPointF>& points, qsizetype i)
{
    constexpr double kMaxStepMz = 0.2;
    constexpr double kMaxStepRatio = 1.5;
    constexpr double kMinNeighbourShare = 0.1;
    if (i == 0 || i + 1 == points.size()) {
        return false;
    }
    const double before = points[i].x() - points[i - 1].x();
    const double after = points[i + 1].x() - points[i].x();
    return std::max(before, after) < kMaxStepMz &&
           std::max(before, after) <= kMaxStepRatio * std::min(before, after) &&
           std::min(points[i - 1].y(), points[i + 1].y()) >= kMinNeighbourShare * points[i].y();
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
    sortByMz(merged);
    joinEqualMz(merged);
    return merged;
}

void joinEqualMz(QList<QPointF>& points)
{
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

void sortByMz(QList<QPointF>& points)
{
    constexpr qsizetype kFewPoints = 1000;
    if (points.size() < kFewPoints) {
        std::stable_sort(points.begin(), points.end(), mzBelow);
        return;
    }
    // The hundred thousands of points of a mobility frame lie on the grid of a digitiser. There a
    // coarse m/z, by which they are sorted in two counting passes, mostly is all it takes.
    QList<QPointF> sorted;
    sorted.reserve(points.size());
    for (const CoarsePlace& place : coarselySorted(points)) {
        sorted.append(points.at(place.index));
    }
    if (!std::is_sorted(sorted.cbegin(), sorted.cend(), mzBelow)) {
        std::stable_sort(sorted.begin(), sorted.end(), mzBelow);
    }
    points = std::move(sorted);
}

bool looksLikeProfile(const QList<QList<QPointF>>& spectra)
{
    qsizetype voterCount = 0;
    qsizetype profileCount = 0;
    for (QList<QPointF> points : spectra) {
        points.removeIf([](const QPointF& point) { return point.y() <= 0.0; });
        const QList<qsizetype> voters = strongestOf(points);
        voterCount += voters.size();
        profileCount += std::ranges::count_if(
            voters, [&points](qsizetype i) { return isInsidePeak(points, i); });
    }
    return 2 * profileCount > voterCount;
}

QString faultOfPoint(qsizetype index, double mz, double intensity)
{
    if (!(mz > 0.0) || !std::isfinite(mz)) {
        return QStringLiteral("m/z must be finite and positive, but point %1 has %2")
            .arg(index)
            .arg(mz);
    }
    return QStringLiteral("intensities must be finite and not negative, but point %1 has %2")
        .arg(index)
        .arg(intensity);
}

QString firstFaultOf(const QList<QPointF>& points)
{
    double previousMz = 0.0;
    for (qsizetype i = 0; i < points.size(); ++i) {
        const double mz = points[i].x();
        const double intensity = points[i].y();
        if (!isValidPoint(mz, intensity)) {
            return faultOfPoint(i, mz, intensity);
        }
        if (mz < previousMz) {
            return QStringLiteral("m/z must ascend, but point %1 has %2 after %3")
                .arg(i)
                .arg(mz, 0, 'g', 17)
                .arg(previousMz, 0, 'g', 17);
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
