#include "feature_finder/records/MasterFeature.h"

#include "feature_finder/records/ChargeFeatureBuilder4D.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

namespace zel::test {

namespace {

ChargeFeature featureWithin(double apexD1, int intensity, Interval<double> d1, Interval<double> d2)
{
    ChargeFeature feature = featureOf(1000.0 + apexD1, apexD1, intensity, intensity / 50);
    feature.startD1 = d1.start;
    feature.endD1 = d1.end;
    feature.startD2 = d2.start;
    feature.endD2 = d2.end;
    return feature;
}

ChargeFeatureFrame frameOf(int d1, double intensity, int startD2, int endD2)
{
    ChargeFeatureFrame frame;
    frame.d1 = d1;
    frame.intensity = intensity;
    frame.startD2 = startD2;
    frame.endD2 = endD2;
    frame.apexD2 = startD2 + 1;
    frame.monoIsotopicMass = 1000.0 + d1;
    frame.isotopeCount = d1;
    return frame;
}

} // namespace

TEST(MasterFeatureTest, AnswersFromItsStrongestMember)
{
    MasterFeature master;
    for (const ChargeFeature& member : {featureWithin(10.0, 50, {5.0, 12.0}, {100.0, 120.0}),
                                        featureWithin(20.0, 150, {8.0, 25.0}, {90.0, 110.0}),
                                        featureWithin(30.0, 150, {9.0, 11.0}, {99.0, 99.0})}) {
        EXPECT_THAT(master.pushBackChargeFeature(member), IsOk());
    }
    EXPECT_EQ(master.monoIsotopicMass(), 1020.0); // the first of the two strongest
    EXPECT_EQ(master.apexD1(), 20.0);
    EXPECT_EQ(master.apexIntensity(), 150.0);
    EXPECT_EQ(master.d1Range(), (Interval<double>{5.0, 25.0}));
    EXPECT_EQ(master.d2Range(), (Interval<double>{90.0, 120.0}));
    EXPECT_EQ(master.charges(), (QSet<int>{1, 3}));
    EXPECT_DOUBLE_EQ(master.weightedD1(), (10.0 * 50 + 20.0 * 150 + 30.0 * 150) / 350);

    master.setApexIntensity(1.9); // cut, and this member is no longer the strongest then
    EXPECT_EQ(master.chargeFeatures()[1].apexIntensity, 1);
    EXPECT_EQ(master.monoIsotopicMass(), 1030.0);
    master.setApexIntensity(1e30);
    EXPECT_EQ(master.apexIntensity(), INT_MAX);
}

TEST(ChargeFeatureBuilder4DTest, FollowsItsStrongestFrame)
{
    ChargeFeatureBuilder4D builder;
    EXPECT_EQ(builder.d1Range(), (Interval<int>{0, 0}));
    EXPECT_EQ(builder.weightedD1(), 0.0);

    builder.pushBackChargeFeatureFrame(frameOf(7, 5.0, 40, 50));
    builder.pushBackChargeFeatureFrame(frameOf(9, 20.0, 42, 48));
    builder.pushBackChargeFeatureFrame(frameOf(8, 20.0, 10, 90));
    builder.pushBackChargeFeatureFrame(frameOf(5, 3.0, 1, 99));
    EXPECT_EQ(builder.apexD1(), 9); // the first of the two strongest
    EXPECT_EQ(builder.apexMonoIsotopicMass(), 1009.0);
    EXPECT_EQ(builder.apexIsotopeCount(), 9.0);
    EXPECT_EQ(builder.apexD2(), 43);
    EXPECT_EQ(builder.d2Range(), (Interval<int>{42, 48}));
    EXPECT_EQ(builder.d1Range(), (Interval<int>{5, 9}));
    EXPECT_EQ(builder.d1Xic(), (QList<QPointF>{{5.0, 3.0}, {7.0, 5.0}, {8.0, 20.0}, {9.0, 20.0}}));
    EXPECT_DOUBLE_EQ(builder.weightedD1(), (35.0 + 180.0 + 160.0 + 15.0) / 48.0);
}

} // namespace zel::test
