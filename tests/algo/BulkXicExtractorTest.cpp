#include "BulkXicExtractor.h"

#include "tests/support/RecordingSink.h"
#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <new>
#include <random>

namespace zel {

using msreader::MsQuery;
using msreader::PeakPickingFilter;
using test::HasError;
using test::IsOk;
using test::SourceProbe;

namespace {

using MzSet = math::ClosedMultiInterval<double, 10>;
using TimeSet = math::ClosedMultiInterval<double, 6>;
using Xics = QList<QList<QPointF>>;

const TimeSet kAllTimes = TimeSet::unbounded();

Result<Xics> extract(msreader::MsDataSourceInterface* source,
                     const QList<XicDimensions>& boxes,
                     int msLevel = 1)
{
    return BulkXicExtractor(source).xic(boxes, msLevel, PeakPickingFilter::Centroid, {});
}

Result<Xics> extractGroups(msreader::MsDataSourceInterface* source,
                           const QList<QList<XicDimensions>>& groups,
                           const BulkXicExtractor::Aggregate& aggregate)
{
    return BulkXicExtractor(source).xic(groups, aggregate, 1, PeakPickingFilter::Centroid, {});
}

/// The result told directly: every scan against every XIC.
Xics slowReference(msreader::MsDataSourceInterface* source, const QList<XicDimensions>& boxes)
{
    Xics xics(boxes.size());
    for (const auto& id : test::valueOf(source->scanIds(MsQuery::createByMsLevel(1)))) {
        const double time = test::valueOf(source->scanInfoBasic(id)).retentionTimeMinutes;
        const QList<QPointF> spectrum =
            test::valueOf(source->scanData(MsQuery(id, PeakPickingFilter::Centroid)));
        for (qsizetype i = 0; i < boxes.size(); ++i) {
            if (!boxes[i].timeInterval().contains(time)) {
                continue;
            }
            double sum = 0.0;
            for (const Interval<double>& mz : boxes[i].mzInterval().intervals()) {
                for (const QPointF& peak : spectrum) {
                    sum +=
                        mz.start - 1e-10 <= peak.x() && peak.x() <= mz.end + 1e-10 ? peak.y() : 0.0;
                }
            }
            xics[i].append(QPointF(time, sum));
        }
    }
    return xics;
}

QSharedPointer<msreader::InMemoryDataSource> randomRun(std::mt19937& random, int scanCount)
{
    std::uniform_real_distribution<double> uniform;
    QList<msreader::InMemoryScan> scans;
    for (int i = 0; i < scanCount; ++i) {
        QList<QPointF> points;
        for (double mz = 400.0; mz < 420.0; mz += uniform(random)) {
            points.append(QPointF(mz, uniform(random) * 1e4));
        }
        scans.append(test::scanOf(i + 1, 0.01 * i, i % 17 == 0 ? QList<QPointF>() : points));
    }
    return test::sourceOf(scans);
}

QList<XicDimensions> randomBoxes(std::mt19937& random, int count)
{
    std::uniform_real_distribution<double> uniform;
    QList<XicDimensions> boxes;
    for (int i = 0; i < count; ++i) {
        TimeSet time;
        MzSet mz;
        for (auto piece = random() % 4; piece > 0; --piece) {
            const double start = uniform(random) * 7 - 0.5;
            time.unite({start, start + uniform(random)});
        }
        for (auto piece = random() % 4; piece > 0; --piece) {
            const double start = 399 + uniform(random) * 22;
            mz.unite({start, start + uniform(random) * 0.5});
        }
        boxes.append(XicDimensions(mz, time));
    }
    return boxes;
}

} // namespace

// Bit for bit, whatever pieces the sets have and in whichever order the scans come.
TEST(BulkXicExtractorTest, EqualsTheDirectSumForRandomWindows)
{
    std::mt19937 random(11);
    const auto source = randomRun(random, 611);
    const QList<XicDimensions> boxes = randomBoxes(random, 300);
    const Xics expected = slowReference(source.get(), boxes);
    SourceProbe probe(source.get());
    EXPECT_EQ(test::valueOf(extract(&probe, boxes)), expected);
    EXPECT_LE(*std::max_element(probe.chunkSizes.begin(), probe.chunkSizes.end()), 250);
    QList<msreader::MsScanId> onceEach = probe.readIds;
    onceEach.erase(std::unique(onceEach.begin(), onceEach.end()), onceEach.end());
    EXPECT_EQ(onceEach.size(), probe.readIds.size()) << "a scan was read twice";
    EXPECT_LE(probe.readIds.size(), 611);

    probe.reverseScanIds = true;
    Xics reversed = test::valueOf(extract(&probe, boxes));
    for (QList<QPointF>& xic : reversed) {
        std::reverse(xic.begin(), xic.end());
    }
    EXPECT_EQ(reversed, expected);
}

TEST(BulkXicExtractorTest, TakesScansByEachPieceOfTheTimeSet)
{
    const auto source = test::runOf({1, 2, 3, 4, 5 + 5e-7}, {{500, 10}});
    TimeSet gap(1, 2);
    gap.unite({4, 5});
    const Xics xics = test::valueOf(extract(source.get(),
                                            {XicDimensions({499, 500 - 0.9e-10}, gap), // by a hair
                                             XicDimensions({499, 501}, {}),
                                             XicDimensions({}, {2, 3}),
                                             XicDimensions({600, 601}, {2, 2})}));
    EXPECT_EQ(xics,
              (Xics{{{1, 10}, {2, 10}, {4, 10}, {5 + 5e-7, 10}},
                    {},               // no time: an empty list in its place
                    {{2, 0}, {3, 0}}, // no m/z: a zero for each scan
                    {{2, 0}}}));
    EXPECT_EQ(test::valueOf(extract(source.get(), {XicDimensions({499, 501}, kAllTimes)}, 2)),
              Xics(1));
}

TEST(BulkXicExtractorTest, PassesFailuresOnAndStopsWhenCanceled)
{
    const auto source = test::runOf({1, 2}, {{500, 10}});
    const QList<XicDimensions> boxes = {XicDimensions({499, 501}, kAllTimes)};
    SourceProbe probe(source.get());
    EXPECT_THAT(
        BulkXicExtractor(&probe).xic(boxes, 1, static_cast<PeakPickingFilter>(2), {}),
        HasError(kBadParameterError, "Profile and Centroid peak picking modes are supported only"));
    const auto sink = QSharedPointer<test::RecordingSink>::create();
    probe.beforeReading = [&sink] { sink->canceled = true; };
    EXPECT_THAT(BulkXicExtractor(&probe).xic(boxes, 1, PeakPickingFilter::Centroid, sink),
                HasError(kOperationCanceledError));
    probe.failDataWith = Error(kFileFormatError, "broken scan");
    EXPECT_THAT(extract(&probe, boxes), HasError(kFileFormatError, "broken scan"));
    probe.failInfoWith = Error(kFileFormatError, "broken index");
    EXPECT_THAT(extract(&probe, boxes), HasError(kFileFormatError, "broken index"));
}

TEST(BulkXicExtractorTest, MergesGroupsOverTheUnionOfTheirTimes)
{
    const auto source = test::runOf({1, 2, 3}, {{500, 10}, {600, 100}});
    const XicDimensions early({499, 501}, {1, 2});
    const XicDimensions late({599, 601}, {2, 3});
    const auto labelled = [](int groupIndex, const QList<double>& values) {
        return 1000.0 * groupIndex + values[0] + 2 * values[1];
    };
    SourceProbe probe(source.get());
    EXPECT_TRUE(test::valueOf(extractGroups(&probe, {}, labelled)).isEmpty());
    EXPECT_EQ(probe.callCount, 0) << "no group, no call";
    // One member passes unchanged.
    EXPECT_EQ(test::valueOf(extractGroups(&probe, {{}, {early, late}, {late}}, labelled)),
              (Xics{{}, {{1, 1010}, {2, 1210}, {3, 1200}}, {{2, 100}, {3, 100}}}));
    probe.failRangeWith = Error(kFileOpenError, "gone");
    EXPECT_THAT(extractGroups(&probe, {{}}, labelled), HasError(kFileOpenError, "gone"));
}

TEST(BulkXicExtractorTest, LeavesScansWithoutATimeOutAndTakesNoMoreMemoryThanItNeeds)
{
    struct NanTime : SourceProbe
    {
        using SourceProbe::scanInfoBasic;
        using SourceProbe::SourceProbe;
        Result<QList<msreader::ScanInfoBasic>> scanInfoBasic(
            const QList<msreader::MsScanId>& ids) override
        {
            auto infos = SourceProbe::scanInfoBasic(ids);
            infos.value()[1].retentionTimeMinutes = std::nan("");
            return infos;
        }
    };
    const auto source = test::runOf({1, 2, 3, 4}, {{500, 10}});
    NanTime probe(source.get());
    for (const bool isReversed : {false, true}) {
        probe.reverseScanIds = isReversed;
        const Xics xics = test::valueOf(extract(
            &probe, {XicDimensions({499, 501}, {1, 3}), XicDimensions({499, 501}, kAllTimes)}));
        EXPECT_EQ(xics[0].size(), 2);
        ASSERT_EQ(xics[1].size(), 3);
        EXPECT_EQ(xics[1][0], QPointF(isReversed ? 4 : 1, 10));
        EXPECT_EQ(xics[1].capacity(), 3);
    }
}

TEST(BulkXicExtractorTest, GivesAnErrorWithoutMemoryOrAFunctionToFold)
{
    const auto source = test::runOf({1, 2}, {{500, 10}});
    const XicDimensions box({499, 501}, kAllTimes);
    SourceProbe probe(source.get());
    probe.beforeReading = [] { throw std::bad_alloc(); };
    EXPECT_THAT(extract(&probe, {box}), HasError(kError, "Not enough memory for 1 chromatograms"));
    const auto outOfMemory = [](int, const QList<double>&) -> double { throw std::bad_alloc(); };
    EXPECT_THAT(extractGroups(source.get(), {{box, box}}, outOfMemory),
                HasError(kError, "Not enough memory for 1 chromatograms"));
    const BulkXicExtractor::Aggregate none = nullptr;
    EXPECT_THAT(extractGroups(source.get(), {{box}, {box, box}}, none),
                HasError(kError, "A group of several chromatograms needs a function to fold them"));
    EXPECT_THAT(extractGroups(source.get(), {{box}, {}}, none), IsOk()) << "nothing to fold";
}

} // namespace zel
