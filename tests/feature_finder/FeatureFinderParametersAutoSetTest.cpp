#include "feature_finder/finders/FeatureFinderParametersAutoSet.h"

#include "feature_finder/finders/FeatureFinderParametersAutoSet_p.h"
#include "tests/support/Runs.h"

#include <gtest/gtest.h>

#include <random>

namespace zel::test {

namespace {

constexpr int kScanCount = 70;

/// Frames of `kScanCount` mobility scans: those of `fullFrames` with 12 peaks some 12 scans wide
/// and single points of noise, the others with one point.
QSharedPointer<msreader::InMemoryDataSource> mobilityRun(int frameCount,
                                                         const QList<int>& fullFrames)
{
    std::mt19937 random(5);
    std::uniform_int_distribution<> place(10, kScanCount - 10);
    std::exponential_distribution<> height(1e-3);
    QList<msreader::InMemoryScan> scans;
    for (int frame = 1; frame <= frameCount; ++frame) {
        QList<QList<QPointF>> points(kScanCount);
        const int peakCount = fullFrames.contains(frame) ? 12 : 0;
        for (int peak = 0; peak < peakCount; ++peak) {
            const double mz = 400.0 + 50.0 * peak;
            const int apex = place(random);
            for (int d2 = 0; d2 < kScanCount; ++d2) {
                const double distance = (d2 - apex) / 5.0;
                points[d2].append(
                    {mz, 1e5 * std::exp(-0.5 * distance * distance) + height(random)});
            }
        }
        points[0].append({1500.0, 10.0});
        for (int d2 = 0; d2 < kScanCount; ++d2) {
            scans.append(scanOf(msreader::MsScanId(frame, d2 + 1), 0.1 * frame, points[d2]));
        }
    }
    return sourceOf(scans);
}

SettableFeatureFinderParameters startingPoint()
{
    SettableFeatureFinderParameters params = SettableFeatureFinderParameters::trappedMobility();
    params.numberOfFramesToSum = 1;
    params.relativeFrameNoiseFloor = 0.0;
    params.mzHashFactor = 5.0;
    params.mzKernelWidth = 5;
    params.d2KernelWidth = -7; // marks what was not estimated
    params.minHillLengthD1 = -7;
    return params;
}

QList<int> numbersUpTo(int count)
{
    QList<int> numbers;
    for (int i = 1; i <= count; ++i) {
        numbers.append(i);
    }
    return numbers;
}

} // namespace

TEST(FeatureFinderParametersAutoSetTest, FindsTheKneeOfTheCounts)
{
    // Steps of 9 four times and then none: their scatter by threes is 0 0 a a 0 ..., its ratios are
    // 0/0, 0/a, 1, a/0, ...
    EXPECT_EQ(kneeOfCounts({100, 91, 82, 73, 64, 64, 64, 64, 64, 64, 64}), 2);
    // Falling or rising is the same. Scatters of the steps 1 1 1 1 1 4: 0 0 0 b.
    EXPECT_EQ(kneeOfCounts({5, 6, 5, 6, 5, 6, 10}), 3);
    EXPECT_EQ(kneeOfCounts({9, 7, 6, 2, 0}), 1); // the fewest that have a ratio
    EXPECT_EQ(kneeOfCounts({9, 7, 6, 2}), -1);
    EXPECT_EQ(kneeOfCounts({7, 7, 7, 7, 7, 7, 7}), -1);
    EXPECT_EQ(kneeOfCounts({}), -1);
}

TEST(FeatureFinderParametersAutoSetTest, SetsKernelAndLengthFromTheRichestFrames)
{
    struct Case
    {
        int frameCount;
        QList<int> fullFrames;
        bool isEstimated;
    };
    // A frame with one peak has no scatter, so that it ends the estimate when it is looked at: the
    // ten richest of twelve are, but all of eleven.
    for (const Case& run : {Case{12, numbersUpTo(10), true},
                            Case{12, numbersUpTo(9), false},
                            Case{11, numbersUpTo(11), true},
                            Case{11, numbersUpTo(10), false}}) {
        const auto source = mobilityRun(run.frameCount, run.fullFrames);
        const auto params =
            valueOf(FeatureFinderParametersAutoSet().run(startingPoint(), source.get()));
        EXPECT_EQ(params.d2KernelWidth > 0, run.isEstimated)
            << run.frameCount << " frames, " << run.fullFrames.size() << " full";
        if (run.isEstimated) {
            EXPECT_GE(params.d2KernelWidth, 9); // the knee is behind the first of the widths
            EXPECT_LE(params.d2KernelWidth, 45);
            EXPECT_EQ(params.minHillLengthD1, (params.d2KernelWidth + 1) / 2);
        } else {
            EXPECT_EQ(params.minHillLengthD1, -7);
        }
    }
}

TEST(FeatureFinderParametersAutoSetTest, LeavesAloneWhatItCannotEstimate)
{
    const auto mobility = mobilityRun(3, numbersUpTo(3));
    const auto widthAfter = [&](auto change, msreader::MsDataSourceInterface* source) {
        SettableFeatureFinderParameters params = startingPoint();
        change(params);
        return valueOf(FeatureFinderParametersAutoSet().run(params, source)).d2KernelWidth;
    };
    using Parameters = SettableFeatureFinderParameters;
    const auto nothing = [](Parameters&) {};
    EXPECT_NE(widthAfter(nothing, mobility.get()), -7);
    EXPECT_EQ(widthAfter(nothing, runOf({0.1, 0.2}, {{500.0, 10.0}}).get()), -7);
    const std::pair<const char*, void (*)(Parameters&)> changes[] = {
        {"the last window is not full", [](Parameters& p) { p.numberOfFramesToSum = 2; }},
        {"no smoothing", [](Parameters& p) { p.d2SmoothingPasses = 0; }},
        {"widths too few for a knee", [](Parameters& p) { p.d2SmoothingPasses = 14; }},
        {"a finder without mobility", [](Parameters& p) { p.featureFinderVersion = 1; }}};
    for (const auto& [what, change] : changes) {
        EXPECT_EQ(widthAfter(change, mobility.get()), -7) << what;
    }
    EXPECT_THAT(FeatureFinderParametersAutoSet().run(startingPoint(), nullptr), HasError(kError));
}

} // namespace zel::test
