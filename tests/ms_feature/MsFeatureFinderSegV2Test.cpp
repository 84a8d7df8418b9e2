#include "ms_feature/finders/MsFeatureFinderSegV2.h"

#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

namespace zel {

using test::IsOk;
using test::psmAt;
using test::scansOf;

namespace {

using Finder = test::Opened<MsFeatureFinderSegV2>;

Finder finderOf(bool mergeBeforeScoring = false,
                const std::optional<double>& width = {},
                const MsFeatureFinderSettings& settings = {})
{
    return Finder(settings, width, mergeBeforeScoring);
}

QList<QPointF> smoothedBy(const Finder& finder, const QList<QPointF>& xic)
{
    QList<QPointF> smoothed;
    QList<QPointF> extremes;
    std::vector<MsFeatureFinderSeg::Feature> features;
    EXPECT_THAT(finder.findFeaturesBeforeFilters(PlotBase(xic), &smoothed, &extremes, &features),
                IsOk());
    return smoothed;
}

} // namespace

TEST(MsFeatureFinderSegV2Test, MergesAcrossAShallowValleyAtEitherPlace)
{
    // The second apex rises by 31 % above the valley, at a quarter of its duration from it.
    const QList<QPointF> xic = scansOf({{16.0, 1e6, 0.1}, {16.3, 7e5, 0.1}});
    const QList<PeptideSpectrumMatch> psms = {psmAt(16.0), psmAt(16.3)};
    MsFeatureFinderSettings settings;
    settings.adaptiveMergeIntensityRatio = 0.0;
    ASSERT_EQ(finderOf(false, {}, settings).intervalsOn(xic, psms).size(), 2);
    settings.adaptiveMergeIntensityRatio = 0.35;
    settings.adaptiveMinSkew = 0.5;
    for (const bool mergeFirst : {false, true}) {
        const QList<ApexInterval> found = finderOf(mergeFirst, {}, settings).intervalsOn(xic, psms);
        ASSERT_EQ(found.size(), 1) << mergeFirst;
        EXPECT_NEAR(found[0].apex().x(), 16.0, 1e-9) << "measured on the XIC";
        EXPECT_LT(found[0].interval().start, 15.7);
        EXPECT_GT(found[0].interval().end, 16.6);
    }
}

TEST(MsFeatureFinderSegV2Test, LeavesTheDistanceFilterOutWhenItMergesFirst)
{
    const QList<QPointF> xic = scansOf({{12.0, 1e6, 0.1}, {19.0, 9e5, 0.1}});
    const QList<PeptideSpectrumMatch> psms = {psmAt(12.0), psmAt(19.0)};
    EXPECT_EQ(finderOf(false).intervalsOn(xic, psms).size(), 1);
    EXPECT_EQ(finderOf(true).intervalsOn(xic, psms).size(), 2);
}

TEST(MsFeatureFinderSegV2Test, TakesItsFilterWidthFromTheArgument)
{
    EXPECT_EQ(finderOf().kernelFilterWidth(), 0.2);
    const QList<QPointF> xic = scansOf({{16.0, 1e6, 0.1}});
    MsFeatureFinderSettings settings;
    settings.adaptiveSmoothingStDev = 0.5 / 3.6;
    EXPECT_EQ(smoothedBy(finderOf(false, 0.0, settings), xic),
              smoothedBy(finderOf(false, 0.5), xic))
        << "a width of 0 stands for the setting";
    const QList<QPointF> smoothed = smoothedBy(finderOf(), xic);
    EXPECT_NE(smoothed, smoothedBy(finderOf(false, 0.5), xic));
    EXPECT_EQ(smoothed.size(), 1200);
    for (const QPointF& point : smoothed) {
        ASSERT_GE(point.y(), 0.0) << "beside the peak the kernel's brim lies below zero";
    }
}

} // namespace zel
