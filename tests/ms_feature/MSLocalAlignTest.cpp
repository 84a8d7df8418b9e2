#include "ms_feature/alignment/MSLocalAlign.h"

#include "ms_feature/alignment/ShiftedCurves_p.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

class Aligner : public MSLocalAlign
{
public:
    using MSLocalAlign::shiftedDotProductV1;
    using MSLocalAlign::shiftedDotProductV2;
};

QList<double> randomCurve(std::mt19937& random, qsizetype size)
{
    std::exponential_distribution<double> height(1.0);
    QList<double> curve;
    for (qsizetype i = 0; i < size; ++i) {
        curve.append(height(random));
    }
    return curve;
}

/// A Gaussian of 8 samples' width around `apex`.
QList<double> peakAt(double apex, qsizetype size = 200)
{
    QList<double> curve;
    for (qsizetype i = 0; i < size; ++i) {
        curve.append(std::exp(-0.5 * std::pow((static_cast<double>(i) - apex) / 8.0, 2.0)));
    }
    return curve;
}

MSLocalAlignData dataOf(const QList<double>& curve, int start = -1, int end = -1, int apex = -1)
{
    MSLocalAlignData data;
    data.setXicPlot(curve);
    data.setFeatureStartHint(start);
    data.setFeatureEndHint(end);
    data.setApexHint(apex);
    return data;
}

QList<int> shiftsOf(const QList<MSLocalAlignData>& data, int pivot, int maxShift, double power)
{
    QList<int> shifts;
    EXPECT_THAT(MSLocalAlign::align(data, pivot, maxShift, &shifts, power), IsOk());
    return shifts;
}

/// The best shift of `b` over `a`, sample by sample and shift by shift.
int slowShift(const QList<double>& a, const QList<double>& b, int maxShift, double power)
{
    double best = 0.0;
    double worst = 0.0;
    int bestShift = 0;
    for (int s = -maxShift; s <= maxShift; ++s) {
        double value = 0.0;
        for (qsizetype i = 0; i < a.size(); ++i) {
            value += i - s >= 0 && i - s < b.size() ? a[i] * b[i - s] : 0.0;
        }
        const double x = std::abs(s) / static_cast<double>(maxShift);
        value *=
            power < 0 ? std::exp(-x / maxShift * x / maxShift * -power) : 1.0 - std::pow(x, power);
        if (s == -maxShift) {
            best = worst = value;
        } else if (value > best) {
            best = value;
            bestShift = s;
        }
        worst = std::min(worst, value);
    }
    return best <= 0.0 || (best - worst) / best < 0.001 ? 0 : bestShift;
}

} // namespace

TEST(MSLocalAlignTest, MultipliesShiftedCurves)
{
    for (const auto& product : {Aligner::shiftedDotProductV1, Aligner::shiftedDotProductV2}) {
        EXPECT_EQ(product({1, 2, 3, 4}, {5, 6, 7, 8}, 2), 3 * 5 + 4 * 6);
        EXPECT_EQ(product({1, 2, 3, 4}, {5, 6, 7, 8}, -1), 1 * 6 + 2 * 7 + 3 * 8);
    }
    EXPECT_EQ(Aligner::shiftedDotProductV2({1, 2, 3, 4}, {5, 6}, -1), 1 * 6);
}

TEST(MSLocalAlignTest, FindsTheShiftOfAnExhaustiveSearch)
{
    std::mt19937 random(11);
    int notZero = 0;
    for (const double power : {100.0, 2.0, -30.0, -3000.0}) {
        for (const int maxShift : {1, 5, 30, 90}) { // beyond the curves' ends too
            for (int trial = 0; trial < 5; ++trial) {
                const QList<double> a = randomCurve(random, 60);
                const QList<double> b = randomCurve(random, 60);
                const QList<int> shifts = shiftsOf({dataOf(a), dataOf(b)}, 0, -maxShift, power);
                EXPECT_EQ(shifts[1], slowShift(a, b, maxShift, power)) << power << ' ' << maxShift;
                notZero += shifts[1] != 0;
            }
        }
    }
    EXPECT_GT(notZero, 30);
}

TEST(MSLocalAlignTest, LeavesCurvesWithoutABestPlaceWhereTheyAre)
{
    QList<double> block(5000, 0.0);
    std::fill(block.begin() + 1000, block.begin() + 4000, 1.0);
    // Ramps fall or rise by 2e-6, or by 2 %, over the range, on which all shifts weigh the same.
    // The first shift of the range stands for none.
    for (const auto& [slope, expected] :
         {std::pair(-1e-8, 0), std::pair(-1e-4, 100), std::pair(1e-4, 0)}) {
        QList<double> ramp;
        for (int i = 0; i < 5000; ++i) {
            ramp.append(1.0 + slope * (i - 2500));
        }
        EXPECT_EQ(shiftsOf({dataOf(block), dataOf(ramp)}, 0, 100, -1e-9)[1], expected) << slope;
    }
    EXPECT_EQ(shiftsOf({dataOf(block), dataOf(QList<double>(5000, 0.0))}, 0, 9, 100)[1], 0);
    EXPECT_EQ(shiftsOf({dataOf(peakAt(90)), dataOf(peakAt(99))}, 0, 0, 100)[1], 0) << "no range";
}

TEST(MSLocalAlignTest, ChoosesTheMedianApexAsThePivot)
{
    const QList<MSLocalAlignData> byCurve = {
        dataOf(peakAt(120)), dataOf(peakAt(80)), dataOf(peakAt(100)), dataOf(peakAt(90))};
    EXPECT_EQ(shiftsOf(byCurve, -1, 60, 100), QList<int>({-20, 20, 0, 10})) << "the later median";
    EXPECT_EQ(shiftsOf(byCurve, 1, 60, 100), QList<int>({-40, 0, -20, -10}));
    // The hints hide the larger apex of the first, and name another one for the second.
    const QList<MSLocalAlignData> hinted = {
        dataOf(peakAt(120), -1, 60), dataOf(peakAt(80), -1, -1, 59), dataOf(peakAt(100), 110, 400)};
    EXPECT_EQ(shiftsOf(hinted, -1, 60, 100)[0], 0) << "apexes at 60, 59 and 110";
    EXPECT_EQ(shiftsOf({dataOf(peakAt(50)), dataOf(peakAt(50)), dataOf(peakAt(50))}, -1, 9, 100),
              QList<int>({0, 0, 0}));
    EXPECT_EQ(shifted::middleOne({7.0, 5.0, 5.0, 5.0}), 3) << "equal ones keep their order";
}

TEST(MSLocalAlignTest, RefusesWhatItCannotAlign)
{
    QList<int> shifts = {7};
    EXPECT_THAT(MSLocalAlign::align({}, -1, 5, &shifts, 100), HasError(kBadParameterError));
    EXPECT_TRUE(shifts.isEmpty());
    EXPECT_THAT(MSLocalAlign::align({{}, {}}, 2, 5, &shifts, 100), HasError(kBadParameterError));
    EXPECT_EQ(shiftsOf({{}}, 5, 5, 100), QList<int>({0})) << "one curve has no pivot";
    EXPECT_EQ(shiftsOf({{}, {}}, -1, 5, 100), QList<int>({0, 0})) << "empty curves";
}

} // namespace zel
