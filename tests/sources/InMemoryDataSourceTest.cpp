#include "tools/sources/memory/InMemoryDataSource.h"

#include "tests/support/Matchers.h"
#include "tests/support/Spectra.h"

#include <gtest/gtest.h>

#include <limits>

namespace zel::msreader {

using test::HasError;
using test::IsOk;
using test::scanOf;
using test::valueOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

namespace {

using Points = QList<QPointF>;
using TimeSet = math::ClosedMultiInterval<double, 6>;
using MzSet = math::ClosedMultiInterval<double, 10>;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

QSharedPointer<InMemoryDataSource> sourceOf(const QList<InMemoryScan>& scans)
{
    return valueOf(InMemoryDataSource::create(scans, QStringLiteral("test")));
}

/// Two MS1 scans with an MS2 scan, number 3, in between.
QList<InMemoryScan> plainRun()
{
    InMemoryScan fragments = scanOf(3, 1.1, {{150.0, 7.0}}, 2);
    fragments.precursor.isolationMz = 500.5;
    return {scanOf(1, 1.0, {{500.0, 10.0}, {501.0, 4.0}}),
            fragments,
            scanOf(2, 1.2, {{500.0, 20.0}, {502.0, 25.0}})};
}

} // namespace

TEST(InMemoryDataSourceTest, SaysWhichScanIsWrongAndWhy)
{
    const std::pair<QList<InMemoryScan>, const char*> rows[] = {
        {{scanOf({}, 1.0, {})}, "Scan -.-: the scan number d1 is missing"},
        {{scanOf(7, 1.0, {}), scanOf(7, 1.1, {})}, "Scan 7: the id is not unique"},
        {{scanOf(7, 1.0, {}), scanOf({7, 1}, 1.0, {})}, "Scan 7.1: the id is not unique"},
        {{scanOf({7, 2}, 1.0, {}), scanOf({7, 1}, 1.0, {})},
         "Scan 7.1: the mobility scans of a frame must ascend"},
        {{scanOf({7, 1}, 1.0, {}), scanOf({7, 2}, 1.0, {}, 2)},
         "Scan 7.2: the scans of a frame must have one MS level"},
        {{scanOf(7, 1.0, {}, 0)}, "Scan 7: the MS level must be at least 1"},
        {{scanOf(7, kNan, {})}, "Scan 7: the retention time is not"},
        {{scanOf(6, 1.5, {}), scanOf(7, 1.25, {})},
         "Scan 7: spectra out of order: the retention time 1.25 min lies before 1.5 min"},
        {{scanOf(7, 1.0, {{kNan, 1.0}})}, "Scan 7: m/z must be finite"},
        {{scanOf(7, 1.0, {{500.0, 1.0}, {499.0, 1.0}})},
         "Scan 7: m/z must ascend, but point 1 has 499 after 500"},
        {{scanOf(7, 1.0, {{500.0, -1.0}})}, "Scan 7: intensities"}};
    for (const auto& [scans, message] : rows) {
        const auto source = InMemoryDataSource::create(scans, QStringLiteral("bad"));
        ASSERT_THAT(source, HasError(kBadParameterError)) << message;
        EXPECT_THAT(source.error().message().toStdString(), HasSubstr(message));
    }
}

TEST(InMemoryDataSourceTest, SelectsScansByLevelTimeAndId)
{
    const auto source = sourceOf(plainRun());
    const auto ids = [&source](const MsQuery& query) { return valueOf(source->scanIds(query)); };
    EXPECT_THAT(ids(MsQuery::createByMsLevel(1)), ElementsAre(MsScanId(1), MsScanId(2)));
    EXPECT_THAT(ids(MsQuery::createByMsLevel(2)), ElementsAre(MsScanId(3)));
    EXPECT_THAT(ids(MsQuery::createByMsLevel(3)), IsEmpty());

    const MzSet allMz = MzSet::unbounded();
    // 5e-7 min outside is inside the tolerance of a set of times, 2e-6 min is not.
    EXPECT_THAT(ids(MsQuery::createByTime({1.0000005, 1.1}, allMz, std::nullopt)),
                ElementsAre(MsScanId(1), MsScanId(3)));
    EXPECT_THAT(ids(MsQuery::createByTime({1.000002, 1.2}, allMz, 1)), ElementsAre(MsScanId(2)));
    EXPECT_THAT(ids(MsQuery::createByTime(TimeSet(), allMz, std::nullopt)), IsEmpty());

    EXPECT_THAT(ids(MsQuery(3, PeakPickingFilter::Profile)), ElementsAre(MsScanId(3)));
    EXPECT_THAT(source->scanIds(MsQuery(9, PeakPickingFilter::Profile)),
                HasError(kBadParameterError, "There is no scan 9 in test"));
    // Without mobility there are no mobility scans to select.
    EXPECT_THAT(ids(MsQuery::createByMsLevel(1).setD2({})), IsEmpty());
    EXPECT_FALSE(valueOf(source->hasMobility()));
    EXPECT_TRUE(valueOf(source->d2Range()).isEmpty());
}

TEST(InMemoryDataSourceTest, ReadsPoints)
{
    const auto source = sourceOf(plainRun());
    const auto spectra = valueOf(source->scanData(
        {MsQuery(2, PeakPickingFilter::Profile), MsQuery(1, PeakPickingFilter::Centroid)}));
    EXPECT_THAT(
        spectra,
        ElementsAre(Points{{500.0, 20.0}, {502.0, 25.0}}, Points{{500.0, 10.0}, {501.0, 4.0}}));
    // A query for several scans gives their sum, inside its m/z set.
    const auto sum = MsQuery::createByTime(TimeSet::unbounded(), {499.0, 501.5}, 1);
    EXPECT_EQ(valueOf(source->scanData(sum)), (Points{{500.0, 30.0}, {501.0, 4.0}}));
    EXPECT_EQ(valueOf(source->basePeakPlot()), (Points{{1.0, 10.0}, {1.2, 25.0}}));
    const QList<XicDimensions> boxes{{{499.9, 500.1}, TimeSet::unbounded()}};
    EXPECT_THAT(valueOf(source->xics(boxes)), ElementsAre(Points{{1.0, 10.0}, {1.2, 20.0}}));
    const QList<XicDimensions> fragmentBoxes{{{149.9, 150.1}, TimeSet::unbounded()}};
    EXPECT_THAT(valueOf(source->xics(fragmentBoxes, 2, PeakPickingFilter::Profile)),
                ElementsAre(Points{{1.1, 7.0}}));
}

TEST(InMemoryDataSourceTest, PicksPeaksOfProfilesOnlyAndOfAFrameOnTheSumOfItsScans)
{
    // Each mobility scan caught another part of one peak.
    QList<InMemoryScan> scans{scanOf({1, 1}, 1.0, {{500.0, 1.0}, {500.01, 4.0}}),
                              scanOf({1, 2}, 1.0, {{500.01, 4.0}, {500.02, 2.0}})};
    const auto points = [&scans](PeakPickingFilter storedAs, PeakPickingFilter filter) {
        scans[0].info.storedAs = scans[1].info.storedAs = storedAs;
        return valueOf(sourceOf(scans)->scanData(MsQuery(1, filter)));
    };
    const Points sum{{500.0, 1.0}, {500.01, 8.0}, {500.02, 2.0}};
    EXPECT_EQ(points(PeakPickingFilter::Profile, PeakPickingFilter::Centroid).size(), 1);
    EXPECT_EQ(points(PeakPickingFilter::Profile, PeakPickingFilter::Profile), sum);
    EXPECT_EQ(points(PeakPickingFilter::Centroid, PeakPickingFilter::Centroid), sum);
}

} // namespace zel::msreader
