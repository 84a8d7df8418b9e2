#include "common/stable/PlotBase.h"

#include "common/stable/MathUtils.h"
#include "common/stable/NumberText.h"
#include "common/stable/PlotStretch_p.h"
#include "common/stable/SharedNumbers.h"

#include <QDebug>
#include <QFile>
#include <QSaveFile>

#include <algorithm>
#include <cmath>

namespace zel {

namespace {

using PointIterator = PlotStretch::PointIterator;

/// The first point that does not lie before a place on the x axis. Starts where `x` would be among
/// evenly spaced points and gallops from there (Bentley & Yao 1976,
/// doi:10.1016/0020-0190(76)90071-5): chromatograms are nearly even, so that a few steps do.
/// \param isBefore  true for the points up to that place, which is about `x`
template <typename Predicate>
PointIterator partitionPoint(const QList<QPointF>& points, double x, Predicate isBefore)
{
    const PointIterator begin = points.cbegin();
    const PointIterator end = points.cend();
    if (begin == end || !isBefore(*begin)) {
        return begin;
    }
    if (isBefore(*(end - 1))) {
        return end;
    }
    const double share = (x - begin->x()) / ((end - 1)->x() - begin->x());
    const double guess = share >= 0.0 && share <= 1.0 ? share : 0.5;
    const PointIterator middle =
        begin + static_cast<qsizetype>(guess * static_cast<double>(end - begin - 1));
    qsizetype step = 1;
    if (isBefore(*middle)) {
        PointIterator low = middle; // is before
        while (end - low > step && isBefore(low[step])) {
            low += step;
            step *= 2;
        }
        return std::partition_point(low + 1, low + std::min(step, end - low), isBefore);
    }
    PointIterator high = middle; // is not
    while (high - begin >= step && !isBefore(high[-step])) {
        high -= step;
        step *= 2;
    }
    return std::partition_point(high - std::min(step, high - begin), high, isBefore);
}

/// The first point with x not below a value.
PointIterator lowerBound(const QList<QPointF>& points, double x)
{
    return partitionPoint(points, x, [x](const QPointF& point) { return point.x() < x; });
}

/// The first point with x above a value.
PointIterator upperBound(const QList<QPointF>& points, double x)
{
    return partitionPoint(points, x, [x](const QPointF& point) { return !(x < point.x()); });
}

/// The points with start <= x <= end.
std::pair<PointIterator, PointIterator> pointsInRange(const QList<QPointF>& points,
                                                      double start,
                                                      double end)
{
    const PointIterator first = lowerBound(points, start);
    return {first, std::max(first, upperBound(points, end))};
}

/// True when the line from `a` to `b` crosses or touches the height `y`.
bool reaches(const QPointF& a, const QPointF& b, double y)
{
    return std::min(a.y(), b.y()) <= y && y <= std::max(a.y(), b.y());
}

/// The place between `a` and `b`, which lie on both sides of the height `y` or on it, where that
/// height is taken; of a line that lies in the height the place nearest to `x`.
double crossing(const QPointF& a, const QPointF& b, double y, double x)
{
    if (a.y() == b.y()) {
        return std::clamp(x, a.x(), b.x());
    }
    return a.x() + (b.x() - a.x()) * ((y - a.y()) / (b.y() - a.y()));
}

/// Two numbers separated by blanks or tabs.
std::optional<QPointF> parsePoint(const QByteArray& line)
{
    const QList<QByteArray> columns = line.simplified().split(' ');
    bool xOk = false;
    bool yOk = false;
    const double x = columns.value(0).toDouble(&xOk);
    const double y = columns.value(1).toDouble(&yOk);
    if (columns.size() != 2 || !xOk || !yOk) {
        return std::nullopt;
    }
    return QPointF(x, y);
}

} // namespace

Calibration::~Calibration() = default;

PlotBase::PlotBase(const QList<QPointF>& points)
    : m_points(points)
{}

PlotBase::~PlotBase() = default;

void PlotBase::clear()
{
    m_points.clear();
}

Error PlotBase::removePoint(int index, QPointF* removed)
{
    if (index < 0 || index >= m_points.size()) {
        ZEL_RETURN_ERROR(
            kBadParameterError,
            QStringLiteral("No point %1 in a plot of %2 points").arg(index).arg(m_points.size()));
    }
    const QPointF point = m_points.takeAt(index);
    if (removed != nullptr) {
        *removed = point;
    }
    return kNoError;
}

void PlotBase::setPointList(const QList<QPointF>& points, Calibration* calibration)
{
    m_points = points;
    if (calibration != nullptr) {
        for (QPointF& point : m_points) {
            point.setX(calibration->calibrate(point.x()));
        }
    }
    if (!std::ranges::is_sorted(m_points, {}, &QPointF::x)) {
        std::ranges::stable_sort(m_points, {}, &QPointF::x);
    }
}

Error PlotBase::getDataFromFile(const QString& path, bool sortPoints)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text)) {
        ZEL_RETURN_ERROR(kFileOpenError, QStringLiteral("Could not open file %1").arg(path));
    }
    QList<QPointF> points;
    for (int lineNumber = 1; !file.atEnd(); ++lineNumber) {
        const QByteArray line = file.readLine();
        if (line.trimmed().isEmpty()) {
            continue;
        }
        const std::optional<QPointF> point = parsePoint(line);
        if (!point) {
            ZEL_RETURN_ERROR(kFileFormatError,
                             QStringLiteral("%1, line %2: expected two numbers")
                                 .arg(path, QString::number(lineNumber)));
        }
        if (!sortPoints && !points.isEmpty() && point->x() < points.constLast().x()) {
            ZEL_RETURN_ERROR(kFileFormatError,
                             QStringLiteral("%1, line %2: x is not ascending")
                                 .arg(path, QString::number(lineNumber)));
        }
        points.append(*point);
    }
    setPointList(points, nullptr);
    return kNoError;
}

Error PlotBase::saveDataToFile(QDebug& debug) const
{
    const QDebugStateSaver saver(debug);
    debug.noquote().nospace() << QString::fromLatin1(toText());
    return kNoError;
}

Error PlotBase::saveDataToFile(QIODevice* device) const
{
    const QByteArray text = toText();
    if (device == nullptr || device->write(text) != text.size()) {
        ZEL_RETURN_ERROR(kError, "Writing data failed!");
    }
    return kNoError;
}

Error PlotBase::saveDataToFile(const QString& path) const
{
    Error e;
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        ZEL_RETURN_ERROR(kFileOpenError, QStringLiteral("Could not open file %1").arg(path));
    }
    ZEL_RETURN_IF_ERROR(saveDataToFile(&file));
    if (!file.commit()) {
        ZEL_RETURN_ERROR(kError, "Writing data failed!");
    }
    return e;
}

void PlotBase::addPoint(const QPointF& point, bool sorted)
{
    if (sorted) {
        m_points.insert(upperBound(m_points, point.x()), point);
    } else {
        m_points.append(point);
    }
}

QPointF PlotBase::getPoint(int index, bool* ok) const
{
    const bool exists = index >= 0 && index < m_points.size();
    if (ok != nullptr) {
        *ok = exists;
    }
    return exists ? m_points[index] : QPointF();
}

QPointF PlotBase::getMaxPoint() const
{
    const auto highest = std::ranges::max_element(m_points, {}, &QPointF::y);
    return highest == m_points.cend() ? QPointF() : *highest;
}

QPointF PlotBase::getMaxTimeIntensity(double start, double end) const
{
    QPointF highest;
    getMinMaxPoints_slow(start, end, nullptr, &highest);
    return highest;
}

bool PlotBase::getMinMaxPoints_slow(double start, double end, QPointF* min, QPointF* max) const
{
    const auto [first, last] = pointsInRange(m_points, start, end);
    if (first == last) {
        return false;
    }
    if (min != nullptr) {
        *min = *std::ranges::min_element(first, last, {}, &QPointF::y);
    }
    if (max != nullptr) {
        *max = *std::ranges::max_element(first, last, {}, &QPointF::y);
    }
    return true;
}

void PlotBase::getMaxIndexList(QList<int>& out, int firstIndex, int lastIndex) const
{
    out.clear();
    const int endIndex = getPointListSize() - 1;
    const int first = std::max(firstIndex, 1);
    const int last = lastIndex < 0 ? endIndex - 1 : std::min(lastIndex, endIndex - 1);
    for (int i = first; i <= last; ++i) {
        if (!(m_points[i - 1].y() < m_points[i].y())) {
            continue;
        }
        int plateauEnd = i;
        while (plateauEnd < endIndex && m_points[plateauEnd + 1].y() == m_points[i].y()) {
            ++plateauEnd;
        }
        if (plateauEnd < endIndex && m_points[plateauEnd + 1].y() < m_points[i].y()) {
            out.append(i);
        }
        i = plateauEnd;
    }
}

double PlotBase::evaluate(double x, int order, int beyond) const
{
    if (m_points.isEmpty() || std::isnan(x)) {
        return 0.0;
    }
    return PlotStretch::heightAt(m_points, x, upperBound(m_points, x), order, beyond);
}

double PlotBase::computeAreaNoUnitConversion(double start,
                                             double end,
                                             bool cutAtLimits,
                                             ComputeAreaMethod /*method*/) const
{
    if (m_points.isEmpty() || !(start < end)) {
        return 0.0;
    }
    const auto [first, last] = pointsInRange(m_points, start, end);
    return PlotStretch{start, end, first, last}.area(m_points, cutAtLimits);
}

double PlotBase::computeAreaSecondsUnit(double start, double end, ComputeAreaMethod method) const
{
    return computeAreaNoUnitConversion(start, end, true, method) * kSecondsPerMinute;
}

std::pair<std::optional<QPointF>, std::optional<QPointF>> PlotBase::constantYIntersectionsAroundX(
    double y, double x) const
{
    std::optional<QPointF> left;
    std::optional<QPointF> right;
    if (m_points.isEmpty()) {
        return {left, right};
    }
    // A single point is a line from itself to itself.
    const qsizetype lastSegment = std::max<qsizetype>(m_points.size() - 2, 0);
    const auto endOf = [this](qsizetype segment) {
        return m_points[std::min(segment + 1, m_points.size() - 1)];
    };
    const qsizetype aboveX = upperBound(m_points, x) - m_points.cbegin();

    for (qsizetype segment = std::min(aboveX - 1, lastSegment); segment >= 0 && !left; --segment) {
        if (reaches(m_points[segment], endOf(segment), y)) {
            const double at = crossing(m_points[segment], endOf(segment), y, x);
            if (at <= x) {
                left = QPointF(at, y);
            }
        }
    }
    // From the segment that ends at x, so that a place at x itself is seen.
    const qsizetype notBelowX = lowerBound(m_points, x) - m_points.cbegin();
    for (qsizetype segment = std::max<qsizetype>(notBelowX - 1, 0);
         segment <= lastSegment && !right;
         ++segment) {
        if (reaches(m_points[segment], endOf(segment), y)) {
            const double at = crossing(m_points[segment], endOf(segment), y, x);
            if (at >= x) {
                right = QPointF(at, y);
            }
        }
    }
    return {left, right};
}

bool PlotBase::comparePlotData(const PlotBase& other) const
{
    const auto same = [](const QPointF& a, const QPointF& b) {
        return MathUtils::nearlyEqual(a.x(), b.x()) && MathUtils::nearlyEqual(a.y(), b.y());
    };
    return std::equal(
        m_points.cbegin(), m_points.cend(), other.m_points.cbegin(), other.m_points.cend(), same);
}

QByteArray PlotBase::toText() const
{
    QByteArray text;
    for (const QPointF& point : m_points) {
        text += roundTripText(point.x()) + '\t' + roundTripText(point.y()) + '\n';
    }
    return text;
}

} // namespace zel
