#include "ms_feature/finders/MsFeatureFinderSeg.h"

#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

namespace zel {

using test::HasError;
using test::IsOk;
using test::psmAt;
using test::scansOf;
using test::valueOf;

namespace {

const test::Opened<MsFeatureFinderSeg> kFinder{MsFeatureFinderSettings()};

} // namespace

TEST(MsFeatureFinderSegTest, SplitsTwoPeaksAtTheValley)
{
    const QList<test::ElutionPeak> peaks = {{15.5, 1e6, 0.1}, {16.5, 5e5, 0.1}};
    const QList<ApexInterval> found =
        kFinder.intervalsOn(scansOf(peaks), {psmAt(15.4), psmAt(16.6)});
    ASSERT_EQ(found.size(), 2);
    EXPECT_NEAR(found[0].apex().x(), 15.5, 1e-9);
    EXPECT_NEAR(found[0].fwhm(), 2.3548 * 0.1, 2e-3);
    // A Gaussian falls to the thousandth at 3.72 sigma; one scan of room.
    EXPECT_NEAR(found[0].interval().start, 15.5 - 0.372, 0.04);
    EXPECT_NEAR(found[1].apex().x(), 16.5, 1e-9);
    EXPECT_LE(found[0].interval().end, found[1].interval().start);
    EXPECT_NEAR(found[0].interval().end, 16.0, 0.2);

    ASSERT_EQ(kFinder.intervalsOn(scansOf(peaks), {psmAt(15.4)}).size(), 1)
        << "no match on the second";
    EXPECT_NEAR(kFinder.intervalsOn(scansOf(peaks), {psmAt(16.9)})[0].apex().x(), 16.5, 1e-9)
        << "nor on the higher one";
}

// Bins and kernel sums must not turn rounding into extremes, at any level and spacing.
TEST(MsFeatureFinderSegTest, FindsNothingOnAFlatXic)
{
    for (const double level : {0.0, 0.1, 5.0, 1e9 / 3}) {
        QList<QPointF> xic = scansOf({}, level);
        for (qsizetype i = 0; i < xic.size(); ++i) {
            xic[i].rx() += 0.003 * static_cast<double>(i % 7);
        }
        QList<QPointF> smoothed;
        QList<QPointF> extremes;
        std::vector<MsFeatureFinderSeg::Feature> candidates;
        ASSERT_THAT(
            kFinder.findFeaturesBeforeFilters(PlotBase(xic), &smoothed, &extremes, &candidates),
            IsOk());
        EXPECT_EQ(smoothed.size(), 481) << "40 samples a minute";
        EXPECT_LT(extremes.size(), 3) << level;
        EXPECT_TRUE(candidates.empty()) << level;
        EXPECT_FALSE(valueOf(kFinder.findFeature({psmAt(15.0)}, PlotBase(xic))));
    }
}

TEST(MsFeatureFinderSegTest, NeedsPointsApartAndMatchesWhereThereIsAChoice)
{
    EXPECT_THAT(kFinder.findFeature({psmAt(1.0)}, PlotBase(QList<QPointF>{{1, 5}, {1, 6}})),
                HasError(kBadParameterError));
    EXPECT_EQ(kFinder.intervalsOn(scansOf({{16.0, 1e6, 0.1}}), {}).size(), 1);
    // A known limit: without matches all scores are 0.
    const QList<QPointF> two = scansOf({{15.5, 1e6, 0.1}, {16.6, 1e6, 0.1}});
    EXPECT_THAT(kFinder.findFeature({}, PlotBase(two)), HasError(kError));
}

} // namespace zel
