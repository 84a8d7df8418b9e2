#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"

#include <algorithm>
#include <cmath>

namespace zel::segmentation {

namespace {

QPointF midpointAtZero(const QPointF& a, const QPointF& b)
{
    return {(a.x() + b.x()) * 0.5, 0.0};
}

/// The stretch around an extreme that reaches halfway to its neighbours; at the ends of the list,
/// to the extreme itself.
Interval<double> reachOf(const QList<QPointF>& extremes, qsizetype i)
{
    const double x = extremes[i].x();
    return {i > 0 ? (x + extremes[i - 1].x()) * 0.5 : x,
            i + 1 < extremes.size() ? (x + extremes[i + 1].x()) * 0.5 : x};
}

/// Builds the list of alternatingExtremes.
class AlternatingList
{
public:
    void addMax(const QPointF& point)
    {
        if (extremes.isEmpty()) {
            extremes.append(QPointF(point.x(), 0.0));
            extremes.append(point);
        } else if (!lastIsMax) {
            extremes.append(point);
        } else if (point.y() > extremes.constLast().y()) {
            extremes.last() = point;
        }
        lastIsMax = true;
    }

    void addMin(const QPointF& point)
    {
        if (!extremes.isEmpty() && !lastIsMax) {
            extremes.append(midpointAtZero(extremes.constLast(), point));
        }
        extremes.append(point);
        lastIsMax = false;
    }

    QList<QPointF> extremes;
    bool lastIsMax = true;
};

/// Builds the list of alternatingRealExtremes.
class RealAlternatingList
{
public:
    void addMax(const QPointF& point)
    {
        if (point.y() < 0.0) {
            return;
        }
        if (extremes.isEmpty() || !lastIsMax) {
            extremes.append(point);
        } else if (point.y() > extremes.constLast().y()) {
            extremes.last() = point;
        }
        lastIsMax = true;
        m_fillerBeforeLast = false;
    }

    void addMin(const QPointF& point)
    {
        if (!extremes.isEmpty() && !lastIsMax) {
            if (m_fillerBeforeLast) {
                extremes.last() = point;
                return;
            }
            extremes.append(midpointAtZero(extremes.constLast(), point));
            m_fillerBeforeLast = true;
        }
        extremes.append(point);
        lastIsMax = false;
    }

    QList<QPointF> extremes;
    bool lastIsMax = true;

private:
    bool m_fillerBeforeLast = false;
};

} // namespace

std::vector<Turn> turnsOf(const QList<QPointF>& curve, double flatThreshold)
{
    const auto isFlat = [flatThreshold](double a, double b) {
        return a == b || std::abs(b - a) < flatThreshold;
    };
    std::vector<Turn> turns;
    for (qsizetype i = 0; i < curve.size(); ++i) {
        const double y = curve[i].y();
        const double before = i > 0 ? curve[i - 1].y() : y;
        const double after = i + 1 < curve.size() ? curve[i + 1].y() : y;
        const bool flatBefore = isFlat(before, y);
        const bool flatAfter = isFlat(y, after);
        if (flatBefore && flatAfter) {
            continue;
        }
        if (flatBefore) {
            turns.push_back({i, y > after, true});
        } else if (flatAfter) {
            turns.push_back({i, !(before > y), true});
        } else if (y > before && y > after) {
            turns.push_back({i, true, false});
        } else if (before > y && after > y) {
            turns.push_back({i, false, false});
        }
    }
    return turns;
}

QList<QPointF> alternatingExtremes(const QList<QPointF>& curve)
{
    AlternatingList list;
    for (const Turn& turn : turnsOf(curve, 0.0)) {
        if (turn.isMaximum) {
            list.addMax(curve[turn.index]);
        } else {
            list.addMin(curve[turn.index]);
        }
    }
    if (list.lastIsMax && !curve.isEmpty()) {
        list.addMin(curve.constLast());
    }
    return list.extremes;
}

QList<QPointF> alternatingRealExtremes(const QList<QPointF>& curve)
{
    constexpr double flatThreshold = 1e-9;
    RealAlternatingList list;
    for (const Turn& turn : turnsOf(curve, flatThreshold)) {
        if (!turn.isMaximum) {
            list.addMin(curve[turn.index]);
            continue;
        }
        if (turn.fromFlatStep && list.extremes.isEmpty()) {
            list.addMin(curve[std::max<qsizetype>(turn.index - 1, 0)]);
        }
        list.addMax(curve[turn.index]);
    }
    if (list.lastIsMax && !curve.isEmpty()) {
        list.addMin(curve.constLast());
    }
    return list.extremes;
}

void adjustExtremes(const PlotBase& plot, double fillerHeight, QList<QPointF>* extremes)
{
    for (qsizetype i = 0; i < extremes->size(); i += 2) {
        const Interval<double> reach = reachOf(*extremes, i);
        QPointF lowest;
        if (plot.getMinMaxPoints_slow(reach.start, reach.end, &lowest, nullptr)) {
            (*extremes)[i] = lowest;
        }
    }
    for (qsizetype i = 1; i + 1 < extremes->size(); i += 2) {
        if (std::abs(extremes->at(i).y()) <= fillerHeight) {
            continue;
        }
        const Interval<double> reach = reachOf(*extremes, i);
        QPointF highest;
        if (plot.getMinMaxPoints_slow(reach.start, reach.end, nullptr, &highest)) {
            (*extremes)[i] = highest;
        }
    }
}

Error extractFeatures(const PlotBase& plot,
                      const QList<QPointF>& extremes,
                      double fillerHeight,
                      std::vector<SegmentationFeature>* features)
{
    Error e;
    features->clear();
    for (qsizetype i = 0; i + 2 < extremes.size(); i += 2) {
        const Interval<double> span = {extremes[i].x(), extremes[i + 2].x()};
        const QPointF& apex = extremes[i + 1];
        if (std::abs(apex.y()) <= fillerHeight) {
            continue;
        }
        ZEL_ASSIGN_OR_RETURN(const SegmentationFeature feature, measured(plot, span, apex));
        if (fillerHeight < 0.0 || feature.auc() > 0.0) {
            features->push_back(feature);
        }
    }
    return e;
}

} // namespace zel::segmentation
