#pragma once

#include "common/stable/Error.h"
#include "common/stable/Export.h"

#include <QList>
#include <QPointF>

#include <optional>
#include <utility>

class QDebug;
class QIODevice;

namespace zel {

/// How an area under a plot is computed.
enum ComputeAreaMethod : int {
    /// The integral of the straight lines that join the points (trapezoidal rule).
    ComputeAreaTrapezoid = 1,
};

/// A change of the x axis that is applied to points as they are set.
class ZEL_EXPORT Calibration
{
public:
    virtual ~Calibration();
    /// The calibrated value of `x`; must be ascending in `x`.
    virtual double calibrate(double x) const = 0;
};

/// A list of points sorted by x, with operations on it: a chromatogram as (minutes, intensity) or a
/// spectrum as (m/z, intensity). Between its points a plot is the straight line through the
/// neighbours; outside it is 0.
///
/// A plain value. Copies share the points until one of them changes. Reading from several threads
/// is safe.
class ZEL_EXPORT PlotBase
{
public:
    PlotBase() = default;
    /// \param points  ascending in x
    PlotBase(const QList<QPointF>& points);
    PlotBase(const PlotBase&) = default;
    PlotBase& operator=(const PlotBase&) = default;
    virtual ~PlotBase();

    virtual void clear();

    /// Removes the point at `index` and writes it to `removed` unless that is null.
    /// \return kBadParameterError for an index outside the list
    virtual Error removePoint(int index, QPointF* removed);

    /// Replaces the points. They are sorted by x if they are not; equal x keep their order.
    /// \param calibration  changes x of each point; null leaves x as it is
    virtual void setPointList(const QList<QPointF>& points, Calibration* calibration);

    /// Replaces the points by those of a text file of one "x<blank or tab>y" pair a line; empty
    /// lines are skipped.
    /// \param sortPoints  true sorts them by x; false refuses a file that is not ascending in x
    /// \return kFileOpenError or kFileFormatError; the plot is then unchanged
    virtual Error getDataFromFile(const QString& path, bool sortPoints);

    /// Writes one "x<tab>y" line a point, with digits enough to read the same doubles back.
    virtual Error saveDataToFile(QDebug& debug) const;
    /// \return kError when the device does not take all bytes
    virtual Error saveDataToFile(QIODevice* device) const;
    /// Replaces the file as a whole or not at all. \return kFileOpenError or kError
    virtual Error saveDataToFile(const QString& path) const;

    /// Appends the point, or, with `sorted`, inserts it after the last point whose x is not above
    /// its own.
    void addPoint(const QPointF& point, bool sorted = false);

    /// The points; a caller that changes them keeps x ascending.
    QList<QPointF>& getPointList() { return m_points; }
    const QList<QPointF>& getPointList() const { return m_points; }
    int getPointListSize() const { return static_cast<int>(m_points.size()); }

    /// The point at `index`; (0, 0) outside the list. `ok`, unless null, says whether there is
    /// one.
    QPointF getPoint(int index, bool* ok) const;

    /// The point of greatest y, the first of equal ones; (0, 0) when empty.
    QPointF getMaxPoint() const;

    /// The point of greatest y with start <= x <= end, the first of equal ones; (0, 0) when there
    /// is none.
    QPointF getMaxTimeIntensity(double start, double end) const;

    /// The lowest and the highest point with start <= x <= end, the first of equal ones each.
    /// Either output may be null.
    /// \return false, with the outputs untouched, when there is no point in the range
    bool getMinMaxPoints_slow(double start, double end, QPointF* min, QPointF* max) const;

    /// Writes the indices of the local maxima into `out`, ascending, after clearing it. A maximum
    /// rises strictly before and falls strictly after; a plateau counts once, at its first index;
    /// the ends of the list are no maxima.
    /// \param firstIndex, lastIndex  the range of indices to look at, both included; a negative
    ///                               last index is the end
    void getMaxIndexList(QList<int>& out, int firstIndex = 0, int lastIndex = -1) const;

    /// y at `x`. A point of the plot within 1e-12 of `x`, relative, beyond an end counts as that
    /// end.
    /// \param order   1: on the line through the neighbours; 0: y of the last point whose x is not
    ///                above
    /// \param beyond  what the plot is outside its points: 0: zero; 1: y of the nearer end
    double evaluate(double x, int order = 1, int beyond = 0) const;

    /// The area under the plot between the limits, in the plot's own units. An empty or inverted
    /// range has none.
    /// \param cutAtLimits  true: the line is cut at the limits; false: only whole segments between
    ///                     points count
    double computeAreaNoUnitConversion(double start,
                                       double end,
                                       bool cutAtLimits,
                                       ComputeAreaMethod method) const;

    /// The same, cut at the limits, with x taken from minutes to seconds: 60 times the area in the
    /// plot's own units.
    double computeAreaSecondsUnit(double start, double end, ComputeAreaMethod method) const;

    /// The nearest places left and right of `x`, `x` itself included, where the plot crosses or
    /// touches the height `y`. A side without such a place is empty. The y of a returned point is
    /// `y`.
    std::pair<std::optional<QPointF>, std::optional<QPointF>> constantYIntersectionsAroundX(
        double y, double x) const;

protected:
    /// True when both plots have as many points and all coordinates are nearly equal
    /// (MathUtils::nearlyEqual).
    virtual bool comparePlotData(const PlotBase& other) const;

private:
    QByteArray toText() const;

    QList<QPointF> m_points;
};

} // namespace zel
