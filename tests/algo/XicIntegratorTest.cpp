#include "XicIntegrator.h"

#include "ms_feature/finders/MsFeatureFinderBase.h"
#include "ms_feature/finders/MsFeatureFinderFactory.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

#include <tuple>

namespace zel {

using test::HasError;
using test::IsOk;
using test::valueOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

namespace {

using Limits = Interval<double>;

/// Two peaks with a valley between them, far from everything else, at 5 and 5.6 min.
QList<QPointF> pairOfPeaks()
{
    return test::chromatogramOf({{5.0, 1000.0, 0.1}, {5.6, 800.0, 0.1}}, 0.0, 9.98, 500);
}

XicIntegratorResult integrated(int mode,
                               double time,
                               bool ignoreTime = false,
                               bool noSplits = false)
{
    XicBaselineLimitsDetectorOptions detector;
    detector.detectionMode = mode;
    detector.ignoreRetentionTime = ignoreTime;
    XicPeakSplitterOptions splitter;
    splitter.splittingDisabled = noSplits;
    XicIntegrator integrator;
    EXPECT_THAT(integrator.init(detector, splitter), IsOk());
    return valueOf(integrator.integratePeak(pairOfPeaks(), time));
}

/// A finder that gives what it is told and tells what it was asked with.
class ScriptedFactory : public MsFeatureFinderFactory
{
public:
    class Finder : public MsFeatureFinderBase
    {
    public:
        Finder(const MsFeatureFinderSettings& settings, const ScriptedFactory& script)
            : MsFeatureFinderBase(settings)
            , m_script(script)
        {}

    protected:
        Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& psms,
                                                      const PlotBase&) const override
        {
            EXPECT_THAT(psms, IsEmpty());
            if (m_script.fails) {
                return Error(kError, QStringLiteral("no"));
            }
            QList<ApexInterval> list;
            for (const Limits& limits : m_script.found) {
                list.append(ApexInterval(limits, 0, {}, 0, 0));
            }
            Ms1Feature feature;
            feature.setTimeIntervalList(list);
            return std::optional<Ms1Feature>(feature);
        }

    private:
        const ScriptedFactory& m_script;
    };

    MsFeatureFinderBase* create(const MsFeatureFinderSettings& settings) override
    {
        asked = settings;
        return new Finder(settings, *this);
    }

    bool fails = false;
    QList<Limits> found;
    MsFeatureFinderSettings asked;
};

} // namespace

TEST(XicIntegratorTest, DetectsByItsMode)
{
    for (const auto& [mode, time, ignoresTime, count] : {std::tuple(0, 1.0, false, 1),
                                                         {1, 5.0, false, 1},
                                                         {1, 1.0, false, 0},
                                                         {1, 1.0, true, 1},
                                                         {2, 5.0, false, 0}, // no factory
                                                         {2, 5.0, true, 1},
                                                         {3, 5.0, false, 0}}) {
        EXPECT_EQ(integrated(mode, time, ignoresTime).allPeakLimitsAndSplits().size(), count)
            << mode << " at " << time;
    }

    const XicIntegratorResult split = integrated(1, 5.0);
    ASSERT_EQ(split.allPeakLimitsAndSplits().constFirst().splits.size(), 1);
    EXPECT_NEAR(split.allPeakLimitsAndSplits().constFirst().splits[0].first, 5.31, 0.02);
    EXPECT_NEAR(valueOf(split.peakLimitContainingRetentionTime()).end, 5.31, 0.02);
    EXPECT_THAT(integrated(1, 5.0, false, true).allPeakLimitsAndSplits().constFirst().splits,
                IsEmpty());
}

TEST(XicIntegratorTest, AsksATargetedFinderInModeTwo)
{
    XicBaselineLimitsDetectorOptions detector;
    detector.detectionMode = 2;
    XicPeakSplitterOptions splitter;
    splitter.splittingDisabled = true;
    splitter.mergeIntensityRatio = 0.3;
    splitter.minSkew = 0.4;
    const auto factory = QSharedPointer<ScriptedFactory>::create();
    factory->found = {{4.6, 5.3}, {5.3, 6.0}};
    XicIntegrator integrator;
    integrator.setMsFeatureFinderFactory(factory);
    ASSERT_THAT(integrator.init(detector, splitter), IsOk());
    EXPECT_THAT(
        valueOf(valueOf(integrator.integratePeak(pairOfPeaks(), 5.0)).allPeakLimitsSplitsApplied()),
        ElementsAre(Limits{4.6, 5.3}, Limits{5.3, 6.0}));
    EXPECT_EQ(factory->asked.adaptiveSmoothingStDev, 1.0 / 18.0);
    EXPECT_EQ(factory->asked.adaptiveMergeIntensityRatio, 0.3);
    EXPECT_EQ(factory->asked.adaptiveMinSkew, 0.4);

    factory->fails = true;
    EXPECT_THAT(valueOf(integrator.integratePeak(pairOfPeaks(), 5.0)).allPeakLimitsAndSplits(),
                IsEmpty());
}

TEST(XicIntegratorResultTest, KeepsPeaksApart)
{
    XicIntegratorResult result(2.0, {}, 0.25);
    result.addXicPeak({1.0, 2.0}, {});
    EXPECT_TRUE(result.containsRetentionTime()) << "the end belongs to the peak";
    result.addXicPeak({0.0, 3.0}, {});          // covers it
    result.addXicPeak({1.2, 1.3}, {});          // is covered
    result.addXicPeak({1.6, 2.6}, {});          // 25 % of the union
    result.addXicPeak({1.75, 2.5}, {{2.0, 1}}); // 16.7 %
    result.addXicPeak({4.0, 4.25}, {});         // just wide enough
    result.addXicPeak({5.0, 5.125}, {});        // too narrow
    EXPECT_THAT(
        valueOf(result.allPeakLimitsSplitsApplied()),
        ElementsAre(Limits{1.0, 2.0}, Limits{1.75, 2.0}, Limits{2.0, 2.5}, Limits{4.0, 4.25}));
    EXPECT_TRUE(result.containsRetentionTime()) << "a later peak without the time changes nothing";
    EXPECT_FALSE(XicIntegratorResult::checkIfPeakOverlaps({0.0, 1.0}, {}));
    EXPECT_FALSE(XicIntegratorResult::checkIfPeakOverlaps({0.0, 6.0}, {{4.0, 10.0}})) << "20 %";
}

TEST(XicIntegratorResultTest, AppliesSplitsInAscendingOrder)
{
    XicIntegratorResult result(2.0, {}, 0.5);
    result.addXicPeak({0.0, 3.0}, {{2.25, 0.9}, {1.0, 0.5}, {2.5, 0.7}});
    EXPECT_THAT(valueOf(result.peakLimitsWithRetentionTimeSplitsApplied()),
                ElementsAre(Limits{0.0, 1.0}, Limits{1.0, 2.25}, Limits{2.5, 3.0}));
    EXPECT_EQ(valueOf(result.peakLimitContainingRetentionTime()), (Limits{1.0, 2.25}));

    XicIntegratorResult outside(1.0, {}, 0.1);
    outside.addXicPeak({0.0, 3.0}, {{3.5, 1.0}});
    EXPECT_THAT(outside.allPeakLimitsSplitsApplied(),
                HasError(kBadParameterError, "Start is greater than end"));

    XicIntegratorResult elsewhere(9.0, {}, 0.1);
    elsewhere.addXicPeak({0.0, 3.0}, {});
    EXPECT_THAT(valueOf(elsewhere.peakLimitsWithRetentionTimeSplitsApplied()), IsEmpty());
    EXPECT_EQ(valueOf(elsewhere.peakLimitContainingRetentionTime()), Limits());
}

TEST(XicIntegratorResultTest, SmoothsTheApexOfMoreThanFivePoints)
{
    const QList<QPointF> xic = {{1, 0}, {2, 10}, {3, 40}, {4, 20}, {5, 8}, {6, 0}};
    const XicIntegratorResult result(3.0, xic, 0.0);
    EXPECT_EQ(valueOf(result.apexPointByPeakLimits({1, 5})), QPointF(3, 40));
    const QPointF smoothed = valueOf(result.apexPointByPeakLimits({1, 6}));
    EXPECT_EQ(smoothed.x(), 3);
    EXPECT_NEAR(smoothed.y(), 15.6, 1e-9);
    EXPECT_EQ(valueOf(result.apexPointByPeakLimits({7, 8})), QPointF(0, 0));
}

} // namespace zel
