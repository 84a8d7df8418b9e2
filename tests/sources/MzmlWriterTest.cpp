#include "tools/sources/mzml/MzmlWriter.h"

#include "tests/support/Matchers.h"
#include "tests/support/MzmlText.h"
#include "tests/support/RecordingSink.h"
#include "tests/support/Spectra.h"
#include "tools/sources/memory/InMemoryDataSource.h"
#include "tools/sources/mzml/MzmlDataSource.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <random>
#include <tuple>

namespace zel::msreader {

using namespace test;
using ::testing::ElementsAre;

namespace {

using Frames = MzmlWriterOptions::Frames;

/// Numbers without short decimal forms, to see that all their bits survive.
QList<QPointF> randomPoints(std::mt19937& random, int count)
{
    std::uniform_real_distribution<double> step(1e-3, 2.0);
    std::lognormal_distribution<double> intensity(5.0, 3.0);
    QList<QPointF> points;
    double mz = 100.0;
    for (int i = 0; i < count; ++i) {
        mz += step(random);
        points.append(QPointF(mz, intensity(random)));
    }
    return points;
}

/// Cycles of a profile MS1 scan and two centroid MS2 scans.
QList<InMemoryScan> plainRun()
{
    std::mt19937 random(1);
    QList<InMemoryScan> scans;
    for (int cycle = 0; cycle < 5; ++cycle) {
        const double minutes = 1.0 / 3.0 + cycle / 7.0;
        InMemoryScan ms1 = scanOf(cycle + 1, minutes, randomPoints(random, 40 * cycle));
        ms1.info.storedAs = PeakPickingFilter::Profile;
        ms1.info.acquiredMzRange = {100.1, 1234.5};
        ms1.info.nativeId = QStringLiteral("frame=1 scan=%1").arg(1000 + cycle);
        ms1.info.nativeScanNumber = 1000 + cycle;
        ms1.info.polarity = cycle % 2 == 0 ? Polarity::Positive : Polarity::Negative;
        ms1.info.compensationVoltage = -45.0 + cycle / 3.0;
        scans.append(ms1);
        for (int i = 0; i < 2; ++i) {
            InMemoryScan ms2 =
                scanOf(6 + 2 * cycle + i, minutes + 0.01 * i, randomPoints(random, 30), 2);
            ms2.precursor = {500.0 + 1.0 / 3.0, 0.1, 0.7 * (i + 1), 500.0 + 2.0 / 3.0, 2 + i};
            ms2.info.nativeId = QStringLiteral("x scan=%1").arg(6 + 2 * cycle + i);
            ms2.info.nativeScanNumber = 6 + 2 * cycle + i;
            scans.append(ms2);
        }
    }
    return scans;
}

/// Frames of mobility scans 1 to 4, of which the second frame lacks number 2.
QList<InMemoryScan> mobilityRun()
{
    std::mt19937 random(2);
    QList<InMemoryScan> scans;
    for (int frame = 1; frame <= 3; ++frame) {
        for (int d2 = 1; d2 <= 4; ++d2) {
            if (frame != 2 || d2 != 2) {
                scans.append(scanOf({frame, d2}, frame / 9.0, randomPoints(random, 20 + d2)));
                scans.last().info.mobility = (d2 - 1) / 30.0;
            }
        }
    }
    return scans;
}

/// Expects two sources to answer alike, scan by scan.
void expectEqualSources(MsDataSourceInterface& expected, MsDataSourceInterface& actual, bool withD2)
{
    MsQuery all = MsQuery::createByTime(math::ClosedMultiInterval<double, 6>::unbounded(),
                                        math::ClosedMultiInterval<double, 10>::unbounded(),
                                        std::nullopt);
    if (withD2) {
        all.setD2({});
    }
    const QList<MsScanId> ids = valueOf(expected.scanIds(all));
    ASSERT_FALSE(ids.isEmpty());
    ASSERT_EQ(ids, valueOf(actual.scanIds(all)));
    for (const MsScanId& id : ids) {
        SCOPED_TRACE(id.toString().toStdString());
        const auto fieldsOf = [&id](MsDataSourceInterface& source) {
            const ScanInfo info = valueOf(source.scanInfo(id));
            return std::tuple(info.retentionTimeMinutes,
                              info.msLevel,
                              info.storedAs,
                              info.mobility,
                              info.polarity,
                              info.compensationVoltage,
                              info.mzRange());
        };
        EXPECT_TRUE(fieldsOf(expected) == fieldsOf(actual));
        EXPECT_EQ(valueOf(expected.scanData(MsQuery(id, PeakPickingFilter::Profile))),
                  valueOf(actual.scanData(MsQuery(id, PeakPickingFilter::Profile))));
        const auto precursor = expected.precursorInfo(id);
        ASSERT_EQ(precursor.isOk(), actual.precursorInfo(id).isOk());
        if (precursor.isOk()) {
            const PrecursorInfo& p = precursor.value();
            const PrecursorInfo q = valueOf(actual.precursorInfo(id));
            EXPECT_EQ(std::tie(p.isolationMz, p.isolationLowerOffset, p.isolationUpperOffset),
                      std::tie(q.isolationMz, q.isolationLowerOffset, q.isolationUpperOffset));
            EXPECT_EQ(std::tie(p.selectedIonMz, p.charge), std::tie(q.selectedIonMz, q.charge));
        }
    }
}

QStringList namesIn(const QTemporaryDir& folder)
{
    return QDir(folder.path()).entryList(QDir::Files | QDir::Hidden);
}

} // namespace

TEST(MzmlWriterTest, IsReadBackUnchanged)
{
    const MzmlWriterOptions scanByScan{Frames::ScanByScan, {}};
    const MzmlWriterOptions driftTime{Frames::ScanByScan, MzmlWriterOptions::Mobility::DriftTime};
    for (const auto& [name, scans, options] :
         {std::tuple("run.mzML", plainRun(), MzmlWriterOptions()),
          {"run.mzML.gz", plainRun(), MzmlWriterOptions()},
          {"run.mzML", mobilityRun(), scanByScan},
          {"run.mzML", mobilityRun(), driftTime}}) {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QString::fromUtf8(name));
        ASSERT_THAT(writeMzml(path, scans, options), IsOk());
        EXPECT_THAT(namesIn(folder), ElementsAre(QString::fromUtf8(name)));
        const auto expected =
            valueOf(InMemoryDataSource::create(scans, QStringLiteral("in memory")));
        const auto actual = valueOf(MzmlDataSource::open(path));
        const bool hasMobility = valueOf(expected->hasMobility());
        EXPECT_EQ(hasMobility, valueOf(actual->hasMobility()));
        expectEqualSources(*expected, *actual, false);
        if (hasMobility) {
            expectEqualSources(*expected, *actual, true);
        } else {
            const ScanInfo last = valueOf(actual->scanInfo(scans.size()));
            EXPECT_EQ(last.nativeId, scans.constLast().info.nativeId);
            EXPECT_EQ(last.nativeScanNumber, scans.constLast().info.nativeScanNumber);
        }
    }
}

TEST(MzmlWriterTest, CombinesFramesWithAMobilityArray)
{
    // The second frame lacks a scan inside its range, which is read as an empty one.
    QList<InMemoryScan> expectedScans = mobilityRun();
    InMemoryScan empty = scanOf({2, 2}, expectedScans[4].info.retentionTimeMinutes, {});
    empty.info.mobility = expectedScans[1].info.mobility;
    expectedScans.insert(5, empty);
    const auto expected =
        valueOf(InMemoryDataSource::create(expectedScans, QStringLiteral("in memory")));

    for (const auto mobility :
         {MzmlWriterOptions::Mobility::InverseReduced, MzmlWriterOptions::Mobility::DriftTime}) {
        const QTemporaryDir folder;
        const QString path = folder.filePath(QStringLiteral("run.mzML"));
        ASSERT_THAT(writeMzml(path, mobilityRun(), {Frames::Combined, mobility}), IsOk());
        const auto actual = valueOf(MzmlDataSource::open(path));
        expectEqualSources(*expected, *actual, false);
        expectEqualSources(*expected, *actual, true);
    }
}

TEST(MzmlWriterTest, LeavesTheOldFileWhenItFails)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("run.mzML"));
    writeFile(path, "old");
    const auto expectUnchanged = [&folder, &path] {
        QFile file(path);
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), "old");
        EXPECT_EQ(namesIn(folder).size(), 1);
    };

    QList<InMemoryScan> scans = mobilityRun();
    scans[1].info.mobility = scans[0].info.mobility;
    EXPECT_THAT(writeMzml(path, scans),
                HasError(kBadParameterError,
                         "Scan 1.1: the next scan of its frame must have a higher mobility"));
    expectUnchanged();

    const auto sink = QSharedPointer<RecordingSink>::create();
    sink->canceled = true;
    EXPECT_THAT(writeMzml(path, mobilityRun(), {}, sink), HasError(kOperationCanceledError));
    expectUnchanged();
}

} // namespace zel::msreader
