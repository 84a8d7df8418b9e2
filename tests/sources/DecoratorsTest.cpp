#include "tests/support/Runs.h"
#include "tools/sources/decorators/CachedDataSource.h"
#include "tools/sources/decorators/WatchedDataSource.h"

#include <gtest/gtest.h>

namespace zel::msreader {

namespace {

class Counter : public ScanProgress
{
public:
    bool isCanceled() const override { return count >= cancelAt; }
    void beginPhase(int) override {}
    void setText(const QString&) override {}
    void stepDone() override {}
    void endPhase() override {}
    void beginScans(qsizetype, const QString&) override {}
    void scanRead() override { ++count; }
    void endScans() override {}

    int count = 0;
    int cancelAt = 1'000'000;
};

class DecoratorsTest : public ::testing::Test
{
protected:
    DecoratorsTest()
    {
        QList<InMemoryScan> scans;
        for (int i = 0; i < 20; ++i) {
            scans.append(test::scanOf(i + 1, 0.1 * i, {{400.0, 0.1 * i}, {400.001, 1.0 / 3.0}}));
        }
        run = test::sourceOf(scans);
    }

    QSharedPointer<InMemoryDataSource> run;
    QSharedPointer<Counter> counter = QSharedPointer<Counter>::create();
    const QList<XicDimensions> boxes = {XicDimensions({399.9, 400.1}, {0.25, 1.55}),
                                        XicDimensions({400.0005, 401.0}, {1.0, 3.0})};
};

} // namespace

TEST_F(DecoratorsTest, GiveTheValuesOfTheSource)
{
    WatchedDataSource watched(run, counter);
    CachedDataSource cached(run, 1 << 20);
    for (MsDataSourceInterface* source : {static_cast<MsDataSourceInterface*>(&watched),
                                          static_cast<MsDataSourceInterface*>(&cached),
                                          static_cast<MsDataSourceInterface*>(&cached)}) {
        EXPECT_EQ(test::valueOf(source->xics(boxes)), test::valueOf(run->xics(boxes)));
        EXPECT_EQ(test::valueOf(source->basePeakPlot()), test::valueOf(run->basePeakPlot()));
    }
    EXPECT_EQ(counter->count, 17 + 20) << "scans in the boxes, and all for the base peaks";
}

TEST_F(DecoratorsTest, ReadEachSpectrumOnceWhileItIsKept)
{
    const auto watched = QSharedPointer<WatchedDataSource>::create(run, counter);
    CachedDataSource cached(watched, 1 << 20);
    CachedDataSource forgetful(watched, 1);
    for (CachedDataSource* source : {&cached, &cached, &forgetful}) {
        EXPECT_EQ(test::valueOf(source->xics(boxes)), test::valueOf(run->xics(boxes)));
    }
    EXPECT_EQ(counter->count, 2 * 17);
}

TEST_F(DecoratorsTest, StopWhenCanceledAndKeepTheFirstFailure)
{
    counter->cancelAt = 5;
    WatchedDataSource watched(run, counter);
    EXPECT_TRUE(watched.xics(boxes).error().equals(kOperationCanceledError));
    EXPECT_EQ(counter->count, 5);
    EXPECT_FALSE(watched.firstFailure().hasError());

    counter->cancelAt = 1000;
    EXPECT_FALSE(watched.scanData(MsQuery(MsScanId(77), PeakPickingFilter::Profile)).isOk());
    EXPECT_TRUE(watched.xics(boxes).isOk());
    EXPECT_TRUE(watched.firstFailure().equals(kBadParameterError));

    WatchedDataSource ofRequests(run, counter);
    EXPECT_FALSE(ofRequests.xics(boxes, 1, PeakPickingFilter(7)).isOk());
    EXPECT_TRUE(ofRequests.firstFailure().equals(kBadParameterError));
}

} // namespace zel::msreader
