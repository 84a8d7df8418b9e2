#include "ms_feature/alignment/Ms1FeatureAlign.h"

#include "ms_feature/finders/MsFeatureFinderFactory.h"
#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

namespace zel {

using test::HasError;
using test::IsOk;
using test::psmAt;
using FinderMode = MsFeatureFinderSettings::Mode;
using Mode = Ms1FeatureAlignSettings::Mode;

namespace {

/// A feature of two peaks, at 20 and 20.8 min and `drift` later, with an interval around each of
/// the first `intervalCount`; scans 0.02 min apart.
Ms1Feature drifted(double drift, int intervalCount, double height = 1e6)
{
    const QList<test::ElutionPeak> peaks = {{20.0 + drift, height, 0.1},
                                            {20.8 + drift, height / 2, 0.1}};
    Ms1Feature feature;
    feature.setXicPlot(PlotBase(test::chromatogramOf(peaks, 14.0, 26.0, 601, 10.0)));
    QList<ApexInterval> intervals;
    for (const test::ElutionPeak& peak : peaks.mid(0, intervalCount)) {
        const double apex = peak.apexMinutes;
        intervals.append({{apex - 0.3, apex + 0.3}, 0.235, {apex, peak.height}, 7.0, 0.0});
    }
    feature.setTimeIntervalList(intervals);
    feature.setPeptideSpectrumMatches({psmAt(20.0 + drift), psmAt(20.8 + drift)});
    return feature;
}

QList<Ms1Feature*> pointersTo(QList<Ms1Feature>& features)
{
    QList<Ms1Feature*> pointers;
    for (Ms1Feature& feature : features) {
        pointers.append(&feature);
    }
    return pointers;
}

Ms1FeatureAlignSettings settingsOf(Mode mode, FinderMode finderMode = FinderMode::Adaptive)
{
    Ms1FeatureAlignSettings settings;
    settings.mode = mode;
    settings.featureFinderSettings.mode = finderMode;
    return settings;
}

Error align(const Ms1FeatureAlignSettings& settings, QList<Ms1Feature>& features)
{
    QList<Ms1Feature*> pointers = pointersTo(features);
    return Ms1FeatureAlign(settings).align(&pointers);
}

} // namespace

TEST(Ms1FeatureAlignTest, GivesAllSamplesTheSameIntervals)
{
    const QList<double> drifts = {0.0, 0.5, -0.7, 0.3};
    QList<Ms1Feature> features;
    for (const double drift : drifts) {
        features.append(drifted(drift, drift > 0.4 ? 1 : 2));
    }
    features.append(Ms1Feature()); // a sample without the ion
    // The sample without the ion counts as the earliest: the median apex is that of the first.
    ASSERT_THAT(align(settingsOf(Mode::DifferentTopologyOnly), features), IsOk());
    for (qsizetype i = 0; i < drifts.size(); ++i) {
        const QList<ApexInterval> found = features[i].timeIntervalList();
        ASSERT_EQ(found.size(), 2) << i;
        EXPECT_NEAR(features[i].warpOffset(), -drifts[i], 0.021);
        EXPECT_NEAR(found[0].apex().x(), 20.0 + drifts[i], 0.021) << "on the sample's own time";
        EXPECT_NEAR(found[1].apex().x(), 20.8 + drifts[i], 0.021);
        EXPECT_NEAR(found[1].apex().y(), 5e5, 2e4) << "of the sample's own XIC";
        EXPECT_EQ(features[i].peptideSpectrumMatches()[0].scanTimeMinutes(), 20.0 + drifts[i]);
    }
    EXPECT_EQ(features[4].timeIntervalList().size(), 2);
    EXPECT_EQ(features[4].timeIntervalList()[0].apex(), QPointF());

    const double before = features[2].warpOffset();
    ASSERT_THAT(align(settingsOf(Mode::Full), features), IsOk());
    EXPECT_NEAR(features[2].warpOffset(), before, 0.021) << "from the axis that is shared already";
    EXPECT_NEAR(features[2].timeIntervalList()[0].apex().x(), 19.3, 0.021);
}

TEST(Ms1FeatureAlignTest, CentresTheOtherFindersOnTheMatches)
{
    for (const FinderMode finder : {FinderMode::FixedWidth, FinderMode::Prototype}) {
        QList<Ms1Feature> features = {drifted(0.0, 1), drifted(0.6, 1), drifted(-0.6, 1)};
        for (Ms1Feature& feature : features) {
            QList<PeptideSpectrumMatch> matches;
            for (const double distance : {-0.1, 0.1}) {
                matches.append(psmAt(feature.timeInterval().apex().x() + distance));
                matches.last().setApex(feature.timeInterval().apex());
            }
            feature.setPeptideSpectrumMatches(matches);
        }
        ASSERT_THAT(align(settingsOf(Mode::Full, finder), features), IsOk());
        for (qsizetype i = 0; i < 3; ++i) {
            const ApexInterval found = features[i].timeInterval();
            EXPECT_NEAR(found.apex().x(), 20.0 - features[i].warpOffset(), 0.021);
            EXPECT_LT(found.interval().start, found.apex().x() - 1.0);
            EXPECT_GT(found.interval().end, found.apex().x() + 1.0);
        }
        for (Ms1Feature& feature : features) {
            feature.setPeptideSpectrumMatches({});
        }
        EXPECT_THAT(align(settingsOf(Mode::Full, finder), features), HasError(kError));
    }
}

TEST(Ms1FeatureAlignTest, LeavesOutWhatTheModeLeavesOut)
{
    const auto isUntouched = [](Mode mode, int secondCount) {
        QList<Ms1Feature> features = {drifted(0.0, 1), drifted(0.5, secondCount)};
        EXPECT_THAT(align(settingsOf(mode), features), IsOk());
        return features[0].timeIntervalList()[0].auc() == 7.0;
    };
    EXPECT_TRUE(isUntouched(Mode::DifferentTopologyOnly, 1));
    EXPECT_FALSE(isUntouched(Mode::DifferentTopologyOnly, 2));
    EXPECT_FALSE(isUntouched(Mode::Full, 1));
    EXPECT_TRUE(isUntouched(Mode::Disabled, 2));
}

TEST(Ms1FeatureAlignTest, FailuresChangeNothing)
{
    Ms1FeatureAlignSettings settings = settingsOf(Mode::Full);
    settings.correlationThreshold = 0.99;
    QList<Ms1Feature> features = {drifted(0.0, 1), drifted(0.5, 1)};
    features[1].setXicPlot(PlotBase(test::chromatogramOf({{17.0, 1e6, 0.9}}, 14, 26, 601)));
    EXPECT_THAT(align(settings, features), HasError(kError));
    EXPECT_EQ(features[1].warpOffset(), 0.0);
    EXPECT_EQ(features[0].timeIntervalList()[0].auc(), 7.0);

    settings.correlationThreshold = 1.0; // that of constant curves, which is enough
    for (Ms1Feature& feature : features) {
        feature.setXicPlot(PlotBase(test::chromatogramOf({}, 14, 26, 601, 5.0)));
    }
    EXPECT_THAT(align(settings, features), HasError(kError, "Can't align non-existent feature."));
    QList<Ms1Feature*> pointers = pointersTo(features);
    Ms1FeatureAlign aligner(settings);
    aligner.setMsFeatureFinderFactory(nullptr);
    EXPECT_THAT(aligner.align(&pointers), HasError(kError, "Empty feature finder object."));
    pointers.append(nullptr);
    EXPECT_THAT(aligner.align(&pointers), HasError(kBadParameterError));
    QList<Ms1Feature> empty = {Ms1Feature(), Ms1Feature()};
    EXPECT_THAT(align(settings, empty), HasError(kBadParameterError));
    // Two points next to each other must not ask for all the memory there is.
    empty[0].setXicPlot(PlotBase(QList<QPointF>{{0, 1}, {1e-9, 1}, {60, 1}}));
    EXPECT_THAT(align(settings, empty), HasError(kBadParameterError));
}

TEST(Ms1FeatureAlignTest, LaysXicsOnOneGrid)
{
    QList<Ms1Feature> features(3);
    features[0].setXicPlot(PlotBase(QList<QPointF>{{10, 4}, {10.5, 8}, {11.5, 0}}));
    features[1].setXicPlot(PlotBase(QList<QPointF>{{9, 6}, {11, 2}}));
    features[1].setWarpOffset(0.75);
    QList<QList<double>> plots;
    double start = 0.0;
    double end = 0.0;
    double step = 0.0;
    ASSERT_THAT(Ms1FeatureAlign::uniformResample(pointersTo(features), &plots, &start, &end, &step),
                IsOk());
    EXPECT_EQ(start, 9.75);
    EXPECT_EQ(end, 11.75);
    EXPECT_EQ(step, 0.5);
    const QList<QList<double>> expected = {{0, 6, 6, 2}, {6, 5, 4, 3}, {0, 0, 0, 0}};
    EXPECT_EQ(plots, expected);
}

} // namespace zel
