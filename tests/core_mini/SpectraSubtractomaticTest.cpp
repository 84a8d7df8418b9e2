#include "common/core_mini/src/algo/clusters/SpectraSubtractomatic.h"

#include "tests/support/IsotopeClusters.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

constexpr double kMassDa = 1500.0;
constexpr int kCharge = 2;

int binOf(double mz)
{
    return FeatureFinderUtilities::hashMz(mz,
                                          g_immutableFeatureFinderParameters.clusterMzHashFactor);
}

class SpectraSubtractomaticTest : public testing::Test
{
protected:
    void SetUp() override { ASSERT_THAT(m_subtractomatic.init({}), IsOk()); }

    /// What a cluster of charge 2 explains of the peaks; the first of `peaks` is its monoisotopic
    /// one.
    DecimatorMatrix decimate(const QList<QPointF>& peaks, double mz, int offset, int width = 1)
    {
        DecimatorMatrix out;
        EXPECT_THAT(m_subtractomatic.buildChargeClusterDecimator(
                        test::sliceOf(peaks, mz), mz, kCharge, offset, width, &out),
                    IsOk());
        return out;
    }

    SpectraSubtractomatic m_subtractomatic;
};

} // namespace

TEST_F(SpectraSubtractomaticTest, ExplainsAWholeClusterFromAnyOfItsPeaks)
{
    const QList<QPointF> peaks = test::isotopePeaks(kMassDa, kCharge, 1000.0);
    const auto counting =
        std::ranges::count_if(peaks, [](const QPointF& peak) { return peak.y() >= 10.0; });
    for (int offset = 0; offset < 3; ++offset) {
        const DecimatorMatrix out = decimate(peaks, peaks[offset].x(), offset, 5);
        EXPECT_NEAR(out.averagineScore, 1.0, 1e-9) << offset;
        EXPECT_EQ(out.isotopeCount, counting);
        EXPECT_EQ(out.model.rows(), SpectraSubtractomatic::clusterRows());
        ASSERT_EQ(out.model.cols(), 5);
        EXPECT_EQ(out.model.nonZeros(), 5 * peaks.size());
        for (const QPointF& peak : peaks) {
            EXPECT_EQ(out.model.coeff(binOf(peak.x()), 4), peak.y());
        }
    }
}

TEST_F(SpectraSubtractomaticTest, TakesTheModelOffWhatIsTooHighForIt)
{
    // The fourth isotope holds a second ion; the third is 1.5 times as high as it should be and as
    // much above that as sulphur may add, the fifth is missing; a peak stands beside the lattice,
    // one half a step before the cluster.
    QList<QPointF> peaks = test::isotopePeaks(kMassDa, kCharge, 1000.0);
    const double fourth = peaks[3].y();
    peaks[2].setY(1.5 * peaks[2].y() + 49.0);
    peaks[3].setY(5.0 * fourth);
    peaks.removeAt(4);
    const QPointF beside(peaks[0].x() + 0.05, 300.0);
    const QPointF before(peaks[0].x() - 0.25, 300.0);
    const DecimatorMatrix out = decimate(peaks + QList<QPointF>{beside, before}, peaks[0].x(), 0);
    EXPECT_EQ(out.model.coeff(binOf(peaks[2].x()), 0), peaks[2].y());
    EXPECT_NEAR(out.model.coeff(binOf(peaks[3].x()), 0), fourth, 1e-9 * fourth);
    EXPECT_EQ(out.model.coeff(binOf(beside.x()), 0), 0.0);
    EXPECT_EQ(out.model.coeff(binOf(before.x()), 0), 0.0);
}

TEST_F(SpectraSubtractomaticTest, RemovesAllEntriesOfOneIsotope)
{
    // A hill that noise cut in two has two entries a few bins apart; beside a much higher one, the
    // rest of the model is shared.
    QList<QPointF> peaks = test::isotopePeaks(kMassDa, kCharge, 1000.0);
    const QPointF second = peaks[1];
    const QPointF part(second.x() + 0.003, 0.4 * second.y());
    const QPointF stranger(second.x() - 0.004, 4.0 * second.y());
    peaks[1].setY(0.6 * second.y());
    DecimatorMatrix out = decimate(peaks + QList<QPointF>{part}, peaks[0].x(), 0);
    EXPECT_EQ(out.model.coeff(binOf(peaks[1].x()), 0), peaks[1].y());
    EXPECT_EQ(out.model.coeff(binOf(part.x()), 0), part.y());
    out = decimate(peaks + QList<QPointF>{stranger}, peaks[0].x(), 0);
    EXPECT_EQ(out.model.coeff(binOf(peaks[1].x()), 0), peaks[1].y());
    EXPECT_NEAR(out.model.coeff(binOf(stranger.x()), 0), 0.4 * second.y(), 1e-6 * second.y());
}

TEST_F(SpectraSubtractomaticTest, ScoresAWrongOffsetLower)
{
    const QList<QPointF> peaks = test::isotopePeaks(kMassDa, kCharge, 1000.0);
    const double right = decimate(peaks, peaks[1].x(), 1).averagineScore;
    EXPECT_LT(decimate(peaks, peaks[1].x(), 0).averagineScore, 0.85 * right);
    EXPECT_LT(decimate(peaks, peaks[1].x(), 2).averagineScore, 0.85 * right);
}

TEST_F(SpectraSubtractomaticTest, DropsBinsOutsideTheMatrix)
{
    const double mz = 2.0; // the slice begins below 0
    const DecimatorMatrix out = decimate({{mz, 10.0}, {mz + 0.5016775, 1.0}}, mz, 0);
    EXPECT_EQ(out.model.coeff(binOf(mz), 0), 10.0);
    const double last = g_immutableFeatureFinderParameters.maxMz + 6.0;
    EXPECT_EQ(decimate({{last, 10.0}, {last + 0.5016775, 4.0}}, last, 0).model.nonZeros(), 1);
}

TEST_F(SpectraSubtractomaticTest, RefusesWhatCannotBeACluster)
{
    const auto slice = test::sliceOf({{750.0, 10.0}}, 750.0);
    DecimatorMatrix out;
    out.isotopeCount = 42;
    constexpr double nan = std::numeric_limits<double>::quiet_NaN();
    const std::tuple<int, double, int, int, int> rows[] = {
        // length of the slice, m/z, charge, offset, width
        {10, 750.0, 2, 0, 1},
        {0, -750.0, 2, 0, 1},
        {0, 1e9, 2, 0, 1},
        {0, nan, 2, 0, 1},
        {0, 750.0, 0, 0, 1},
        {0, 750.0, 11, 0, 1},
        {0, 750.0, 2, 0, 0},
        {0, 750.0, 2, -1, 1},
    };
    for (const auto& [length, mz, charge, offset, width] : rows) {
        const Eigen::SparseVector<double> profile = slice.head(length > 0 ? length : slice.size());
        EXPECT_THAT(
            m_subtractomatic.buildChargeClusterDecimator(profile, mz, charge, offset, width, &out),
            HasError(kBadParameterError))
            << mz << ' ' << charge << ' ' << offset << ' ' << width;
    }
    EXPECT_EQ(out.isotopeCount, 42);
    EXPECT_THAT(SpectraSubtractomatic().buildChargeClusterDecimator(slice, 750.0, 2, 0, 1, &out),
                HasError(kError));
    EXPECT_THAT(m_subtractomatic.buildChargeClusterDecimator(slice, 750.0, 2, 2000, 1, &out),
                IsOk())
        << "mass below 0";
    EXPECT_EQ(out.isotopeCount, 0);
    SettableFeatureFinderParameters params;
    params.ppmTolerance = -1;
    EXPECT_THAT(m_subtractomatic.init(params), HasError(kBadParameterError));
}

} // namespace zel
