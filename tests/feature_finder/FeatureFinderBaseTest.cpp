#include "feature_finder/FeatureFinderBase.h"

#include "tests/support/Features.h"
#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

namespace zel::test {

namespace {

/// Opens what finders use to the tests.
class Finder : public FeatureFinderBase
{
public:
    Finder(int ppmTolerance, int maxD1Gap)
    {
        SettableFeatureFinderParameters params;
        params.ppmTolerance = ppmTolerance;
        params.maxD1Gap = maxD1Gap;
        EXPECT_THAT(init(params), IsOk());
    }

    Result<QList<MasterFeature>> findFeatures(msreader::MsDataSourceInterface* /*source*/,
                                              QSharedPointer<ProgressBarInterface>) override
    {
        return QList<MasterFeature>();
    }

    using FeatureFinderBase::convertD1FromScanIndexToRetentionTimeMinutes;
    using FeatureFinderBase::groupChargeFeaturesToMasterFeatures;
};

/// The rule as it is told, each master looked at for each feature.
QList<MasterFeature> groupedByDefinition(QList<ChargeFeature> features, int ppm, int maxD1Gap)
{
    std::stable_sort(features.begin(), features.end(), [](const auto& a, const auto& b) {
        return a.monoIsotopicMass < b.monoIsotopicMass;
    });
    QList<MasterFeature> masters;
    for (const ChargeFeature& feature : features) {
        auto master = std::find_if(masters.begin(), masters.end(), [&](const auto& candidate) {
            return ppm * feature.monoIsotopicMass / 1e6 >=
                       std::abs(feature.monoIsotopicMass - candidate.monoIsotopicMass()) &&
                   maxD1Gap >= std::abs(feature.apexD1 - candidate.apexD1());
        });
        if (master == masters.end()) {
            masters.append(MasterFeature());
            master = masters.end() - 1;
        }
        EXPECT_THAT(master->pushBackChargeFeature(feature), IsOk());
    }
    return masters;
}

QList<QList<ChargeFeature>> membersOf(const QList<MasterFeature>& masters)
{
    QList<QList<ChargeFeature>> members;
    for (const MasterFeature& master : masters) {
        members.append(master.chargeFeatures());
    }
    return members;
}

} // namespace

TEST(FeatureFinderBaseTest, GroupsAsDefined)
{
    std::mt19937 random(3);
    std::uniform_real_distribution<> mass(1000.0, 1000.3);
    std::uniform_int_distribution<> small(0, 40);
    QList<ChargeFeature> features;
    for (int i = 0; i < 600; ++i) {
        const double d1 = small(random);
        features.append(featureOf(mass(random), d1, small(random), i));
    }
    for (const int ppm : {0, 3, 30, 300, 2000000}) {
        EXPECT_EQ(membersOf(Finder(ppm, 5).groupChargeFeaturesToMasterFeatures(features)),
                  membersOf(groupedByDefinition(features, ppm, 5)))
            << ppm;
    }
}

TEST(FeatureFinderBaseTest, TurnsScanNumbersIntoMinutes)
{
    const auto source = runOf({0.5, 1.5, 2.5}, {}); // scans 1, 2, 3
    ChargeFeature feature = featureOf(1000.0, 2.9, 50);
    feature.startD1 = 0.0;
    feature.endD1 = 3.0;
    QList<MasterFeature> masters = {masterOf({feature})};
    ASSERT_THAT(Finder::convertD1FromScanIndexToRetentionTimeMinutes(source.get(), &masters),
                IsOk());
    feature = masters[0].chargeFeatures()[0];
    EXPECT_EQ(feature.startD1, 0.0); // there is no scan 0
    EXPECT_EQ(feature.apexD1, 1.5);  // cut, not rounded
    EXPECT_EQ(feature.endD1, 2.5);
    EXPECT_THAT(Finder::convertD1FromScanIndexToRetentionTimeMinutes(nullptr, &masters),
                HasError(kError));
}

} // namespace zel::test
