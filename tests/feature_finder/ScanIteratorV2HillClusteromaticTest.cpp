#include "feature_finder/clusters/ScanIteratorV2HillClusteromatic.h"

#include "common/core_mini/src/algo/parameters/ImmutableFeatureFinderParameters.h"
#include "tests/support/IsotopeClusters.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace zel {

using test::HasError;
using test::IsOk;
using test::valueOf;

namespace {

HillD2 hillD2(double mz, int column, double intensity)
{
    HillD2 hill;
    hill.mzApex = mz;
    hill.intensity = intensity;
    hill.d1 = 7;
    const int d2 = column < 1000 ? 10 * column : 0; // some columns are beyond reason
    hill.d2Lo = d2 - 30;
    hill.d2Hi = d2 + 40;
    hill.d2Apex = d2;
    hill.d2ApexIndex = column;
    return hill;
}

HillD1 hillD1(double mz, int column, double intensity)
{
    HillD1 hill;
    hill.mzApex = mz;
    hill.intensity = intensity;
    hill.d1Lo = 11 * column - 30;
    hill.d1Hi = 11 * column + 40;
    hill.d1Apex = 11 * column;
    hill.d1ApexIndex = column;
    return hill;
}

/// The hills of a cluster, from the monoisotopic one on.
QList<HillD2> cluster(double massDa, int charge, int column, double height)
{
    QList<HillD2> hills;
    for (const QPointF& peak : test::isotopePeaks(massDa, charge, height)) {
        hills.append(hillD2(peak.x(), column, peak.y()));
    }
    return hills;
}

SettableFeatureFinderParameters openParameters()
{
    SettableFeatureFinderParameters params;
    params.minMonoMass = 0.0;
    params.minIsotopeCount = 3;
    return params;
}

QList<ChargeFeatureFrame> clustersOf(
    const QList<HillD2>& hills, const SettableFeatureFinderParameters& params = openParameters())
{
    ScanIteratorV2HillClusteromatic clusteromatic;
    EXPECT_THAT(clusteromatic.init(params), IsOk());
    EXPECT_TRUE(clusteromatic.isInit());
    return valueOf(clusteromatic.buildChargeFeatures(hills));
}

} // namespace

TEST(ScanIteratorV2HillClusteromaticTest, FindsEachClusterOnce)
{
    // Two ions of one m/z in far columns, two interleaved ones of other charge, a lone hill.
    const QList<HillD2> hills = cluster(1500.0, 2, 5, 900.0) + cluster(1500.0, 2, 60, 800.0) +
                                cluster(2400.6, 3, 30, 700.0) + cluster(3203.1, 4, 32, 500.0) +
                                QList<HillD2>{hillD2(600.0, 30, 650.0)};
    const QList<ChargeFeatureFrame> found = clustersOf(hills);
    ASSERT_EQ(found.size(), 4);
    const std::tuple<double, int, int> wanted[] = {
        {1500.0, 2, 50}, {1500.0, 2, 600}, {2400.6, 3, 300}, {3203.1, 4, 320}};
    for (qsizetype i = 0; i < found.size(); ++i) {
        const auto [massDa, charge, apexD2] = wanted[i];
        EXPECT_THAT(found[i].monoIsotopicMass, test::NearPpm(massDa, 3));
        EXPECT_EQ(found[i].charge, charge);
        EXPECT_EQ(found[i].apexD2, apexD2);
        EXPECT_GT(found[i].averagine, 0.99);
        EXPECT_GE(found[i].isotopeCount, 5);
    }
    EXPECT_EQ(found[0].d1, 7);
    EXPECT_EQ(found[0].startD2, 20);
    EXPECT_EQ(found[0].endD2, 90);
    EXPECT_EQ(found[0].intensity, 900.0);
    EXPECT_EQ(found[0].apexIndex, -1);
    EXPECT_EQ(found[0].monoOffset, 0);
    EXPECT_EQ(found[0].mzFirstOfCluster, found[0].mzApexOfCluster);
    // The strongest hill of the heaviest ion is not the monoisotopic one.
    EXPECT_EQ(found[3].monoOffset, 1);
    EXPECT_EQ(found[3].mzFirstOfCluster, cluster(3203.1, 4, 32, 500.0)[0].mzApex);
}

TEST(ScanIteratorV2HillClusteromaticTest, GivesFeaturesOfRunsTheirScans)
{
    ScanIteratorV2HillClusteromatic clusteromatic;
    ASSERT_THAT(clusteromatic.init(openParameters()), IsOk());
    QList<HillD1> hills;
    for (const QPointF& peak : test::isotopePeaks(1500.0, 2, 900.9)) {
        hills.append(hillD1(peak.x(), 5, peak.y()));
    }
    QList<ChargeFeature> found = valueOf(clusteromatic.buildChargeFeatures(hills));
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0].apexIntensity, 900);
    EXPECT_EQ(found[0].startD1, 25.0);
    EXPECT_EQ(found[0].endD1, 95.0);
    EXPECT_EQ(found[0].apexD1, 55.0);
    EXPECT_EQ(found[0].mzFirstOfCluster, -1.0);
    EXPECT_EQ(found[0].startD2, -1.0);
    EXPECT_EQ(found[0].apexIndex, -1);
    for (HillD1& hill : hills) {
        hill.intensity *= 1e30;
    }
    found = valueOf(clusteromatic.buildChargeFeatures(hills));
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0].apexIntensity, std::numeric_limits<int>::max());
}

TEST(ScanIteratorV2HillClusteromaticTest, TakesLimitsFromTheLastHillOfACell)
{
    QList<HillD2> hills = cluster(1500.0, 2, 5, 600.0);
    HillD2 second = hills[0];
    second.intensity = 300.0;
    second.d2Lo = 1;
    hills.append(second);
    const QList<ChargeFeatureFrame> found = clustersOf(hills);
    ASSERT_EQ(found.size(), 1);
    EXPECT_EQ(found[0].intensity, 300.0) << "not the sum of the cell";
    EXPECT_EQ(found[0].startD2, 1);
}

TEST(ScanIteratorV2HillClusteromaticTest, SubtractsInTheColumnsOfTheSliceOnly)
{
    // Isotopes at columns 0 and 10 from the first one belong to it, at 11 to nothing.
    SettableFeatureFinderParameters params = openParameters();
    params.minIsotopeCount = 0;
    params.minAveragineScore = 0.0;
    QList<HillD2> hills = cluster(1500.0, 2, 0, 600.0);
    hills[1].d2ApexIndex = 10;
    hills[2].d2ApexIndex = 11;
    const QList<ChargeFeatureFrame> found = clustersOf(hills, params);
    ASSERT_FALSE(found.isEmpty());
    EXPECT_EQ(found[0].charge, 2);
    EXPECT_EQ(found[0].isotopeCount, clustersOf(cluster(1500.0, 2, 0, 600.0))[0].isotopeCount - 1);
    params.maxD2Gap = 2'000'000'000;
    EXPECT_EQ(clustersOf(hills, params)[0].isotopeCount, found[0].isotopeCount + 1);
}

TEST(ScanIteratorV2HillClusteromaticTest, LowersTheIsotopeCountForSmallIonsOfLowCharge)
{
    // Masses 10 % below and above the limit, and a charge below and at the limit.
    const auto& fixed = g_immutableFeatureFinderParameters;
    const double light = 0.9 * fixed.lowIsotopeCountMassLimit;
    const double heavy = 1.1 * fixed.lowIsotopeCountMassLimit;
    const int low = fixed.lowIsotopeCountChargeLimit - 1;
    const int high = fixed.lowIsotopeCountChargeLimit;
    const auto firstIsotopes = [](double massDa, int charge, int count) {
        return cluster(massDa, charge, 5, 600.0).first(count);
    };
    SettableFeatureFinderParameters params = openParameters();
    params.minIsotopeCount = 4;
    params.minAveragineScore = 0.0;
    EXPECT_EQ(clustersOf(firstIsotopes(light, low, 3), params).size(), 1);
    EXPECT_EQ(clustersOf(firstIsotopes(light, low, 2), params).size(), 0);
    EXPECT_EQ(clustersOf(firstIsotopes(light, high, 3), params).size(), 0) << "charge at the limit";
    EXPECT_EQ(clustersOf(firstIsotopes(light, high, 4), params).size(), 1);
    EXPECT_EQ(clustersOf(firstIsotopes(heavy, low, 3), params).size(), 0) << "mass above the limit";
    EXPECT_EQ(clustersOf(firstIsotopes(heavy, low, 4), params).size(), 1);
    params.minAveragineScore = 1.01;
    EXPECT_EQ(clustersOf(firstIsotopes(heavy, low, 4), params).size(), 0);
    params.minAveragineScore = 0.0;
}

TEST(ScanIteratorV2HillClusteromaticTest, KeepsTheMassesFromTheLowestToTheHighest)
{
    const QList<HillD2> hills = cluster(1500.0, 2, 5, 600.0);
    const double found = clustersOf(hills)[0].monoIsotopicMass;
    SettableFeatureFinderParameters params = openParameters();
    const auto isKept = [&](double lowest, double highest) {
        params.minMonoMass = lowest;
        params.maxMonoMass = highest;
        return !clustersOf(hills, params).isEmpty();
    };
    EXPECT_TRUE(isKept(found, found)) << "both ends belong to the range";
    EXPECT_FALSE(isKept(std::nextafter(found, 1e6), 1e6));
    EXPECT_FALSE(isKept(0.0, std::nextafter(found, 0.0)));
}

TEST(ScanIteratorV2HillClusteromaticTest, SeedsFromAllPointsButOne)
{
    // Of two hills the stronger one is looked at, so a pair is found; one hill alone is not.
    SettableFeatureFinderParameters params = openParameters();
    params.minIsotopeCount = 2;
    params.minAveragineScore = 0.0;
    const QList<HillD2> pair = cluster(500.0, 1, 5, 600.0).first(2);
    EXPECT_EQ(clustersOf(pair, params).size(), 1);
    EXPECT_TRUE(clustersOf(pair.first(1), params).isEmpty());
    // Two ions of two hills each in far columns: three visits are enough for both.
    EXPECT_EQ(clustersOf(pair + cluster(500.0, 1, 60, 300.0).first(2), params).size(), 2);
}

TEST(ScanIteratorV2HillClusteromaticTest, TakesTheFirstHillNearTheMonoisotopicPlace)
{
    // Charge 4, m/z 802.033 at the strongest peak: 10 ppm of 4 * 802.033 are 0.032 m/z, four times
    // what 10 ppm of an m/z would be. A stranger in a far column comes first in the list.
    const QList<HillD2> ion = cluster(3203.1, 4, 32, 500.0);
    const double monoMz = ion[0].mzApex;
    const auto firstMz = [&](double strangerMz, const QList<HillD2>& hills) {
        return clustersOf(QList<HillD2>{hillD2(strangerMz, 90, 1.0)} + hills)[0].mzFirstOfCluster;
    };
    EXPECT_EQ(firstMz(monoMz + 0.031, ion), monoMz + 0.031);
    EXPECT_EQ(firstMz(monoMz - 0.031, ion), monoMz - 0.031);
    EXPECT_EQ(firstMz(monoMz + 0.034, ion), monoMz);
    // Without any hill there it is computed: one step below the peak, whose m/z is that of its bin.
    EXPECT_NEAR(firstMz(monoMz + 0.034, ion.sliced(1)), 802.033 - 1.003355 / 4, 1e-9);
}

TEST(ScanIteratorV2HillClusteromaticTest, RefusesHillsWithoutSignalOrPlace)
{
    ScanIteratorV2HillClusteromatic clusteromatic;
    const QList<HillD2> one = {hillD2(750.0, 3, 10.0)};
    EXPECT_THAT(clusteromatic.buildChargeFeatures(one), HasError(kError)) << "not initialized";
    SettableFeatureFinderParameters params;
    params.networkFilePath = QStringLiteral("/no/such/file");
    EXPECT_THAT(clusteromatic.init(params), HasError(kFileOpenError));
    EXPECT_FALSE(clusteromatic.isInit());

    ASSERT_THAT(clusteromatic.init({}), IsOk());
    EXPECT_TRUE(valueOf(clusteromatic.buildChargeFeatures(one)).isEmpty());
    EXPECT_THAT(clusteromatic.buildChargeFeatures(QList<HillD2>()), HasError(kError));
    EXPECT_THAT(clusteromatic.buildChargeFeatures(QList<HillD1>()), HasError(kError));
    EXPECT_THAT(clusteromatic.buildChargeFeatures(
                    QList<HillD2>{hillD2(750.0, 3, 10.0), hillD2(750.0, 3, -10.0)}),
                HasError(kError))
        << "cancelled out";
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    for (const HillD2& hill : {hillD2(-1.0, 3, 10.0),
                               hillD2(4000.0, 3, 10.0),
                               hillD2(nan, 3, 10.0),
                               hillD2(750.0, -1, 10.0),
                               hillD2(750.0, std::numeric_limits<int>::max(), 10.0),
                               hillD2(750.0, 3, nan)}) {
        EXPECT_THAT(clusteromatic.buildChargeFeatures(one + QList<HillD2>{hill}),
                    HasError(kBadParameterError))
            << hill.mzApex << ' ' << hill.d2ApexIndex << ' ' << hill.intensity;
    }
}

} // namespace zel
