#include "turbo/xim/TurboXim.h"

#include "tests/support/Matchers.h"
#include "tests/turbo/TurboReference.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

using Frame = QMap<int, QList<QPointF>>;

constexpr TurboXicSettings kSettings{.granularity = 1000, .maxIonCount = 60};

} // namespace

TEST(TurboXimTest, EqualsThePlainSumOverTheMobilityScans)
{
    std::mt19937 random(41);
    Frame frame;
    for (const int scan : {0, 1, 3, 4, 5, 9}) {
        frame[scan] = test::randomPeaks(random, 10 * scan + 40, 400.0, 400.5);
    }
    TurboXim xim(kSettings);
    ASSERT_THAT(xim.init(frame), IsOk());

    std::uniform_real_distribution<double> mz(399.9, 400.6);
    for (int i = 0; i < 500; ++i) {
        const double start = mz(random);
        const Interval<double> window{start, start + 0.1 * static_cast<double>(i % 4)};
        const Interval<int> scans{i % 5, i % 5 + 1 + i % 5};
        QList<QPointF> wanted;
        for (int scan = scans.start; scan < scans.end; ++scan) {
            double sum = 0.0;
            for (const auto& [bin, intensity] : test::indexedPeaks(frame[scan], kSettings)) {
                const bool inside = std::floor(window.start * 1000 + 0.5) <= bin &&
                                    bin <= std::floor(window.end * 1000 + 0.5);
                sum += inside ? intensity : 0.0;
            }
            wanted.append(QPointF(scan, sum));
        }
        ASSERT_EQ(test::valueOf(xim.retrieveXim(window, scans)), wanted) << "query " << i;
    }
}

TEST(TurboXimTest, ARangeOutsideTheIndexGivesAnEmptyList)
{
    TurboXim xim(kSettings);
    ASSERT_THAT(xim.init({{3, {{400.0, 1}}}, {5, {}}, {7, {{500.0, 2}}}}), IsOk());
    const Interval<double> inside{399.0, 500.9};
    const std::tuple<Interval<double>, Interval<int>, int> rows[] = {
        {inside, {0, 7}, 7},
        {inside, {0, 8}, 0}, // the end equals the number of columns
        {inside, {-1, 7}, 0},
        {{400.0, 500.999}, {0, 7}, 7}, // the last bin
        {{400.0, 501.0}, {0, 7}, 0},
        {{-1.0, 500.0}, {0, 7}, 0},
    };
    for (const auto& [mz, scans, count] : rows) {
        EXPECT_EQ(test::valueOf(xim.retrieveXim(mz, scans)).size(), count)
            << mz.end << ", " << scans.start << " to " << scans.end;
    }
    EXPECT_THAT(xim.retrieveXim({0.0, 0.0}, {0, 7}), HasError(kBadParameterError));
    EXPECT_THAT(xim.retrieveXim(inside, {0, 0}), HasError(kBadParameterError));
}

TEST(TurboXimTest, NeedsPeaksAndTwoColumns)
{
    TurboXim xim(kSettings);
    EXPECT_THAT(xim.init({}), HasError(kError));
    EXPECT_THAT(xim.init({{4, {}}}), HasError(kError)) << "no peak";
    for (const int scan : {-1, std::numeric_limits<int>::max()}) {
        EXPECT_THAT(xim.init({{scan, {{400.0, 1}}}}), HasError(kBadParameterError)) << scan;
    }
    ASSERT_THAT(xim.init({{0, {{400.0, 1}}}}), IsOk());
    EXPECT_FALSE(xim.isValid()) << "one column";
    EXPECT_THAT(xim.retrieveXim({1.0, 2.0}, {0, 1}), HasError(kError));
    ASSERT_THAT(xim.init({{1, {{400.0, 0}}}}), IsOk()) << "a peak of intensity 0 is one";
    EXPECT_TRUE(xim.isValid());
}

} // namespace zel
