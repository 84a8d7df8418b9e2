#include "ms_feature/records/Ms1Feature.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

namespace zel {

using test::IsOk;

namespace {

Ms1Feature featureOf(const QList<ApexInterval>& intervals)
{
    Ms1Feature feature;
    feature.setTimeIntervalList(intervals);
    return feature;
}

} // namespace

TEST(Ms1FeatureTest, SumsItsIntervalsUp)
{
    const ApexInterval first({2.0, 3.0}, 0.25, {2.5, 80.0}, 10.0, 0.5);
    const ApexInterval equallyHigh({5.0, 6.0}, 0.5, {5.5, 80.0}, 20.0, 0.75);
    const ApexInterval lower({0.5, 1.0}, 0.125, {0.75, 10.0}, 5.0, 0.25);
    Ms1Feature feature = featureOf({first, equallyHigh, lower});
    EXPECT_TRUE(feature.hasSplitProposals());
    const ApexInterval sum = feature.timeInterval();
    EXPECT_EQ(sum.interval(), (Interval<double>{0.5, 6.0}));
    EXPECT_EQ(sum.auc(), 35.0);
    EXPECT_EQ(sum.apex(), QPointF(2.5, 80.0)) << "the first of equally high apexes";
    EXPECT_EQ(sum.fwhm(), 0.25);
    EXPECT_EQ(sum.apexAveragineCorrelation(), 0.5);

    Ms1Feature other = featureOf({first, lower});
    other.setPeptideSpectrumMatches({PeptideSpectrumMatch()});
    ASSERT_THAT(feature.mergeTimeIntervalsAndPsmFrom(other), IsOk());
    ASSERT_EQ(feature.timeIntervalList().size(), 5) << "neither sorted nor made unique";
    EXPECT_EQ(feature.timeIntervalList()[3].interval(), first.interval());
    EXPECT_EQ(feature.peptideSpectrumMatches().size(), 1);

    feature.setTimeInterval(lower);
    EXPECT_FALSE(feature.hasSplitProposals());
    EXPECT_EQ(feature.timeInterval().interval(), lower.interval());
    EXPECT_EQ(Ms1Feature().timeInterval().interval(), Interval<double>());
}

} // namespace zel
