#include "ms_feature/segmentation/MsFeatureFinderStage1.h"

#include "common/stable/PlotBase.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

namespace zel {

using test::HasError;
using test::IsOk;
using Peak = MsFeatureFinderStage1::Peak;

namespace {

/// Points one minute apart, from minute 0.
PlotBase plotOf(const QList<double>& heights)
{
    return PlotBase(test::pointsOf(heights));
}

Peak majorPeak(const PlotBase& plot, double widthFactor)
{
    return test::valueOf(MsFeatureFinderStage1::findMajorPeak(plot, widthFactor));
}

Interval<double> halfMaxRange(const PlotBase& plot, const QPointF& apex)
{
    Interval<double> range;
    EXPECT_THAT(MsFeatureFinderStage1::findHalfMaxRange(plot, apex, &range.start, &range.end),
                IsOk());
    return range;
}

} // namespace

TEST(MsFeatureFinderStage1Test, MeasuresTheHalfMaximumAtTheNearestCrossings)
{
    const PlotBase plot = plotOf({0, 1, 9, 10, 9, 6, 6, 0});
    EXPECT_EQ(halfMaxRange(plot, {3, 10}), (Interval<double>{1.5, 6.0 + 1.0 / 6.0}));
    EXPECT_EQ(halfMaxRange(plot, {3, 0}), (Interval<double>{3, 3})) << "no height";
    EXPECT_EQ(halfMaxRange(plotOf({8, 10, 2}), {1, 10}), (Interval<double>{1, 1.625}))
        << "a flank that stays above half height counts as none";
    Interval<double> limited;
    ASSERT_THAT(MsFeatureFinderStage1::findHalfMaxRange(
                    plot, {3, 10}, 2.0, 6.0, &limited.start, &limited.end),
                IsOk());
    EXPECT_EQ(limited, (Interval<double>{2.0, 6.0}));
}

TEST(MsFeatureFinderStage1Test, MeasuresTheMajorPeakOnTheChord)
{
    const Peak peak = majorPeak(plotOf({0, 1, 9, 10, 9, 1, 0}), 1.0);
    EXPECT_EQ(peak.apex, QPointF(3, 10));
    // From (3, 10) to (1, 1), the first point below half height: half height at 5/9 of 2 minutes.
    EXPECT_NEAR(peak.fwhm, 2 * 2 * 5.0 / 9.0, 1e-12);
    EXPECT_NEAR(peak.interval.start, 3 - peak.fwhm, 1e-12);
    EXPECT_NEAR(peak.interval.end, 3 + peak.fwhm, 1e-12);
    EXPECT_EQ(majorPeak(plotOf({0, 1, 9, 10, 9, 1, 0}), 100.0).interval, (Interval<double>{0, 6}));
}

TEST(MsFeatureFinderStage1Test, EndsAFlankThatStaysHighWithThePlot)
{
    EXPECT_EQ(majorPeak(plotOf({8, 7, 8, 10, 0, 0}), 1.0).fwhm, 3.5);
    EXPECT_EQ(majorPeak(plotOf({0, 10, 0}), 1.0).fwhm, 2.0) << "the ends are taken as they stand";
    EXPECT_EQ(majorPeak(plotOf({10, 0, 0}), 1.0).fwhm, 0.5) << "an apex at the first point";
    EXPECT_EQ(majorPeak(plotOf({0, 2, 10}), 1.0).apex, QPointF(2, 10)) << "a rising ramp";
}

TEST(MsFeatureFinderStage1Test, ChoosesByHeightTimesWidth)
{
    const PlotBase tallAndBroad = plotOf({0, 9, 0, 0, 5, 6, 5, 0});
    EXPECT_EQ(majorPeak(tallAndBroad, 0.5).apex, QPointF(5, 6));
    EXPECT_EQ(majorPeak(tallAndBroad, 4.0).apex, QPointF(1, 9))
        << "a lower point inside the window of the best is passed over";
    EXPECT_EQ(majorPeak(plotOf({0, 5, 6, 5, 0, 9, 0, 20, 0}), 5.0).apex, QPointF(7, 20))
        << "a higher one is looked at";
    EXPECT_EQ(majorPeak(plotOf({0, 4, 0, 0, 4, 0}), 0.1).apex, QPointF(1, 4))
        << "the first of equals";
}

TEST(MsFeatureFinderStage1Test, FindsNoPeakWithoutAStrictMaximum)
{
    for (const QList<double>& heights : {QList<double>{3, 3, 3}, {0, 7, 7, 0}, {-3, -1, -2}}) {
        const Peak peak = majorPeak(plotOf(heights), 1.0);
        EXPECT_EQ(peak.apex, QPointF()) << heights.size() << " points";
        EXPECT_EQ(peak.fwhm, 0.0);
        EXPECT_EQ(peak.interval, (Interval<double>{0.0, static_cast<double>(heights.size() - 1)}));
    }
    EXPECT_THAT(MsFeatureFinderStage1::findMajorPeak(plotOf({1}), 1.0),
                HasError(kBadParameterError, "Need at least 2 points to find a peak."));
}

} // namespace zel
