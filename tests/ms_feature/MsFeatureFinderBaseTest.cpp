#include "ms_feature/finders/MsFeatureFinderBase.h"

#include "MultiIsotopeXic.h"
#include "common/core_mini/src/algo/isotopes/AveragineGenerator.h"
#include "ms_feature/finders/MsFeatureFinderBase_p.h"
#include "tests/support/Runs.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

#include <functional>
#include <numbers>

namespace zel {

using msreader::PeakPickingFilter;
using test::HasError;
using test::IsOk;
using test::psmAt;
using test::valueOf;
using test::XicSource;
using ::testing::ElementsAre;

namespace {

using Features = QList<std::optional<Ms1Feature>>;
using Psms = QHash<QString, QList<PeptideSpectrumMatch>>;
using MultiIsotopeMethod = MsFeatureFinderSettings::MultiIsotopeMethod;

const auto kKey = QStringLiteral("key");

/// Notes what it is asked and answers with one interval, or as told.
class RecordingFinder : public MsFeatureFinderBase
{
public:
    explicit RecordingFinder(const MsFeatureFinderSettings& settings = {})
        : MsFeatureFinderBase(settings)
    {}
    using MsFeatureFinderBase::resamplePlot;

    struct Call
    {
        double firstMinutes;
        double lastMinutes;
        double bestScore;
        double bestMinutes;
        QList<QPointF> xic;
    };
    mutable QList<Call> calls;
    Interval<double> interval = {9.0, 10.0};
    std::function<Result<std::optional<Ms1Feature>>()> answer = [this] {
        Ms1Feature feature;
        feature.setTimeInterval(ApexInterval(interval, 0.5, {9.5, 1.0}, 0.0, 0.0));
        return std::optional<Ms1Feature>(feature);
    };

    Result<Features> run(msreader::MsDataSourceInterface* source,
                         Psms* psms,
                         const QSharedPointer<ProgressBarInterface>& progress = {},
                         std::optional<PeakPickingFilter> filter = {})
    {
        return constructXicWindow({}, filter, source, psms, progress);
    }

protected:
    Result<std::optional<Ms1Feature>> findFeature(const QList<PeptideSpectrumMatch>& /*psms*/,
                                                  const PlotBase& xic) const override
    {
        calls.append({firstPSM().scanTimeMinutes(),
                      lastPSM().scanTimeMinutes(),
                      maxScorePSM().score(),
                      maxScorePSM().scanTimeMinutes(),
                      xic.getPointList()});
        return answer();
    }
};

/// Cancels after it was asked this often.
struct CancelingSink : ProgressBarInterface
{
    bool isCanceled() const override { return --questionsLeft < 0; }
    void beginPhase(int count) override { stepCount = count; }
    void setText(const QString&) override {}
    void stepDone() override { ++stepsDone; }
    void endPhase() override {}
    mutable int questionsLeft = 1000;
    int stepCount = 0;
    int stepsDone = 0;
};

/// One peak of height 100 at 10 min in a run from minute 0 to 30.
const QList<QPointF> kXic = test::chromatogramOf({{10.0, 100.0, 0.2}}, 0.0, 30.0, 301);

} // namespace

TEST(MsFeatureFinderBaseTest, KeepsOnePlaceForEachSortedKey)
{
    XicSource source(kXic);
    Psms psms;
    for (const char* key : {"b", "B", "a"}) {
        psms.insert(QString::fromLatin1(key), {psmAt(10.0)});
    }
    psms.insert(QStringLiteral("A without matches"), {});
    psms.insert(QStringLiteral("Z off the run"), {psmAt(300.0)});
    RecordingFinder finder;
    const auto sink = QSharedPointer<CancelingSink>::create();
    const Features features =
        valueOf(finder.run(&source, &psms, sink, PeakPickingFilter::Centroid));
    ASSERT_EQ(features.size(), 5);
    EXPECT_FALSE(features[0]);
    EXPECT_FALSE(features[2]);
    const QList<QPair<int, const char*>> expected = {{1, "B"}, {3, "a"}, {4, "b"}};
    for (const auto& [place, key] : expected) {
        ASSERT_TRUE(features[place]) << key;
        EXPECT_EQ(features[place]->hash(), QString::fromLatin1(key));
        EXPECT_EQ(features[place]->peptideSpectrumMatches().size(), 1);
    }
    EXPECT_EQ(finder.calls.size(), 3);
    EXPECT_EQ(sink->stepCount, 5);
    EXPECT_EQ(sink->stepsDone, 3) << "one for each feature";
    ASSERT_EQ(source.requests.size(), 1) << "one request for all ions";
    EXPECT_TRUE(source.requests[0][0].timeInterval().isEmpty());
    EXPECT_EQ(source.filters[0], std::pair(1, PeakPickingFilter::Centroid));
    Psms none;
    EXPECT_TRUE(valueOf(finder.run(&source, &none)).isEmpty());
    EXPECT_EQ(source.filters[1], std::nullopt);
}

TEST(MsFeatureFinderBaseTest, CutsAtTheBestMatchFromTheFirstToTheLast)
{
    XicSource source(kXic);
    PeptideSpectrumMatch best = psmAt(14.0, 9.0);
    best.setCalcMz(700.0);
    best.setCharge(3);
    best.setWtCalcMr(2500.0);
    Psms psms = {{kKey, {psmAt(12.0, 1.0), psmAt(11.0), best, psmAt(11.5, 9.0), psmAt(22.0)}}};
    RecordingFinder finder;
    ASSERT_THAT(finder.run(&source, &psms), IsOk());
    const XicDimensions& box = source.requests[0][0];
    EXPECT_NEAR(*box.timeInterval().minimum(), 11.0 - 6.0, 1e-12);
    EXPECT_NEAR(*box.timeInterval().maximum(), 22.0 + 6.0, 1e-12);
    // One isotope up, as the wild type weighs more than 1800 Da; 18 ppm to each side.
    const double mz = 700.0 + 1.003355 / 3;
    EXPECT_NEAR(*box.mzInterval().minimum(), mz * (1 - 18e-6), 1e-9);
    EXPECT_NEAR(*box.mzInterval().maximum(), mz * (1 + 18e-6), 1e-9);
    ASSERT_EQ(finder.calls.size(), 1);
    EXPECT_DOUBLE_EQ(finder.calls[0].firstMinutes, 11.0);
    EXPECT_DOUBLE_EQ(finder.calls[0].lastMinutes, 22.0);
    EXPECT_DOUBLE_EQ(finder.calls[0].bestMinutes, 14.0) << "the first of two best";

    Psms early = {{kKey, {psmAt(2.0)}}};
    ASSERT_THAT(finder.run(&source, &early), IsOk());
    EXPECT_EQ(source.requests[1][0].timeInterval().minimum(), 0.0) << "cut at the run's begin";
}

TEST(MsFeatureFinderBaseTest, FillsApexesPlotAndAreas)
{
    XicSource source(kXic);
    Psms psms = {{kKey, {psmAt(9.0), psmAt(13.0)}}};
    RecordingFinder finder;
    finder.interval = {8.0, 12.0};
    const std::optional<Ms1Feature> feature = valueOf(finder.run(&source, &psms)).constFirst();
    ASSERT_TRUE(feature);
    EXPECT_EQ(psms[kKey][0].apex(), QPointF(10.0, 100.0)) << "within 2 min of minute 9";
    EXPECT_NEAR(psms[kKey][1].apex().x(), 11.0, 1e-9) << "the flank, 2 min before minute 13";
    EXPECT_EQ(feature->peptideSpectrumMatches()[0].apex(), psms[kKey][0].apex());
    EXPECT_EQ(feature->xicPlot().getPointList(), finder.calls[0].xic);
    // The area of the Gaussian, times 60 seconds.
    const double area = 100.0 * 0.2 * std::sqrt(2 * std::numbers::pi) * 60.0;
    EXPECT_NEAR(feature->timeInterval().auc(), area, 1e-6 * area);
    finder.interval = {12.0, 8.0};
    EXPECT_EQ(valueOf(finder.run(&source, &psms)).constFirst()->timeInterval().auc(), 0.0);
}

TEST(MsFeatureFinderBaseTest, FailsAsAWhole)
{
    XicSource source(kXic);
    Psms psms = {{kKey, {psmAt(10.0)}}, {QStringLiteral("other"), {psmAt(10.0)}}};
    RecordingFinder finder;
    EXPECT_THAT(finder.run(nullptr, &psms), HasError(kError));
    EXPECT_THAT(finder.run(&source, nullptr), HasError(kError));
    for (int questions = 0; questions < 4; ++questions) {
        const auto sink = QSharedPointer<CancelingSink>::create();
        sink->questionsLeft = questions;
        EXPECT_THAT(finder.run(&source, &psms, sink), HasError(kOperationCanceledError));
    }
    source.dropsLastXic = true;
    EXPECT_THAT(finder.run(&source, &psms), HasError(kError, "2 XICs were asked for, 1 came"));
    source.failRangeWith = Error(kFileOpenError, "no file");
    EXPECT_THAT(finder.run(&source, &psms), HasError(kFileOpenError, "no file"));
}

TEST(MsFeatureFinderBaseTest, FoldsIsotopesIonByIon)
{
    constexpr double mass = 998.0;
    QList<msreader::InMemoryScan> scans;
    for (int i = 0; i < 60; ++i) {
        QList<QPointF> points = AveragineGenerator(mass).generateSignal(2);
        for (QPointF& point : points) {
            point.ry() *= kXic[70 + i].y();
        }
        scans.append(test::scanOf(i + 1, kXic[70 + i].x(), points));
    }
    const auto run = test::sourceOf(scans);
    MsFeatureFinderSettings settings;
    settings.multiIsotopeMethod = MultiIsotopeMethod::WeightedHarmonicMean;
    settings.xicMzTolerancePpm = 30.0;
    RecordingFinder finder(settings);
    PeptideSpectrumMatch match = psmAt(10.0, 1.0, QStringLiteral("N2/0.984016"));
    match.setCalcMz(mass / 2 + 1.00727646677);
    Psms psms = {{kKey, {match}},
                 {QStringLiteral("no match"), {}},
                 {QStringLiteral("off the run"), {psmAt(300.0)}}};
    const Features features = valueOf(finder.run(run.get(), &psms));
    EXPECT_EQ(features.size(), 3) << "ions without an XIC keep their places";
    ASSERT_EQ(finder.calls.size(), 1);

    const auto expected = [&](bool isDeamidated) {
        MultiIsotopeXic folder;
        folder.setWhmParams({400.0, true, 3, {}});
        return valueOf(folder.xic(match.calcMr(),
                                  2,
                                  {},
                                  settings.xicMzTolerancePpm,
                                  scans.constFirst().info.retentionTimeMinutes,
                                  scans.constLast().info.retentionTimeMinutes,
                                  0,
                                  0.95,
                                  run.get(),
                                  MultiIsotopeXic::XicAggregationWhm,
                                  isDeamidated));
    };
    EXPECT_EQ(finder.calls[0].xic, expected(true));
    EXPECT_NE(expected(true), expected(false)) << "the windows of the two forms overlap";
}

TEST(MsFeatureFinderBaseTest, KnowsOneDeamidationFromItsMassShift)
{
    const QList<QPair<const char*, bool>> rows = {
        {"N2/0.984016", true},
        {"N2/0.98412", false},
        {"N2/0.984016;Q3/0.984016", false},
        {"dEAm/0.984016", false},
        {"N2/0.984016/x", false},
        {"N2/x", false},
        {"", false},
    };
    for (const auto& [mods, expected] : rows) {
        EXPECT_EQ(hasOneDeamidationDelta(QString::fromLatin1(mods)), expected) << mods;
    }
}

TEST(MsFeatureFinderBaseTest, ResamplesToTheMeanHeightOfEachBin)
{
    const PlotBase plot(QList<QPointF>{{1, 0}, {2, 10}, {4, 10}, {5, 0}});
    QList<QPointF> samples;
    const auto resample = [&samples](const PlotBase& from, int count, double start, double end) {
        return RecordingFinder::resamplePlot(from, &samples, count, start, end);
    };
    ASSERT_THAT(resample(plot, 4, 1.0, 5.0), IsOk());
    EXPECT_THAT(samples,
                ElementsAre(QPointF(1.5, 5), QPointF(2.5, 10), QPointF(3.5, 10), QPointF(4.5, 5)));
    ASSERT_THAT(resample(plot, 2, -1.0, 2.0), IsOk());
    EXPECT_THAT(samples, ElementsAre(QPointF(2, 7.5), QPointF(4, 7.5))) << "the whole plot";
    ASSERT_THAT(resample(plot, 1, 4.5, 6.5), IsOk());
    EXPECT_THAT(samples, ElementsAre(QPointF(5.5, 0.5 * 0.5 * 5.0 / 2))) << "half outside";
    EXPECT_THAT(resample(PlotBase(), 4, 1.0, 5.0), HasError(kBadParameterError));
    EXPECT_THAT(resample(plot, 4, 2.0, 2.0), HasError(kBadParameterError));
    EXPECT_THAT(resample(plot, -4, 1.0, 5.0), HasError(kBadParameterError));
}

} // namespace zel
