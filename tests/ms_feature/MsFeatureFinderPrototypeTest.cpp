#include "ms_feature/finders/MsFeatureFinderPrototype.h"

#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

#include <numbers>
#include <random>

namespace zel {

using test::HasError;
using test::IsOk;
using test::pointsOf;
using test::psmAt;

namespace {

class Finder : public MsFeatureFinderPrototype
{
public:
    explicit Finder(const MsFeatureFinderSettings& settings = {})
        : MsFeatureFinderPrototype(settings)
    {}
    using MsFeatureFinderPrototype::calculateXICIntervalScore;
    using MsFeatureFinderPrototype::calculateXICIntervalScorePreint;
    using MsFeatureFinderPrototype::easeInOutPlot;
    using MsFeatureFinderPrototype::optimize;
    using MsFeatureFinderPrototype::preintegrate;
    using MsFeatureFinderPrototype::XicWindowScore;
};

std::optional<Ms1Feature> featureOn(const QList<QPointF>& xic,
                                    const QList<PeptideSpectrumMatch>& psms)
{
    test::XicSource source(xic);
    QHash<QString, QList<PeptideSpectrumMatch>> psmsByHash = {{QStringLiteral("key"), psms}};
    Finder finder;
    return test::valueOf(finder.constructXicWindow({}, {}, &source, &psmsByHash, {})).constFirst();
}

QList<QPointF> xicOf(const QList<test::ElutionPeak>& peaks)
{
    return test::chromatogramOf(peaks, 10.0, 30.0, 1001);
}

} // namespace

TEST(MsFeatureFinderPrototypeTest, FitsAWindowToTheSignalNearTheMatches)
{
    // The second peak is too far for a window of 8 min.
    const auto feature =
        featureOn(xicOf({{17.0, 1e6, 0.3}, {28.0, 3e6, 0.3}}), {psmAt(16.5), psmAt(17.5)});
    ASSERT_TRUE(feature);
    ASSERT_EQ(feature->timeIntervalList().size(), 1);
    const ApexInterval found = feature->timeInterval();
    EXPECT_NEAR(found.apex().x(), 17.0, 0.05) << "samples stand 0.08 min apart";
    EXPECT_NEAR(found.fwhm(), 2.3548 * 0.3, 0.01);
    EXPECT_LT(found.interval().start, 16.2);
    EXPECT_GT(found.interval().end, 17.8);
    EXPECT_LT(found.interval().end - found.interval().start, 4.5);
    EXPECT_NEAR(found.auc(), 1e6 * 0.3 * std::sqrt(2 * std::numbers::pi) * 60.0, 1e4 * 60.0);
}

TEST(MsFeatureFinderPrototypeTest, PenalizesWideWindows)
{
    EXPECT_EQ(Finder().XicWindowScore(3.0, 3.0), 1.0);
    EXPECT_NEAR(Finder().XicWindowScore(3.0, 7.0), 0.9994, 1e-4);
    EXPECT_NEAR(Finder().XicWindowScore(0.0, 8.0), 0.0, 1e-12);
    // At 8 * 0.5^(1/6) min the power is a half, and so is the score.
    EXPECT_NEAR(Finder().XicWindowScore(0.0, 8.0 * std::pow(0.5, 1.0 / 6)), 0.5, 1e-12);

    const QList<QPointF> points = pointsOf({1, 2, 4, 8});
    EXPECT_EQ(Finder().calculateXICIntervalScore(points, {1, 1}), 2.0);
    EXPECT_NEAR(Finder().calculateXICIntervalScore(points, {2, 1}), 6.0, 1e-5) << "ends included";
}

// The running sums give what the plain sum gives for windows that end between samples.
TEST(MsFeatureFinderPrototypeTest, ScoresAlikeOnRunningSums)
{
    std::mt19937 random(5);
    std::uniform_real_distribution<double> uniform;
    QList<QPointF> curve; // 4 samples a minute from minute 10, in the middle of their slots
    for (int i = 0; i < 80; ++i) {
        curve.append(QPointF(10.0 + (i + 0.5) / 4.0, uniform(random)));
    }
    QList<QPointF> cumulative = curve;
    ASSERT_THAT(Finder::preintegrate(&cumulative), IsOk());
    for (int i = 0; i < 200; ++i) {
        // Not before the first sample, which the running sums cannot leave out.
        const double start = 10.13 + uniform(random) * 10.0;
        const double end = start + uniform(random) * 9.0;
        EXPECT_NEAR(Finder().calculateXICIntervalScorePreint(cumulative, 4.0, 10.0, {end, start}),
                    Finder().calculateXICIntervalScore(curve, {start, end}),
                    1e-9)
            << start << " to " << end;
    }
    EXPECT_EQ(Finder().calculateXICIntervalScorePreint(cumulative, 4.0, 10.0, {-1e9, 10.1}), 0.0);
    EXPECT_EQ(Finder().calculateXICIntervalScorePreint({}, 4.0, 10.0, {1, 2}), 0.0);
    QPointF range;
    EXPECT_THAT(Finder().optimize({{1, 1}}, 1.0, 1.0, 1.0, &range), HasError(kError));
}

TEST(MsFeatureFinderPrototypeTest, ClimbsToAWindowThatNoStepImproves)
{
    QList<QPointF> cumulative =
        test::chromatogramOf({{15.0, 100.0, 0.8}, {17.0, 60.0, 0.4}}, 10.0, 20.0, 251);
    ASSERT_THAT(Finder::preintegrate(&cumulative), IsOk());
    const double rate = 25.0;
    QPointF range;
    ASSERT_THAT(Finder().optimize(cumulative, rate, 9.98, 13.0, &range), IsOk());
    const auto score = [&](const QPointF& window) {
        return Finder().calculateXICIntervalScorePreint(cumulative, rate, 9.98, window);
    };
    EXPECT_GT(score(range), score({11.0, 15.0}));
    EXPECT_GT(score(range), 0.98 * cumulative.constLast().y());
    const double delta = 0.05; // the climb ends once a step is below one sample of 0.04 min
    for (const QPointF& step : {QPointF(delta, delta),
                                QPointF(-delta, -delta),
                                QPointF(-delta, 0),
                                QPointF(delta, 0),
                                QPointF(0, -delta),
                                QPointF(0, delta)}) {
        EXPECT_LE(score(range + step), score(range) * (1 + 1e-4)) << step.x() << ' ' << step.y();
    }
}

TEST(MsFeatureFinderPrototypeTest, FadesACurveOutsideTheWindow)
{
    QList<QPointF> points = pointsOf(QList<double>(11, 100.0));
    ASSERT_THAT(Finder::easeInOutPlot(&points, 4.0, 6.0), IsOk());
    // A fifth of the curve is inside: t = 1/9, so the left foot stands at 2 - 2/9 and the right one
    // at 8 + 2/9. Minute 3 is at v = 11/20, s = 0.57475, s^4 = 0.109122.
    EXPECT_EQ(points[1].y(), 0.0);
    EXPECT_NEAR(points[3].y(), 10.9122, 1e-3);
    EXPECT_EQ(points[4].y(), 100.0);
    EXPECT_EQ(points[6].y(), 100.0);
    EXPECT_NEAR(points[7].y(), points[3].y(), 1e-9);
}

} // namespace zel
