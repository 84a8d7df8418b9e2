#include "common/core_mini/src/algo/networks/ChargeDeterminatorNN.h"
#include "common/core_mini/src/algo/networks/MonoisotopeDeterminatorNN.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "common/stable/PhysicalConstants.h"
#include "tests/support/IsotopeClusters.h"
#include "tests/support/Matchers.h"
#include "tools/training/OraclePeel.h"

#include <gtest/gtest.h>

#include <limits>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

class NetworkDeterminatorsTest : public testing::Test
{
protected:
    void SetUp() override
    {
        const QString path = SettableFeatureFinderParameters().networkFilePath;
        ASSERT_THAT(m_charge.init(path), IsOk());
        ASSERT_THAT(m_offset.init(path), IsOk());
    }

    ChargeDeterminatorNN m_charge;
    MonoisotopeDeterminatorNN m_offset;
};

} // namespace

TEST_F(NetworkDeterminatorsTest, FindCleanClustersOfAnyChargeAndHeight)
{
    for (int charge = 1; charge <= 10; ++charge) {
        for (const double mz : {450.0, 700.0, 1000.0, 1500.0}) {
            const double massDa = (mz - kProtonMassDa) * charge;
            for (const double height : {1e-30, 1.0, 1e30}) {
                const QList<QPointF> peaks = test::isotopePeaks(massDa, charge, height);
                const int apex = test::apexOf(peaks);
                const double apexMz = peaks[apex].x();
                const auto slice = test::sliceOf(peaks, apexMz);
                EXPECT_EQ(m_charge.determineCharge(slice), charge) << mz << ", height " << height;
                EXPECT_EQ(m_offset.determineMonoisotopeOffset(slice, apexMz, charge), apex)
                    << charge << " at " << mz << ", height " << height;
            }
        }
    }
}

TEST_F(NetworkDeterminatorsTest, FindNothingWhereNothingCanBeTold)
{
    const QList<QPointF> peaks = test::isotopePeaks(1500.0, 2, 100.0);
    const auto cluster = test::sliceOf(peaks, peaks[0].x());
    int charge = 7;
    double score = 7.0;
    ChargeDeterminatorNN().determineCharge(cluster, &charge, &score);
    EXPECT_EQ(charge, 0) << "not initialized";
    EXPECT_EQ(score, 0.0);
    EXPECT_EQ(MonoisotopeDeterminatorNN().determineMonoisotopeOffset(cluster, peaks[0].x(), 2), 0);

    EXPECT_EQ(m_charge.determineCharge(test::sliceOf({{750.0, 100.0}}, 750.0)), 0) << "one peak";
    EXPECT_EQ(m_charge.determineCharge(test::sliceOf(peaks, 751.1)), 0) << "empty middle";
    EXPECT_EQ(m_charge.determineCharge(cluster.head(100)), 0) << "other length";
    EXPECT_EQ(m_charge.determineCharge(test::sliceOf({{750.0, kInfinity}}, 750.0)), 0);
    EXPECT_THAT(m_charge.init(QStringLiteral("/no/such/file")), HasError(kFileOpenError));
    EXPECT_EQ(m_charge.determineCharge(cluster), 2) << "the network that was there stays";
    EXPECT_EQ(m_offset.determineMonoisotopeOffset(cluster, peaks[0].x(), 0), 0);
    EXPECT_EQ(m_offset.determineMonoisotopeOffset(cluster, peaks[0].x(), 11), 0);
    EXPECT_EQ(m_offset.determineMonoisotopeOffset(cluster, kInfinity, 2), 0);
    // Whatever the network says: at this m/z more than two steps would leave less than 200 Da.
    const auto heavy = test::sliceOf(test::isotopePeaks(8000.0, 8, 100.0), 1004.1);
    EXPECT_LE(m_offset.determineMonoisotopeOffset(heavy, 204.0, 1), 2);
}

TEST_F(NetworkDeterminatorsTest, AreRightOnHeldOutSlices)
{
    // Forty scenes, as the slices of one share its fate; bench measures on many.
    // Training draws its scenes with seed 1.
    int count = 0;
    int chargeRight = 0;
    int offsetRight = 0;
    for (std::uint64_t scene = 0; scene < 40; ++scene) {
        training::peelByTruth(training::drawScene(2, scene), 0.0, [&](const training::Example& e) {
            if (e.charge > 0 && e.isotopesSeen >= 3 && e.signalToNoise >= 10.0) {
                ++count;
                chargeRight += m_charge.determineCharge(e.slice) == e.charge ? 1 : 0;
                offsetRight +=
                    m_offset.determineMonoisotopeOffset(e.slice, e.mz, e.charge) == e.offset ? 1
                                                                                             : 0;
            }
        });
    }
    ASSERT_GT(count, 4000);
    EXPECT_GE(chargeRight, 0.96 * count) << chargeRight << " of " << count;
    EXPECT_GE(offsetRight, 0.96 * count) << offsetRight << " of " << count;
}

} // namespace zel
