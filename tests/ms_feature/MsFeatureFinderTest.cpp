#include "ms_feature/finders/MsFeatureFinder.h"

#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <gtest/gtest.h>

namespace zel {

using test::psmAt;
using test::XicSource;

namespace {

using Psm = PeptideSpectrumMatch;

const auto kModified = QStringLiteral("M1/15.9949");

/// The feature that the finder gives for one ion on this XIC.
std::optional<Ms1Feature> featureOn(const QList<QPointF>& xic,
                                    const QList<Psm>& psms,
                                    const MsFeatureFinderSettings& settings)
{
    XicSource source(xic);
    QHash<QString, QList<Psm>> psmsByHash = {{QStringLiteral("key"), psms}};
    MsFeatureFinder finder(settings);
    return test::valueOf(finder.constructXicWindow({}, {}, &source, &psmsByHash, {})).constFirst();
}

/// Peaks of rising height, sigma 0.1 min, at minutes 3, 4, ... 20; matches that search no further
/// than 0.3 min around them have these apexes.
QList<QPointF> comb()
{
    QList<test::ElutionPeak> peaks;
    for (int minute = 3; minute <= 20; ++minute) {
        peaks.append({static_cast<double>(minute), 100.0 + minute, 0.1});
    }
    return test::chromatogramOf(peaks, 0.0, 24.0, 2401);
}

MsFeatureFinderSettings combSettings()
{
    MsFeatureFinderSettings settings;
    settings.xicApexSearchWindow = 0.3;
    return settings;
}

ApexInterval combInterval(const QList<Psm>& psms)
{
    const std::optional<Ms1Feature> feature = featureOn(comb(), psms, combSettings());
    EXPECT_TRUE(feature);
    return feature.value_or(Ms1Feature()).timeInterval();
}

} // namespace

TEST(MsFeatureFinderTest, TakesAFixedWindowAroundTheHighestApex)
{
    const ApexInterval found = combInterval({psmAt(6.1), psmAt(8.1), psmAt(7.1, 9.0)});
    EXPECT_NEAR(found.apex().x(), 8.0, 1e-9);
    EXPECT_NEAR(found.apex().y(), 108.0, 1e-6);
    EXPECT_NEAR(found.interval().start, 6.0, 1e-9);
    EXPECT_NEAR(found.interval().end, 10.0, 1e-9);
    EXPECT_NEAR(found.fwhm(), 2.3548 * 0.1, 1e-3);
}

TEST(MsFeatureFinderTest, TakesTheLaterMedianOfTheTenBestOfAModifiedPeptide)
{
    const auto apexOf = [](const QList<Psm>& psms) { return combInterval(psms).apex().x(); };
    QList<Psm> psms = {
        psmAt(9.0, 5.0, kModified), psmAt(4.0, 4.0, kModified), psmAt(7.0, 4.0, kModified)};
    EXPECT_NEAR(apexOf(psms), 7.0, 1e-9);
    psms.append(psmAt(8.0, 4.0, kModified));
    EXPECT_NEAR(apexOf(psms), 8.0, 1e-9) << "4, 7, 8, 9: the later of the two in the middle";
    while (psms.size() < 10) {
        psms.append(psmAt(10.0, 3.0, kModified));
    }
    const double ofTen = apexOf(psms);
    for (int i = 0; i < 12; ++i) {
        psms.prepend(psmAt(20.0, 1.0, kModified));
    }
    EXPECT_EQ(apexOf(psms), ofTen) << "lower scores than the ten best have no say";
}

TEST(MsFeatureFinderTest, KeepsTheWidthAtTheBeginAndCutsItAtTheEnd)
{
    const QList<QPointF> xic =
        test::chromatogramOf({{0.5, 100.0, 0.1}, {23.5, 100.0, 0.1}}, 0.0, 24.0, 2401);
    const auto intervalAt = [&xic](double minutes) {
        return featureOn(xic, {psmAt(minutes)}, {})->timeInterval().interval();
    };
    EXPECT_EQ(intervalAt(0.5), (Interval<double>{0.0, 4.0}));
    EXPECT_NEAR(intervalAt(23.5).start, 21.5, 1e-9);
    EXPECT_EQ(intervalAt(23.5).end, 24.0);
}

TEST(MsFeatureFinderTest, NeedsAMatchOnTheXic)
{
    const QList<QPointF> xic = test::chromatogramOf({{10.0, 100.0, 0.2}}, 8.0, 12.0, 41);
    EXPECT_FALSE(featureOn({{10.0, 5.0}}, {psmAt(10.0)}, {})) << "one point";
    EXPECT_FALSE(featureOn(xic, {psmAt(7.0), psmAt(13.0)}, {})) << "none on it";
    const auto feature = featureOn(xic, {psmAt(7.0), psmAt(9.5), psmAt(13.0)}, {});
    ASSERT_TRUE(feature);
    EXPECT_NEAR(feature->timeInterval().apex().x(), 10.0, 1e-9);
}

} // namespace zel
