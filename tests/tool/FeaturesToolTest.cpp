// `zel features` as a user would run it.

#include "tests/support/Runs.h"
#include "tests/tool/ZelTool.h"

#include <algorithm>
#include <cmath>

namespace zel::test {

namespace {

using msreader::InMemoryScan;

class FeaturesToolTest : public ZelTool
{
protected:
    /// A run of four minutes with few peptides.
    void simulate(const char* name, const char* more = "") const
    {
        const Outcome outcome = call(text("simulate --minutes 4 --drift 0.1 --peptides 20 -o ") +
                                     text(name) + QLatin1Char(' ') + text(more));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    }

    /// `zel features` on a run into a folder.
    Outcome features(const char* run, const char* folder, const char* more = "") const
    {
        return call(text("features --tsv %1 -o %2 %3").arg(text(run), text(folder), text(more)));
    }

    /// The rows of a table, without its header, as cells.
    QList<QStringList> rows(const QString& name) const
    {
        QList<QStringList> all;
        for (const QString& line : QString::fromUtf8(read(name)).split(QLatin1Char('\n'))) {
            all.append(line.split(QLatin1Char('\t')));
        }
        return all.mid(1, all.size() - 2); // the last line is empty
    }
};

/// A peptide of 998.5 Da, its isotopes one after the other, in a scan of this height.
QList<QPointF> isotopes(double height, int charge = 2)
{
    QList<QPointF> points;
    for (const auto& [k, share] : {std::pair(0, 1.0), {1, 0.54}, {2, 0.18}, {3, 0.04}}) {
        points.append({(998.48545 + k * 1.003355) / charge + 1.00728, share * height});
    }
    return points;
}

/// The height of a peak of one that has its apex at 0.
double peakAt(double distance, double sigma)
{
    return std::exp(-0.5 * distance * distance / (sigma * sigma));
}

/// MS1 scans with a peak of these points, and `ms2Count` fragment scans behind each.
QList<InMemoryScan> peptideRun(int ms2Count, double height = 1e6)
{
    QList<InMemoryScan> scans;
    for (int i = 0; i < 40; ++i) {
        const double minutes = 0.05 * i;
        scans.append(scanOf(static_cast<long long>(scans.size()) + 1,
                            minutes,
                            isotopes(height * peakAt(i - 20, 4.0))));
        for (int ms2 = 0; ms2 < ms2Count; ++ms2) {
            InMemoryScan scan = scanOf(static_cast<long long>(scans.size()) + 1,
                                       minutes + 1e-4 * (ms2 + 1),
                                       {{200.0, 5.0}},
                                       2);
            scan.precursor.isolationMz = 500.25;
            scans.append(scan);
        }
    }
    return scans;
}

/// Frames with a peak of these points in two charges, the second two frames later, and `ms2Count`
/// fragment scans behind each.
QList<InMemoryScan> peptideFrames(int ms2Count)
{
    QList<InMemoryScan> scans;
    long long d1 = 0;
    for (int i = 0; i < 24; ++i) {
        const double minutes = 0.05 * i;
        ++d1;
        for (int d2 = 0; d2 < 60; ++d2) {
            const double height = 1e5 * peakAt(d2 - 30, 6.0);
            QList<QPointF> points = isotopes(height * peakAt(i - 13, 4.0), 3);
            points += isotopes(2.0 * height * peakAt(i - 11, 4.0));
            InMemoryScan scan = scanOf(msreader::MsScanId(d1, d2 + 1), minutes, points);
            scan.info.mobility = 0.6 + 0.01 * d2;
            scans.append(scan);
        }
        for (int ms2 = 0; ms2 < ms2Count; ++ms2) {
            InMemoryScan scan = scanOf(++d1, minutes + 1e-4 * (ms2 + 1), {{200.0, 5.0}}, 2);
            scan.precursor.isolationMz = 500.25;
            scans.append(scan);
        }
    }
    return scans;
}

/// Whether a row of features.tsv has charge, mass and apex of a row of truth.tsv.
bool isIon(const QStringList& feature, const QStringList& ion)
{
    const auto isInside = [&](int apex, int start, int end) {
        return feature[apex].isEmpty() || (ion[start].toDouble() <= feature[apex].toDouble() &&
                                           feature[apex].toDouble() <= ion[end].toDouble());
    };
    const double massDa = ion[2].toDouble();
    return feature[3] == ion[3] && std::abs(feature[2].toDouble() - massDa) <= 5e-6 * massDa &&
           isInside(5, 5, 7) && isInside(8, 9, 11);
}

/// The height of the third highest isotope in a row of truth.tsv.
double thirdIsotope(const QStringList& ion)
{
    QList<double> shares;
    for (const QString& share : ion[14].split(QLatin1Char(','))) {
        shares.append(share.toDouble());
    }
    std::sort(shares.rbegin(), shares.rend());
    return ion[12].toDouble() * shares.value(2);
}

} // namespace

TEST_F(FeaturesToolTest, FindsTheIonsOfSimulatedRunsAndLittleElse)
{
    // Ions whose third isotope is so high that it stands above what is recorded for long enough,
    // in a mobility run also in a single mobility scan.
    for (const auto& [options, least] :
         {std::pair("", 2e4),
          {"--mobility-scans 300 --scan-interval 2 --time-of-flight --resolving-power 40000",
           4e5}}) {
        const double leastHeight = least; // clang 14 lets no lambda read a part of a pair
        simulate("run.mzML", options);
        ASSERT_EQ(features("run.mzML", "a").exitCode, 0);
        QList<QStringList> truth = rows(text("run.truth.tsv"));
        const QList<QStringList> found = rows(text("a/run.features.tsv"));
        const auto isTrue = [&](const QStringList& feature) {
            return std::ranges::any_of(truth, [&](const auto& ion) { return isIon(feature, ion); });
        };
        const auto trueCount = std::ranges::count_if(found, isTrue);
        EXPECT_GE(static_cast<double>(trueCount), 0.95 * static_cast<double>(found.size()));

        truth.removeIf([&](const QStringList& ion) { return thirdIsotope(ion) < leastHeight; });
        const auto foundCount = std::ranges::count_if(truth, [&](const QStringList& ion) {
            return std::ranges::any_of(found, [&](const auto& row) { return isIon(row, ion); });
        });
        ASSERT_GT(truth.size(), 20);
        EXPECT_GE(static_cast<double>(foundCount), 0.95 * static_cast<double>(truth.size()))
            << foundCount << " of " << truth.size();
    }
}

TEST_F(FeaturesToolTest, WritesEqualFilesForEqualRuns)
{
    simulate("run.mzML");
    const Outcome outcome = features("run.mzML", "a", "--json");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.output.contains(text("hills"))) << outcome.output.toStdString();
    EXPECT_EQ(QDir(path(text("a"))).entryList(QDir::Files | QDir::Hidden),
              (QStringList{text("run.features.json"), text("run.features.tsv"), text("run.ftrs")}));
    EXPECT_GT(rows(text("a/run.features.tsv")).size(), 10);
    EXPECT_EQ(read(text("a/run.features.json")).count("\"feature"),
              rows(text("a/run.features.tsv")).size());

    ASSERT_EQ(features("run.mzML", "b").exitCode, 0);
    ASSERT_EQ(features("run.mzML", "b").exitCode, 0); // over the files that are there
    for (const QString& name : {text("/run.ftrs"), text("/run.features.tsv")}) {
        EXPECT_EQ(read(text("a") + name), read(text("b") + name)) << name.toStdString();
    }
}

TEST_F(FeaturesToolTest, EstimatesTheSettingsForMobility)
{
    simulate("m.mzML", "--mobility-scans 150 --scan-interval 3");
    ASSERT_EQ(features("m.mzML", "a", "--auto").exitCode, 0);
    EXPECT_GT(rows(text("a/m.features.tsv")).size(), 3);
}

TEST_F(FeaturesToolTest, CountsMs1ScansHoweverTheFileNumbersThem)
{
    // The charges have their apexes two scans apart: beyond --max-d1-gap in the file's numbers.
    const auto inTwoCharges = [](QList<InMemoryScan> scans) {
        int ms1 = 0;
        for (InMemoryScan& scan : scans) {
            if (scan.info.msLevel == 1) {
                scan.points = isotopes(5e5 * peakAt(ms1++ - 22, 4.0), 3) + scan.points;
            }
        }
        return scans;
    };
    for (const auto& [alone, between] :
         {std::pair(inTwoCharges(peptideRun(0)), inTwoCharges(peptideRun(10))),
          {peptideFrames(0), peptideFrames(10)}}) {
        writeRun(text("alone.mzML"), alone);
        writeRun(text("between.mzML"), between);
        ASSERT_EQ(features("alone.mzML between.mzML", "a").exitCode, 0);
        const QList<QStringList> found = rows(text("a/alone.features.tsv"));
        ASSERT_EQ(found.size(), 2);
        EXPECT_EQ(found[0][0], found[1][0]); // one master
        EXPECT_EQ(found, rows(text("a/between.features.tsv")));
    }
}

TEST_F(FeaturesToolTest, TellsNoMobilityThatWasNotLookedAt)
{
    writeRun(text("run.mzML"), peptideFrames(0));
    ASSERT_EQ(
        features("run.mzML", "a", "--feature-finder-version 1 --min-hill-length-d1 3").exitCode, 0);
    ASSERT_EQ(rows(text("a/run.features.tsv")).size(), 2);
    EXPECT_EQ(rows(text("a/run.features.tsv"))[0].mid(7, 3), QStringList({{}, {}, {}}));
}

TEST_F(FeaturesToolTest, LeavesAStoreAloneThatIsOpenForWriting)
{
    writeRun(text("run.mzML"), peptideRun(0));
    ASSERT_EQ(features("run.mzML", "a").exitCode, 0);
    const QByteArray store = read(text("a/run.ftrs"));
    write(text("a/run.ftrs-journal"), "pages of the file that was there");
    const Outcome outcome = features("run.mzML", "a", "--max-mono-mass 900"); // finds nothing
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(text("run.ftrs-journal is there")))
        << outcome.errors.toStdString();
    EXPECT_EQ(read(text("a/run.ftrs")), store);
}

TEST_F(FeaturesToolTest, FindsNothingWhereNothingIs)
{
    struct Case
    {
        const char* name;
        QList<InMemoryScan> scans;
        int featureCount;
    };
    QList<InMemoryScan> empty = peptideRun(0);
    QList<InMemoryScan> oneBin = peptideRun(0);
    for (qsizetype i = 0; i < empty.size(); ++i) {
        empty[i].points.clear();
        oneBin[i].points = {{500.0001, 7.0}, {500.0002, 1e3}};
    }
    for (const Case& run : {Case{"empty", empty, 0},
                            Case{"one_bin", oneBin, 0},
                            Case{"one_scan", peptideRun(0).mid(20, 1), 0},
                            Case{"faint", peptideRun(0, 1e-30), 0},
                            Case{"huge", peptideRun(0, 1e30), 1}}) {
        writeRun(text(run.name) + text(".mzML"), run.scans);
        const Outcome outcome = features((run.name + std::string(".mzML")).c_str(), "a");
        EXPECT_EQ(outcome.exitCode, 0) << run.name << outcome.errors.toStdString();
        EXPECT_EQ(rows(text("a/") + text(run.name) + text(".features.tsv")).size(),
                  run.featureCount)
            << run.name;
    }
}

TEST_F(FeaturesToolTest, TakesPresetsAndSettings)
{
    writeRun(text("run.mzML"), peptideRun(0));
    for (const auto& [more, count] : {std::pair("--preset qtof", 1),
                                      {"--max-mono-mass 900", 0},
                                      {"--convert-d1-to-retention-time false", 1}}) {
        const Outcome outcome = features("run.mzML", "a", more);
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        EXPECT_EQ(rows(text("a/run.features.tsv")).size(), count) << more;
    }
    EXPECT_EQ(rows(text("a/run.features.tsv"))[0][5].toDouble(), 1.0); // minutes all the same
}

TEST_F(FeaturesToolTest, EndsABadCallWithOneClearLineAndNoFile)
{
    writeRun(text("run.mzML"), peptideRun(0));
    for (const BadCall& bad : {
             BadCall{"features run.mzML -o out --feature-finder-version 2", "no ion mobility"},
             {"features run.mzML -o out --network-file-path none.znet", "none.znet"},
             {"features run.mzML -o out --network-file-path " ZEL_TOOL_PATH, "zel"},
             {"features run.mzML -o out --d2-hash-factor 0.5", "must be at least 1"},
             {"features a/run.mzXML run.mzML -o out", "Two runs are called run"},
             {"features run.mzML -o run.mzML/out", "run.mzML/out"},
             {"features run.mzML -o out --preset maldi", "maldi", 2},
             {"features run.mzML -o out --ppm-tolerance=-1", "ppm-tolerance", 2},
         }) {
        expectRefused(bad);
        EXPECT_TRUE(QDir(path(text("out")))
                        .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot));
    }
    writeRun(text("frames.mzML"), peptideFrames(0).mid(0, 240));
    expectRefused({"features frames.mzML -o out --d2-hash-factor 1.5", "must be a whole number"});
}

} // namespace zel::test
