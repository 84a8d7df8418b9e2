#include "feature_finder/frames/FeatureFinderV24DScansHandler.h"

#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

namespace zel::test {

namespace {

using Handler = FeatureFinderV24DScansHandler;
using Cells = std::map<std::pair<int, int>, double>; ///< by (column, row)
using msreader::MsScanId;

/// Frames of mobility scans, by D1.
using Frames = QMap<int, Handler::Frame>;

QList<msreader::InMemoryScan> scansOf(const Frames& run)
{
    QList<msreader::InMemoryScan> scans;
    for (auto d1 = run.cbegin(); d1 != run.cend(); ++d1) {
        for (auto d2 = d1.value().cbegin(); d2 != d1.value().cend(); ++d2) {
            scans.append(scanOf(MsScanId(d1.key(), d2.key()), 0.1 * d1.key(), d2.value()));
        }
    }
    return scans;
}

SettableFeatureFinderParameters paramsOf(int framesToSum, double d2HashFactor = 1.0)
{
    SettableFeatureFinderParameters params;
    params.numberOfFramesToSum = framesToSum;
    params.mzHashFactor = 500.0;
    params.d2HashFactor = d2HashFactor;
    return params;
}

/// A handler on a run in memory.
struct Fixture
{
    Fixture(const Frames& run, const SettableFeatureFinderParameters& params)
        : source(sourceOf(scansOf(run)))
    {
        EXPECT_THAT(handler.init(source.get(), params), IsOk());
    }

    Cells cellsAt(int d1)
    {
        const Handler::Matrix raw = valueOf(handler.getFrameRaw(d1));
        Cells cells;
        for (int column = 0; column < raw.cols(); ++column) {
            for (Handler::Matrix::InnerIterator cell(raw, column); cell; ++cell) {
                cells[{column, static_cast<int>(cell.row())}] = cell.value();
            }
        }
        return cells;
    }

    QSharedPointer<msreader::InMemoryDataSource> source;
    Handler handler;
};

/// The frame of number `d1` with this one scan at D2 5.
Frames runOfPoints(const QMap<int, QList<QPointF>>& pointsByD1)
{
    Frames run;
    for (auto d1 = pointsByD1.cbegin(); d1 != pointsByD1.cend(); ++d1) {
        run[d1.key()] = {{5, d1.value()}};
    }
    return run;
}

Frames randomRun(int frameCount)
{
    std::mt19937 random(11);
    std::uniform_int_distribution<int> bin(250000, 250060); // few, so that frames share cells
    std::uniform_real_distribution<> decades(-10.0, 30.0);
    Frames run;
    for (int frame = 0; frame < frameCount; ++frame) {
        const int d1 = 3 * frame + 1;
        for (int d2 = 1; d2 <= 4; ++d2) {
            std::map<int, QPointF> points;
            for (int i = 0; i < 20; ++i) {
                const int row = bin(random);
                points[row] = QPointF((row + 0.5) / 500.0, std::pow(10.0, decades(random)));
            }
            for (const auto& [row, point] : points) {
                run[d1][d2].append(point);
            }
        }
    }
    return run;
}

/// The sum as it is told, made afresh.
Cells sumOf(const Frames& run, int firstFrame, int frameCount, double d2HashFactor)
{
    Cells sum;
    for (const Handler::Frame& frame : run.values().mid(firstFrame, frameCount)) {
        std::map<int, std::map<int, double>> columns;
        for (auto d2 = frame.cbegin(); d2 != frame.cend(); ++d2) {
            auto& column = columns[static_cast<int>(d2.key() / d2HashFactor)];
            column.clear(); // the last scan of a column replaces the others
            for (const QPointF& point : d2.value()) {
                column[static_cast<int>(static_cast<float>(point.x()) * 500.0)] =
                    static_cast<float>(point.y());
            }
        }
        for (const auto& [column, cells] : columns) {
            for (const auto& [row, value] : cells) {
                sum[{column, row}] += value;
            }
        }
    }
    return sum;
}

} // namespace

TEST(FeatureFinderV24DScansHandlerTest, TheSlidSumIsTheSumMadeAfresh)
{
    const Frames run = randomRun(60);
    for (const double d2HashFactor : {1.0, 2.0}) {
        for (const int framesToSum : {1, 3, 10}) {
            Fixture slid(run, paramsOf(framesToSum, d2HashFactor));
            const QList<int> d1s = slid.handler.allD1s();
            for (int i = 0; i < d1s.size(); ++i) {
                const Cells cells = slid.cellsAt(d1s[i]);
                const Cells afresh = sumOf(run, i, framesToSum, d2HashFactor);
                ASSERT_EQ(cells.size(), afresh.size()) << framesToSum << " frames, step " << i;
                for (const auto& [place, value] : afresh) {
                    const auto cell = cells.find(place);
                    ASSERT_NE(cell, cells.end());
                    ASSERT_NEAR(cell->second / value, 1.0, 1e-9)
                        << framesToSum << " frames, step " << i;
                }
            }
        }
    }
}

TEST(FeatureFinderV24DScansHandlerTest, WindowsStartAtAllButTheLastFrames)
{
    QMap<int, QList<QPointF>> points;
    for (int d1 = 1; d1 <= 10; ++d1) {
        points[d1] = {{500.0, 10.0}};
    }
    Fixture three(runOfPoints(points), paramsOf(3));
    // The window of 8 to 10 is full, too.
    EXPECT_EQ(three.handler.allD1s(), (QList<int>{1, 2, 3, 4, 5, 6, 7}));
    Fixture one(runOfPoints(points), paramsOf(1));
    EXPECT_EQ(one.handler.allD1s().size(), 9);
    Fixture whole(runOfPoints(points), paramsOf(0));
    EXPECT_EQ(whole.handler.allD1s(), QList<int>{1});
    EXPECT_EQ(whole.handler.numberOfFramesToSum(), 10);
    EXPECT_EQ(whole.cellsAt(1), (Cells{{{5, 250000}, 100.0}}));
}

TEST(FeatureFinderV24DScansHandlerTest, CutsPointsToBins)
{
    Fixture fixture(runOfPoints({{1,
                                  {{399.9999, 3.0},   // 199999.95 is cut, where hashMz rounds up
                                   {400.0001, 4.0},   //
                                   {400.0015, 5.0},   // the same bin: replaces, does not add up
                                   {500.0, 1e-12},    // no intensity
                                   {600.0, 0.1},      // in single precision
                                   {3009.999, 6.0},   // the last row
                                   {3010.0, 7.0}}}}), // beyond it
                    paramsOf(1));
    EXPECT_EQ(fixture.cellsAt(1),
              (Cells{{{5, 199999}, 3.0},
                     {{5, 200000}, 5.0},
                     {{5, 300000}, static_cast<double>(0.1F)},
                     {{5, 1504999}, 6.0}}));
}

TEST(FeatureFinderV24DScansHandlerTest, KeepsToItsLimits)
{
    const QList<QPointF> points = {{400.0, 1.0}, {500.0, 2.0}, {600.0, 3.0}};
    Fixture fixture({{1, {{1, points}, {2, points}, {3, points}, {7, {}}}}}, paramsOf(1));
    EXPECT_EQ(fixture.handler.maxD2(), 7);
    fixture.handler.setMinD2AndMaxD2({2, 9});
    EXPECT_EQ(fixture.handler.maxD2(), 7); // only ever lowered
    fixture.handler.setMinD2AndMaxD2({2, 2});
    fixture.handler.setMinMzAndMaxMz({500.0, 600.0});
    EXPECT_EQ(fixture.cellsAt(1), (Cells{{{2, 250000}, 2.0}, {{2, 300000}, 3.0}}));
    // Starting over takes the limits as they are now.
    fixture.handler.clearFramesAndSummingMatrix();
    fixture.handler.setMinMzAndMaxMz({0.0, 1e9});
    EXPECT_EQ(fixture.cellsAt(1).size(), 3U);
}

TEST(FeatureFinderV24DScansHandlerTest, DropsNoiseAndTheWeakest)
{
    const auto frameOf = [](int count, double height) {
        QList<QPointF> points;
        for (int i = 0; i < count; ++i) {
            points.append(QPointF((100000.5 + i) / 500.0, height + (i < 1000 ? 1000 - i : 0)));
        }
        return runOfPoints({{1, points}});
    };
    auto params = paramsOf(1);
    EXPECT_EQ(Fixture(frameOf(15000, 5.0), params).cellsAt(1).size(), 15000U);
    EXPECT_EQ(Fixture(frameOf(15001, 5.0), params).cellsAt(1).size(), 1000U); // equal ones all go
    EXPECT_EQ(Fixture(frameOf(15001, 5.0), paramsOf(0)).cellsAt(1).size(), 15001U);
    params.relativeFrameNoiseFloor = 2.0; // of 2001 points the median is 5: those above 10 stay
    EXPECT_EQ(Fixture(frameOf(2001, 5.0), params).cellsAt(1).size(), 995U);
}

TEST(FeatureFinderV24DScansHandlerTest, RefusesWhatItCannotWorkOn)
{
    Handler handler;
    EXPECT_THAT(handler.getFrameRaw(1), HasError(kError));
    EXPECT_THAT(handler.init(nullptr, paramsOf(1)), HasError(kError));
    const QList<QPointF> points = {{500.0, 1.0}};
    for (const int d2 : {0, INT_MAX - 1}) {
        const auto source = sourceOf(scansOf({{1, {{d2, points}}}}));
        EXPECT_THAT(handler.init(source.get(), paramsOf(1)), HasError(kError)) << d2;
    }
    const auto source = sourceOf(scansOf({{1, {{5, points}}}, {2, {{5, points}}}}));
    for (const double factor : {0.0, -1.0, 10.0, std::nan("")}) {
        EXPECT_THAT(handler.init(source.get(), paramsOf(1, factor)), HasError(kError)) << factor;
    }
    ASSERT_THAT(handler.init(source.get(), paramsOf(1)), IsOk());
    EXPECT_THAT(handler.getFrameRaw(3), HasError(kError)); // unknown
    EXPECT_THAT(handler.getFrameRaw(1), IsOk());
    ASSERT_THAT(handler.init(source.get(), paramsOf(3)), IsOk()); // more than there are
    EXPECT_THAT(handler.getFrameRaw(1), HasError(kError));
}

TEST(FeatureFinderV24DScansHandlerTest, GoesOnWithoutTheScansThatCannotBeRead)
{
    class Failing : public SourceProbe
    {
    public:
        using SourceProbe::scanData;
        using SourceProbe::SourceProbe;
        Result<QList<QPointF>> scanData(const msreader::MsQuery& query) override
        {
            return query.scanId()->d1 == 3 ? Result<QList<QPointF>>(kFileFormatError)
                                           : SourceProbe::scanData(query);
        }
    };
    const auto source = sourceOf(scansOf(
        runOfPoints({{1, {{500.0, 1.0}}}, {2, {{500.0, 2.0}}}, {3, {{500.0, 4.0}}}, {4, {}}})));
    Failing probe(source.get());
    Handler handler;
    ASSERT_THAT(handler.init(&probe, paramsOf(2)), IsOk());
    EXPECT_EQ(valueOf(handler.getFrameRaw(1)).sum(), 3.0);
    EXPECT_EQ(valueOf(handler.getFrameRaw(2)).sum(), 2.0); // just loses the old frame
}

} // namespace zel::test
