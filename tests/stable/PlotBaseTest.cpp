#include "common/stable/PlotBase.h"

#include "common/stable/PointList.h"
#include "tests/support/Matchers.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

namespace zel {

using test::HasError;
using test::IsOk;
using ::testing::ElementsAre;

namespace {

/// A triangle from (0, 0) over (2, 10) to (6, 2).
PlotBase triangle()
{
    return QList<QPointF>{{0, 0}, {2, 10}, {6, 2}};
}

} // namespace

TEST(PlotBaseTest, EvaluatesTheLineAndZeroOutside)
{
    const PlotBase plot = triangle();
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [x, y] : QList<QPointF>{
             {1, 5}, {2, 10}, {4, 6}, {6, 2}, {6 + 1e-13, 2}, {6 + 1e-9, 0}, {-0.5, 0}, {nan, 0}}) {
        EXPECT_DOUBLE_EQ(plot.evaluate(x), y) << x;
    }
    EXPECT_EQ(plot.evaluate(7, 1, 1), 2.0);
    EXPECT_EQ(plot.evaluate(3.9, 0, 0), 10.0);
    EXPECT_EQ(PlotBase().evaluate(1), 0.0);
    EXPECT_EQ(PlotBase(QList<QPointF>{{3, 4}}).evaluate(3), 4.0);
}

TEST(PlotBaseTest, IntegratesTheLineBetweenTheLimits)
{
    const PlotBase plot = triangle();
    const auto area = [&plot](double start, double end) {
        return plot.computeAreaNoUnitConversion(start, end, true, ComputeAreaTrapezoid);
    };
    EXPECT_DOUBLE_EQ(area(-5, 50), 10 + 24) << "nothing lies outside the plot";
    EXPECT_DOUBLE_EQ(area(1, 4), 7.5 + 16);
    EXPECT_DOUBLE_EQ(area(3, 4), 7) << "a range between two points";
    for (const auto& [start, end] : {std::pair{4, 4}, {5, 3}, {7, 8}}) {
        EXPECT_EQ(area(start, end), 0.0) << start;
    }
    EXPECT_DOUBLE_EQ(plot.computeAreaNoUnitConversion(1, 6, false, ComputeAreaTrapezoid), 24)
        << "whole segments only";
    EXPECT_DOUBLE_EQ(plot.computeAreaSecondsUnit(1, 4, ComputeAreaTrapezoid), 23.5 * 60);
}

TEST(PlotBaseTest, FindsWhereAHeightIsCrossedOrTouched)
{
    const PlotBase plot = triangle();
    const auto [left, right] = plot.constantYIntersectionsAroundX(5, 2);
    EXPECT_EQ(left, QPointF(1, 5));
    EXPECT_EQ(right, QPointF(4.5, 5));
    EXPECT_FALSE(plot.constantYIntersectionsAroundX(1, 2).second) << "it never falls to 1";
    EXPECT_EQ(plot.constantYIntersectionsAroundX(5, 0.5).second, QPointF(1, 5));

    const PlotBase plateau(QList<QPointF>{{0, 1}, {1, 3}, {4, 3}, {5, 0}, {6, 3}});
    EXPECT_EQ(plateau.constantYIntersectionsAroundX(3, 2.5).first, QPointF(2.5, 3));
    EXPECT_EQ(plateau.constantYIntersectionsAroundX(3, 4.5).first, QPointF(4, 3))
        << "the nearest end of the plateau";
}

TEST(PlotBaseTest, FindsExtremesAndTakesTheFirstOfEquals)
{
    const PlotBase plot(QList<QPointF>{{0, 4}, {1, 1}, {2, 7}, {3, 1}, {4, 7}, {5, 2}});
    EXPECT_EQ(plot.getMaxPoint(), QPointF(2, 7));
    EXPECT_EQ(plot.getMaxTimeIntensity(3, 5), QPointF(4, 7));
    EXPECT_EQ(plot.getMaxTimeIntensity(2.1, 2.9), QPointF(0, 0));
    QPointF low;
    QPointF high;
    EXPECT_TRUE(plot.getMinMaxPoints_slow(1, 5, &low, &high));
    EXPECT_EQ(low, QPointF(1, 1));
    EXPECT_EQ(high, QPointF(2, 7));
    EXPECT_FALSE(plot.getMinMaxPoints_slow(6, 9, &low, &high));
}

TEST(PlotBaseTest, ListsLocalMaximaWithPlateausOnce)
{
    const auto maxima = [](const QList<double>& heights) {
        PlotBase plot;
        for (qsizetype i = 0; i < heights.size(); ++i) {
            plot.addPoint(QPointF(static_cast<double>(i), heights[i]));
        }
        QList<int> indices = {99};
        plot.getMaxIndexList(indices);
        return indices;
    };
    EXPECT_THAT(maxima({0, 2, 1, 3, 3, 3, 1, 0}), ElementsAre(1, 3));
    EXPECT_THAT(maxima({5, 1, 2, 2, 4, 4}), ElementsAre())
        << "the ends are no maxima, a step is none either";
}

TEST(PlotBaseTest, ComesBackFromItsFileUnchanged)
{
    PlotBase plot(QList<QPointF>{{1.0 / 3, 1e-300}, {2.0 / 3, 0.1 + 0.2}, {1e10, 4.9e-324}});
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("plot.txt"));
    ASSERT_THAT(plot.saveDataToFile(path), IsOk());
    PlotBase read;
    ASSERT_THAT(read.getDataFromFile(path, false), IsOk());
    EXPECT_EQ(read.getPointList(), plot.getPointList());
    for (const char* text : {"1 2\n3\n", "1 2 3\n", "a b\n", "2 1\n1 1\n"}) {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        file.close();
        EXPECT_THAT(read.getDataFromFile(path, false), HasError(kFileFormatError)) << text;
        EXPECT_EQ(read.getPointListSize(), 3) << "a bad file must not change the plot";
    }
    EXPECT_THAT(read.getDataFromFile(path, true), IsOk());
    EXPECT_EQ(read.getPoint(0, nullptr), QPointF(1, 1));
}

TEST(PointListTest, CutsRangesOpenAndClosed)
{
    const QList<QPointF> points = {{1, 5}, {2, 8}, {3, 6}};
    QList<QPointF> out = {{9, 9}};
    getPointsInBetween(points, 1, 2, out, true);
    EXPECT_THAT(out, ElementsAre(QPointF(1, 5), QPointF(2, 8)));
    getPointsInBetween(points, 1, 2, out, false);
    EXPECT_THAT(out, ElementsAre());
    EXPECT_EQ(getYMaxBetween(points, 2.5, 9, false), 6.0);
    EXPECT_EQ(getYMaxBetween(points, 2.5, 9, true), 7.0);
}

// The slow way: sort by descending y (stable), keep the first ones, sort back by x.
TEST(PointListTest, KeepsTheHighestPointsInTheirOrder)
{
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        QList<QPointF> points;
        for (int i = 0; i < 20; ++i) {
            points.append(QPointF(i, static_cast<double>(random() % 6))); // many equal heights
        }
        const int maxCount = static_cast<int>(random() % 23);
        QList<QPointF> expected = points;
        std::stable_sort(expected.begin(), expected.end(), [](const QPointF& a, const QPointF& b) {
            return a.y() > b.y();
        });
        expected.resize(std::min<qsizetype>(maxCount, expected.size()));
        QList<QPointF> byHeight = points;
        EXPECT_EQ(removeLowIntensePoints(byHeight, maxCount, false), 20 - expected.size());
        ASSERT_EQ(byHeight, expected) << "round " << round;

        std::sort(expected.begin(), expected.end(), [](const QPointF& a, const QPointF& b) {
            return a.x() < b.x();
        });
        EXPECT_EQ(removeLowIntensePoints(points, maxCount, true), 20 - expected.size());
        ASSERT_EQ(points, expected) << "round " << round << ", at most " << maxCount;
    }
    QList<QPointF> withNan = {{1, std::nan("")}, {2, -5}};
    removeLowIntensePoints(withNan, 1, true);
    EXPECT_THAT(withNan, ElementsAre(QPointF(2, -5)));
}

TEST(PointListTest, SmoothsWithoutMovingLevelOrCentre)
{
    PlotBase flat(QList<QPointF>{{0, 5}, {0.3, 5}, {2, 5}, {2.1, 5}});
    ASSERT_THAT(gaussianSmooth(flat, 0.7), IsOk());
    EXPECT_NEAR(flat.evaluate(0), 5, 1e-12);
    EXPECT_NEAR(flat.evaluate(2), 5, 1e-12);

    // A Gaussian smoothed by a Gaussian is one of the summed variances.
    constexpr double step = 0.05;
    PlotBase peak;
    for (int i = -200; i <= 200; ++i) {
        peak.addPoint(QPointF(i * step, std::exp(-0.5 * i * i * step * step)));
    }
    ASSERT_THAT(gaussianSmooth(peak, 0.75), IsOk());
    const double sigma = std::sqrt(1 + 0.75 * 0.75);
    EXPECT_NEAR(peak.evaluate(0), 1 / sigma, 1e-4)
        << "the kernel's cut-off at 4 sigma costs less than 1e-4";
    EXPECT_NEAR(peak.evaluate(sigma), std::exp(-0.5) / sigma, 1e-4);

    const QList<QPointF> before = peak.getPointList();
    EXPECT_THAT(gaussianSmooth(peak, 0.0), HasError(kBadParameterError));
    EXPECT_THAT(gaussianSmooth(peak, std::nan("")), HasError(kBadParameterError));
    EXPECT_EQ(peak.getPointList(), before);
}

} // namespace zel
