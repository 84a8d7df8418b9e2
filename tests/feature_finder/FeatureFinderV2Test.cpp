#include "feature_finder/finders/FeatureFinderV2.h"

#include "feature_finder/finders/FeatureFinderV2_p.h"
#include "tests/support/Runs.h"
#include "tests/support/SourceProbe.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>

namespace zel::test {

namespace {

using msreader::MsQuery;
using msreader::PeakPickingFilter;
using Cells = std::map<std::pair<int, int>, double>; ///< by (column, row)

/// Counts the scans that are read as centroids, and can leave some of them empty.
class CentroidProbe : public SourceProbe
{
public:
    using SourceProbe::scanData;
    using SourceProbe::SourceProbe;

    QList<long long> centroidReads;
    long long emptyScan = -1;

    Result<QList<QPointF>> scanData(const MsQuery& query) override
    {
        const long long d1 = query.scanId().value().d1.value_or(-1);
        if (query.peakPickingFilter() == PeakPickingFilter::Centroid) {
            centroidReads.append(d1);
            if (d1 == emptyScan) {
                return QList<QPointF>();
            }
        }
        return SourceProbe::scanData(query);
    }
};

/// The finder's insides with these settings.
struct Fixture
{
    FeatureFinderV2::Private finder;

    explicit Fixture(double d2HashFactor = 1.0, double mzHashFactor = 10.0)
    {
        finder.parameters.d2HashFactor = d2HashFactor;
        finder.parameters.mzHashFactor = mzHashFactor;
        EXPECT_THAT(finder.hillBuilder.init(finder.parameters), IsOk());
    }

    FrameRawGroup matrixOf(msreader::MsDataSourceInterface* source, Interval<int> range = {0, 0})
    {
        FrameRawGroup group;
        EXPECT_THAT(finder.buildFrameRaw(source, range, &group), IsOk());
        return group;
    }
};

Cells cellsOf(const FrameRawGroup& group)
{
    Cells cells;
    for (int column = 0; column < group.frameRaw.cols(); ++column) {
        for (Eigen::SparseMatrix<double>::InnerIterator it(group.frameRaw, column); it; ++it) {
            cells[{column, static_cast<int>(it.row())}] = it.value();
        }
    }
    return cells;
}

/// MS1 scans of numbers 10, 20, 30, ... with these points.
QSharedPointer<msreader::InMemoryDataSource> numberedRun(const QList<QList<QPointF>>& scans)
{
    QList<msreader::InMemoryScan> run;
    for (qsizetype i = 0; i < scans.size(); ++i) {
        run.append(scanOf(10 * (i + 1), 0.1 * static_cast<double>(i), scans[i]));
    }
    return sourceOf(run);
}

/// A hill of 15 scans on three m/z values around this one.
QList<QList<QPointF>> hillAt(double mz, double height)
{
    QList<QList<QPointF>> scans;
    for (int i = 0; i < 15; ++i) {
        const double distance = (i - 7) / 3.0;
        const double apex = height * std::exp(-0.5 * distance * distance);
        scans.append({{mz - 0.01, 0.6 * apex}, {mz, apex}, {mz + 0.01, 0.6 * apex}});
    }
    return scans;
}

} // namespace

TEST(FeatureFinderV2Test, LaysScansOutInColumns)
{
    const auto source =
        numberedRun({{{500.01, 1.0}, {500.04, 2.0}, {500.06, 4.0}}, // bins 5000 5001
                     {{500.0, 8.0}, {3010.2, 7.0}},                 // beyond the last bin
                     {{500.0, 16.0}},
                     {{500.0, 32.0}},
                     {{500.0, 64.0}}});
    struct Case
    {
        double factor;
        Interval<int> range;
        Cells cells;
        QList<double> numbers;
    };
    for (const Case& run :
         {Case{1.0,
               {0, 0},
               {{{0, 5000}, 3},
                {{0, 5001}, 4},
                {{1, 5000}, 8},
                {{2, 5000}, 16},
                {{3, 5000}, 32},
                {{4, 5000}, 64}},
               {10, 20, 30, 40, 50, 0}},
          // Two scans to a column; the fifth makes no whole one.
          Case{2.0, {0, 0}, {{{0, 5000}, 11}, {{0, 5001}, 4}, {{1, 5000}, 48}}, {20, 40, 50, 0}},
          Case{0.5, {1, 3}, {{{0, 5000}, 8}, {{2, 5000}, 16}}, {20, 0, 30, 0}},
          Case{1.0, {3, 5}, {{{0, 5000}, 32}, {{1, 5000}, 64}}, {40, 50, 0}}}) {
        Fixture fixture(run.factor);
        const FrameRawGroup group = fixture.matrixOf(source.get(), run.range);
        EXPECT_EQ(cellsOf(group), run.cells) << run.factor;
        EXPECT_EQ(group.frameRaw.rows(), 30100);
        EXPECT_EQ(QList<double>(group.d1Values.begin(), group.d1Values.end()), run.numbers);
    }
}

TEST(FeatureFinderV2Test, KeepsTheStrongestIonsAboveTheNoise)
{
    const auto source = numberedRun({{{400.0, 1.0}, {500.0, 9.0}, {600.0, 5.0}}, {{400.0, 4.0}}});
    Fixture fixture;
    fixture.finder.parameters.maxIonCount = 2;
    EXPECT_EQ(cellsOf(fixture.matrixOf(source.get())),
              (Cells{{{0, 5000}, 9}, {{0, 6000}, 5}, {{1, 4000}, 4}}));
    fixture.finder.parameters.relativeFrameNoiseFloor = 1.0; // of the median, 5: not above it
    EXPECT_EQ(cellsOf(fixture.matrixOf(source.get())), (Cells{{{0, 5000}, 9}}));
}

TEST(FeatureFinderV2Test, RefusesWhatMakesNoMatrix)
{
    const auto source = numberedRun({{{500.0, 1.0}}, {{500.0, 2.0}}});
    FrameRawGroup group;
    for (const double factor : {0.0, 1e-13, -1.0, 1e-9, 1e300, std::nan("")}) {
        EXPECT_THAT(Fixture(factor).finder.buildFrameRaw(source.get(), {0, 0}, &group),
                    HasError(kError))
            << factor;
    }
    for (const Interval<int> range : {Interval<int>{1, 1}, {2, 1}, {0, 3}, {-1, 1}}) {
        EXPECT_THAT(Fixture().finder.buildFrameRaw(source.get(), range, &group), HasError(kError))
            << range.start << " to " << range.end;
    }
    EXPECT_THAT(FeatureFinderV2().findFeatures(nullptr, {}), HasError(kError));
}

TEST(FeatureFinderV2Test, GivesHillsScanNumbersAndMeasuredMz)
{
    QList<QList<QPointF>> scans = hillAt(500.024, 1000.0); // in bins 500.01 to 500.03
    const QList<QList<QPointF>> other = hillAt(700.0, 500.0);
    for (qsizetype i = 0; i < scans.size(); ++i) {
        scans[i] += other[i];
    }
    const auto source = numberedRun(scans);
    CentroidProbe probe(source.get());
    Fixture fixture(1.0, 100.0);
    const auto strongest = [&] {
        const auto hills = valueOf(fixture.finder.featureFinderBuildHillsChunk(&probe, {0, 0}));
        EXPECT_EQ(hills.size(), 2);
        return hills.value(0);
    };
    const HillD1 hill = strongest();
    EXPECT_EQ(hill.d1Apex, 80);
    EXPECT_EQ(hill.d1ApexIndex, 7);
    EXPECT_EQ(hill.d1Lo, 10 * (hill.d1LoIndex + 1));
    EXPECT_EQ(hill.d1Hi, 10 * (hill.d1HiIndex + 1));
    EXPECT_DOUBLE_EQ(hill.mzApex, 500.024);
    EXPECT_EQ(probe.centroidReads, QList<long long>{80}) << "one scan, read once for both hills";

    probe.emptyScan = 80;
    EXPECT_DOUBLE_EQ(strongest().mzApex, 500.02) << "that of the bin";
}

} // namespace zel::test
