#include "ms_feature/segmentation/SegmentationCurve_p.h"
#include "ms_feature/segmentation/SegmentationExtremes_p.h"
#include "ms_feature/segmentation/SegmentationFeatures_p.h"
#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <numeric>

namespace zel::segmentation {

using test::HasError;
using test::IsOk;
using test::pointsOf;
using test::psmAt;
using test::valueOf;

namespace {

Feature featureOf(double start, double end, double auc, const QPointF& apex = {})
{
    return Feature({start, end}, auc, apex, {start, end});
}

QList<double> startsOf(const std::vector<Feature>& features)
{
    QList<double> starts;
    for (const Feature& feature : features) {
        starts.append(feature.timeInterval().start);
    }
    return starts;
}

} // namespace

TEST(SegmentationTest, BuildsADifferenceOfGaussians)
{
    const std::vector<double> taps = smoothingKernel(10.0);
    ASSERT_EQ(taps.size(), 183U) << "91 samples to each side for a width of 30";
    EXPECT_NEAR(std::accumulate(taps.begin(), taps.end(), 0.0), 1.0, 1e-12);
    // By hand: (1/10 - 0.2/30) at the middle, exp(-1)/10 - 0.2 exp(-1/9)/30 ten samples off, each
    // over sqrt(pi); the sum of all taps is 1 - 0.2 erf(3).
    const double sum = 1.0 - 0.2 * std::erf(3.0);
    const double unit = std::sqrt(std::numbers::pi) * sum;
    EXPECT_NEAR(taps[91], (0.1 - 0.2 / 30) / unit, 1e-5);
    EXPECT_NEAR(taps[101], (std::exp(-1.0) / 10 - 0.2 * std::exp(-1.0 / 9) / 30) / unit, 1e-5);
    for (std::size_t i = 0; i < taps.size(); ++i) {
        EXPECT_EQ(taps[i], taps[taps.size() - 1 - i]);
    }
    EXPECT_LT(taps[61], 0.0) << "the brim lies below zero";
    // 3 * (3 * (100 * (0.2 / 3.6))) + 1 reaches 51 in this order of operations.
    EXPECT_EQ(smoothingKernel(100.0 * (0.2 / 3.6)).size(), 103U);

    EXPECT_EQ(buildSmoothingKernel(30.0, 10.0, 0.2, 1.0), taps);
    EXPECT_EQ(buildSmoothingKernel(1.0, 3.0, 1.0, 1.0), buildSmoothingKernel(1.0, 3.0, 0.9, 1.0));
    for (const double none : {0.0, -1.0, std::nan("")}) {
        EXPECT_EQ(smoothingKernel(none), std::vector<double>{1.0}) << none;
    }
}

TEST(SegmentationTest, LaysTheGridByTheLimitedRate)
{
    const auto count = [](double span, double rate) {
        return valueOf(gridSampleCount(PlotBase(QList<QPointF>{{1, 0}, {1 + span, 0}}), rate));
    };
    EXPECT_EQ(limitedRate(100.0, 40.0), 40.0);
    EXPECT_EQ(limitedRate(0.0, 40.0), 1.0);
    EXPECT_EQ(count(12.0, 40.0), 480);
    EXPECT_EQ(count(0.1, 40.0), 10);
    EXPECT_EQ(count(10.5, 1.0), 11) << "rounded";
    EXPECT_THAT(gridSampleCount(PlotBase(pointsOf({1})), 40.0), HasError(kBadParameterError));
    EXPECT_THAT(gridSampleCount(PlotBase(QList<QPointF>{{1, 0}, {1, 5}}), 40.0),
                HasError(kBadParameterError));
    EXPECT_THAT(gridSampleCount(PlotBase(QList<QPointF>{{0, 0}, {1e300, 5}}), 40.0),
                HasError(kBadParameterError));
}

TEST(SegmentationTest, AlternatesMinimaAndMaxima)
{
    const QList<QPair<QList<double>, QList<QPointF>>> rows = {
        {{1, 3, 2}, {{0, 1}, {1, 3}, {2, 2}}},
        {{5, 1, 4}, {{0, 0}, {0, 5}, {1, 1}, {2, 4}, {2, 4}}},
        {{0, 5, 5, 0}, {{0, 0}, {1, 5}, {3, 0}}},
        {{0, 5, 3, 3, 1}, {{0, 0}, {1, 5}, {2, 3}, {3, 3}, {4, 1}}},
        {{5, 1, 1, 5}, {{0, 0}, {0, 5}, {1, 1}, {1.5, 0}, {2, 1}, {3, 5}, {3, 5}}},
        {{2, 2, 2}, {{2, 2}}},
        {{}, {}},
    };
    for (const auto& [heights, extremes] : rows) {
        EXPECT_EQ(alternatingExtremes(pointsOf(heights)), extremes);
    }
    EXPECT_EQ(turnsOf(pointsOf({0, 1e-3, 1}), 1e-2).front().index, 1) << "a step below is flat";
}

TEST(SegmentationTest, AlternatesRealMinimaAndMaxima)
{
    const QList<QPair<QList<double>, QList<QPointF>>> rows = {
        {{1, 3, 2}, {{0, 1}, {1, 3}, {2, 2}}},
        {{5, 1, 4}, {{0, 5}, {0, 5}, {1, 1}, {2, 4}, {2, 4}}},
        {{5, 5, 5, 1}, {{1, 5}, {2, 5}, {3, 1}}},
        {{0, 5, 5 + 5e-10, 0}, {{0, 0}, {2, 5 + 5e-10}, {3, 0}}},
        {{0, 5, 5, 0}, {{0, 0}, {1, 5}, {3, 0}}},
        // Three minima in a row: two terraces on the way down and up.
        {{9, 5, 5, 1, 1, 5, 9},
         {{0, 9}, {0, 9}, {1, 5}, {2, 5}, {3, 1}, {3.5, 0}, {4, 1}, {6, 9}, {6, 9}}},
        {{3, 1, 1 + 9e-10, 1 + 18e-10, 4},
         {{0, 3}, {0, 3}, {1, 1}, {2, 0}, {3, 1 + 18e-10}, {4, 4}, {4, 4}}},
        {{0, -1, 0, 2}, {{0, 0}, {0, 0}, {1, -1}, {3, 2}, {3, 2}}},
        {{2, 2, 2}, {{2, 2}}},
        {{}, {}},
    };
    for (const auto& [heights, extremes] : rows) {
        EXPECT_EQ(alternatingRealExtremes(pointsOf(heights)), extremes)
            << heights.size() << " samples, the second at " << heights.value(1);
    }
    // A dropped negative maximum leaves two minima in a row, and a third replaces the second.
    EXPECT_EQ(alternatingRealExtremes(pointsOf({0, -5, -3, -6, -3, -7, 1})),
              (QList<QPointF>{{0, 0}, {0, 0}, {1, -5}, {2, 0}, {5, -7}, {6, 1}, {6, 1}}));
}

TEST(SegmentationTest, MovesExtremesOntoThePlot)
{
    const PlotBase plot(pointsOf({0, 3, 9, 4, 2, 1, 6, 8, 7, 0}));
    QList<QPointF> extremes = {{0, 1}, {3, 5}, {4.2, 4}, {6, 5}, {9, 1}};
    adjustExtremes(plot, 0.0, &extremes);
    // The minimum at 4.2 reaches from 3.6 to 5.1; the maxima reach halfway to the moved minima.
    EXPECT_EQ(extremes, (QList<QPointF>{{0, 0}, {2, 9}, {5, 1}, {7, 8}, {9, 0}}));
    extremes = {{0, 1}, {3, 0}, {4.2, 4}};
    adjustExtremes(plot, 0.0, &extremes);
    EXPECT_EQ(extremes[1], QPointF(3, 0)) << "a filler stays";
    extremes = {{4.2, 4}, {4.5, 7}, {4.8, 4}};
    const QList<QPointF> outOfReach = extremes;
    adjustExtremes(plot, 0.0, &extremes);
    EXPECT_EQ(extremes, outOfReach);
}

TEST(SegmentationTest, CutsCandidatesThatShareTheirEnds)
{
    const PlotBase plot(pointsOf({0, 10, 0, 4, 0}));
    const QList<QPointF> extremes = {{0, 0}, {1, 10}, {2, 0}, {2.5, 0}, {3, 4}, {3.5, 3}, {4, 0}};
    std::vector<Feature> features;
    ASSERT_THAT(extractFeatures(plot, extremes, -1.0, &features), IsOk());
    ASSERT_EQ(features.size(), 3U);
    EXPECT_EQ(features[0].auc(), 10.0);
    EXPECT_EQ(features[0].halfMaxInterval(), (Interval<double>{0.5, 1.5}));
    EXPECT_EQ(features[1].timeInterval(), (Interval<double>{2, 3}));
    EXPECT_EQ(features[1].halfMaxInterval(), (Interval<double>{2.5, 2.5})) << "a filler";
    ASSERT_THAT(extractFeatures(plot, extremes, 0.0, &features), IsOk());
    EXPECT_EQ(features.size(), 2U);
    ASSERT_THAT(extractFeatures(plot, {{0, 0}, {1, 10}}, -1.0, &features), IsOk());
    EXPECT_TRUE(features.empty());
}

TEST(SegmentationTest, DropsCandidatesByTheirShare)
{
    const std::vector<Feature> areas = {
        featureOf(0, 1, 100), featureOf(1, 2, 1), featureOf(2, 3, 0.99), featureOf(3, 4, 0)};
    EXPECT_EQ(startsOf(valueOf(filterByShare(areas, &Feature::auc, 0.01))), (QList<double>{0, 1}))
        << "exactly the share stays";
    EXPECT_EQ(startsOf(valueOf(filterByShare(areas, &Feature::auc, 0.0))),
              (QList<double>{0, 1, 2}));
    EXPECT_EQ(valueOf(filterByShare({featureOf(0, 1, 0)}, &Feature::auc, 0.5)).size(), 1U)
        << "one alone stays";
    EXPECT_THAT(filterByShare(areas, &Feature::score, 0.0), HasError(kError))
        << "no match, no score";
    EXPECT_THAT(filterByShare({}, &Feature::auc, 0.0), HasError(kError));
}

TEST(SegmentationTest, DropsCandidatesFarFromTheStrongest)
{
    EXPECT_EQ(startsOf(valueOf(filterByDistance({featureOf(3, 4, 1),
                                                 featureOf(4, 5, 9, {10, 1}),
                                                 featureOf(15, 16, 2),
                                                 featureOf(15.5, 16.1, 9, {0, 1})},
                                                6.0))),
              (QList<double>{4, 15}))
        << "ends on the edge belong";
    EXPECT_EQ(startsOf(valueOf(
                  filterByDistance({featureOf(0, 50, 1), featureOf(0.5, 60, 9, {30, 1})}, 6.0))),
              (QList<double>{0.5}))
        << "the strongest stays in any case";
    EXPECT_THAT(filterByDistance({}, 6.0), HasError(kError));
}

TEST(SegmentationTest, TightensFlanks)
{
    const PlotBase plot(pointsOf({0, 1, 2, 8, 10, 3, 2, 0, 7}));
    const auto tightened = [&plot](double start, double end, double ratio) {
        Feature feature = featureOf(start, end, 1.0, {4, 10});
        EXPECT_THAT(tightenFeature(plot, ratio, &feature), IsOk());
        return feature.timeInterval();
    };
    EXPECT_EQ(tightened(0.4, 6.6, 0.0), (Interval<double>{0, 7}));
    EXPECT_EQ(tightened(0.4, 6.6, 0.25), (Interval<double>{2, 5}))
        << "8 rises by more than 2.5 from its neighbour, 3 falls by less to its own";
    EXPECT_EQ(tightened(4.4, 4.5, 0.5), (Interval<double>{4.4, 4.5})) << "one point only";
    EXPECT_EQ(tightened(2, 6, 5.0).start, tightened(2, 6, 5.0).end) << "no point reaches the level";

    Feature inverted = featureOf(6, 2, 1.0);
    EXPECT_THAT(tightenFeature(plot, 0.1, &inverted), HasError(kError));
    int index = -1;
    for (const auto& [time, nearest] :
         {std::pair{-5.0, 0}, {0.5, 0}, {0.51, 1}, {3.0, 3}, {7.7, 8}, {99.0, 8}}) {
        ASSERT_THAT(nearestPointIndex(plot, time, &index), IsOk());
        EXPECT_EQ(index, nearest) << time;
    }
    EXPECT_THAT(nearestPointIndex(PlotBase(), 1.0, &index), HasError(kBadParameterError));
}

TEST(SegmentationTest, LetsOverlappingNeighboursMeetAtTheLowerEnd)
{
    const PlotBase plot(pointsOf({9, 5, 3, 1, 4, 9}));
    std::vector<Feature> features = {featureOf(0, 3, 1), featureOf(2, 5, 1), featureOf(5, 6, 1)};
    removeOverlaps(plot, &features);
    EXPECT_EQ(features[0].timeInterval(), (Interval<double>{0, 3}));
    EXPECT_EQ(features[1].timeInterval(), (Interval<double>{3, 5}));
    features = {featureOf(0, 4, 1), featureOf(3, 5, 1)};
    removeOverlaps(plot, &features);
    EXPECT_EQ(features[0].timeInterval(), (Interval<double>{0, 3}));
    EXPECT_EQ(features[1].timeInterval(), (Interval<double>{3, 5}));
}

TEST(SegmentationTest, MergesNeighboursWithoutAValley)
{
    // Apexes at 4 and 6 min over a shallow boundary of 9 at 5 min; a deep one of 1 at 8 min.
    const PlotBase plot(pointsOf({0, 2, 4, 8, 10, 9, 10, 5, 1, 5, 6, 0}));
    const std::vector<Feature> cut = {featureOf(0, 5, 28.5, {4, 10}),
                                      featureOf(5, 8, 20, {6, 10}),
                                      featureOf(8, 11, 11.5, {10, 6})};
    const auto merged = [&plot](std::vector<Feature> features, double ratio, double skew) {
        EXPECT_THAT(mergeContiguousFeatures(plot, ratio, skew, &features), IsOk());
        return features;
    };
    std::vector<Feature> found = merged(cut, 0.2, 0.2);
    ASSERT_EQ(startsOf(found), (QList<double>{0, 8}));
    EXPECT_EQ(found[0].timeInterval().end, 8.0);
    EXPECT_EQ(found[0].auc(), 48.5);
    EXPECT_EQ(found[0].apex(), QPointF(4, 10)) << "the first of equal apexes";
    EXPECT_EQ(found[0].halfMaxInterval(), (Interval<double>{2.25, 7}));
    EXPECT_EQ(merged(cut, 0.1, 0.2).size(), 3U) << "the apexes rise by a ninth";
    EXPECT_EQ(merged(cut, 0.2, 0.19).size(), 3U) << "the nearer apex stands at 0.2 of 5 min";
    EXPECT_EQ(merged(cut, 0.0, 1.0).size(), 3U);
    EXPECT_EQ(startsOf(merged(cut, 10.0, 1.0)), (QList<double>{0})) << "three become one";
    std::vector<Feature> apart = cut;
    apart[1].timeInterval().start = 5.02;
    EXPECT_EQ(merged(apart, 0.2, 0.2).size(), 3U);

    const PlotBase gap(pointsOf({0, 5, 0, 5, 0}));
    found = {featureOf(0, 2, 5, {1, 5}), featureOf(2, 4, 5, {3, 5})};
    ASSERT_THAT(mergeContiguousFeatures(gap, 1e300, 1.0, &found), IsOk());
    EXPECT_EQ(found.size(), 2U) << "a boundary of height 0 is a valley";
    found = {featureOf(0.25, 0.75, 5, {1, 5}), featureOf(20, 30, 5, {3, 5})};
    ASSERT_THAT(mergeContiguousFeatures(gap, 0.2, 0.2, &found), IsOk());
    ASSERT_EQ(found.size(), 1U) << "off the plot there is no area";
    EXPECT_EQ(found[0].apex(), QPointF(0.75, 3.75)) << "between two points";
}

TEST(SegmentationTest, GivesEachMatchToTheNearestCandidate)
{
    std::vector<Feature> features = {featureOf(0, 2, 3), featureOf(2, 4, 1), featureOf(8, 9, 1)};
    distributePSMToFeatures({psmAt(2.0), psmAt(5.9), psmAt(6.1), psmAt(300.0), psmAt(-7.0)},
                            &features);
    const auto countOf = [&features](std::size_t i) {
        return features[i].peptideSpectrumMatches().size();
    };
    EXPECT_EQ(countOf(0), 2) << "the shared end goes to the first";
    EXPECT_EQ(countOf(1), 1);
    EXPECT_EQ(countOf(2), 2);
    EXPECT_EQ(features[0].score(), 6.0);
    std::vector<Feature> none;
    distributePSMToFeatures({psmAt(2.0)}, &none);
    EXPECT_TRUE(none.empty());
}

TEST(SegmentationTest, MergesCandidates)
{
    Feature low({1, 2}, 3.0, {1.5, 10}, {1.4, 1.6});
    low.setApexAveragineCorrelation(0.25);
    low.addPSM(psmAt(1.0));
    Feature high({1.5, 4}, 6.0, {3, 20}, {2.5, 3.5});
    high.setApexAveragineCorrelation(0.5);
    high.addPSM(psmAt(2.0));
    Feature merged = low;
    merged.mergeFrom(high);
    EXPECT_EQ(merged.timeInterval(), (Interval<double>{1, 4}));
    EXPECT_EQ(merged.auc(), 9.0);
    EXPECT_EQ(merged.averageIntensity(), 3.0);
    EXPECT_EQ(merged.score(), 18.0);
    EXPECT_EQ(merged.apex(), QPointF(3, 20));
    EXPECT_EQ(merged.FWHM(), 1.0);
    EXPECT_EQ(merged.apexAvaragineCorrelation(), 0.5);
    high.mergeFrom(low);
    EXPECT_EQ(high.apex(), QPointF(3, 20));
    EXPECT_EQ(high.apexAvaragineCorrelation(), 0.5);
    EXPECT_EQ(Feature().averageIntensity(), 0.0);
}

} // namespace zel::segmentation
