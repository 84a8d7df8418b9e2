#include "ml/XicBaselineLimitsDetector.h"
#include "ml/XicPeakSplitter.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>

namespace zel {

using test::HasError;
using test::IsOk;
using test::valueOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

constexpr double kStep = 0.02; ///< minutes between samples

QList<QPointF> trace(int count, const std::function<double(int)>& height)
{
    QList<QPointF> points;
    for (int i = 0; i < count; ++i) {
        points.append(QPointF(kStep * i, height(i)));
    }
    return points;
}

double gaussian(double x, double centre, double sigma)
{
    return std::exp(-0.5 * (x - centre) * (x - centre) / (sigma * sigma));
}

QList<Interval<double>> peaksOf(const QList<QPointF>& xic)
{
    return valueOf(XicBaselineLimitsDetector().integrateXIC(xic));
}

QList<double> splitsOf(const QList<QPointF>& xic)
{
    QList<double> places;
    for (const auto& [place, weight] : valueOf(XicPeakSplitter().splitXIC(xic))) {
        EXPECT_GT(weight, 0.0);
        EXPECT_LE(weight, 1.0);
        places.append(place);
    }
    return places;
}

} // namespace

TEST(XicDetectionTest, FindsPeaksOnARisingBaselineUpToOnePercentOfTheirHeight)
{
    const QList<QPointF> xic = trace(400, [](int i) {
        return 20.0 + 0.2 * i + 1000.0 * gaussian(i, 100, 8) + 500.0 * gaussian(i, 300, 8);
    });
    const QList<Interval<double>> peaks = peaksOf(xic);
    ASSERT_EQ(peaks.size(), 2);
    for (const auto& [peak, apex] : {std::pair{peaks[0], 100}, std::pair{peaks[1], 300}}) {
        // A Gaussian is at 1 % of its height 3.03 sigma from its apex.
        EXPECT_NEAR(peak.start, kStep * (apex - 24), 8.5 * kStep);
        EXPECT_NEAR(peak.end, kStep * (apex + 24), 8.5 * kStep);
    }
}

TEST(XicDetectionTest, BridgesShortGapsAndEndsAtLongOnes)
{
    const auto withGap = [](int first, int last) {
        return trace(60, [first, last](int i) {
            const double height = 100.0 * gaussian(i, 30, 5);
            return (i >= first && i <= last) || height < 0.5 ? 0.0 : height;
        });
    };
    EXPECT_EQ(peaksOf(withGap(24, 25)).size(), 1);
    EXPECT_EQ(peaksOf(withGap(19, 27)).size(), 2);
}

TEST(XicDetectionTest, FindsNothingWhereThereIsNothing)
{
    const auto flat = [](int) { return 7.0; };
    for (const QList<QPointF>& xic : {QList<QPointF>(), trace(50, flat)}) {
        EXPECT_THAT(peaksOf(xic), IsEmpty());
        EXPECT_THAT(splitsOf(xic), IsEmpty());
    }
    EXPECT_THAT(peaksOf(trace(50, [](int i) { return i == 9 || i == 10 ? 5.0 : 0.0; })), IsEmpty())
        << "two samples are no peak";
    const auto fivePoints = [](int i) { return i < 1 || i > 5 ? 0.0 : 100.0 * gaussian(i, 3, 1); };
    EXPECT_EQ(peaksOf(trace(7, fivePoints)).size(), 1) << "five are";
}

TEST(XicDetectionTest, TakesThePeakAtTheTimeOrTheNextOneClose)
{
    const QList<QPointF> xic = trace(
        300, [](int i) { return 1000.0 * gaussian(i, 100, 5) + 1000.0 * gaussian(i, 200, 5); });
    XicBaselineLimitsDetector detector;
    const QList<Interval<double>> all = valueOf(detector.integrateXIC(xic));
    ASSERT_EQ(all.size(), 2);
    const auto around = [&](double time) { return valueOf(detector.integrateXIC(xic, time, 1)); };
    EXPECT_THAT(around(100 * kStep), ElementsAre(all[0]));
    EXPECT_THAT(around(all[1].end + 0.9 * kStep), ElementsAre(all[1]));
    EXPECT_THAT(around(all[1].start - 0.04), ElementsAre(all[1])) << "within minPeakWidth of 0.05";
    EXPECT_THAT(around(150 * kStep), IsEmpty());
    EXPECT_THAT(detector.integrateXIC(xic, 2.0, 0), HasError(kBadParameterError));
}

TEST(XicDetectionTest, SplitsAtValleysAndLeavesShouldersAndTailsWhole)
{
    const auto pair = [](double distance, double second) {
        return trace(120, [=](int i) {
            return 1000.0 * gaussian(i, 40, 6) + second * gaussian(i, 40 + distance, 6);
        });
    };
    EXPECT_THAT(splitsOf(pair(24, 1000)), ElementsAre(::testing::DoubleEq(kStep * 52)));
    EXPECT_EQ(splitsOf(pair(30, 300)).size(), 1);
    EXPECT_THAT(splitsOf(pair(15, 200)), IsEmpty()) << "a shoulder";
    EXPECT_THAT(
        splitsOf(trace(120, [](int i) { return i < 10 ? 0.0 : 1000.0 * std::exp(-0.1 * i); })),
        IsEmpty())
        << "a tail";
}

TEST(XicDetectionTest, RefusesTracesAndOptionsThatMakeNoSense)
{
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const QList<QPointF>& xic :
         {QList<QPointF>{{0.0, nan}}, {{nan, 1.0}}, {{1.0, 1.0}, {0.5, 1.0}}}) {
        EXPECT_THAT(XicBaselineLimitsDetector().integrateXIC(xic), HasError(kBadParameterError));
        EXPECT_THAT(XicPeakSplitter().splitXIC(xic), HasError(kBadParameterError));
    }
    XicBaselineLimitsDetectorOptions detectorOptions;
    detectorOptions.baselineHalfWindow = nan;
    EXPECT_THAT(XicBaselineLimitsDetector().init(detectorOptions), HasError(kBadParameterError));
    XicPeakSplitterOptions splitterOptions;
    splitterOptions.valleyRatio = -1.0;
    EXPECT_THAT(XicPeakSplitter().init(splitterOptions), HasError(kBadParameterError));
}

} // namespace zel
