// Runs `zel targeted` on small runs with planted peaks.

#include "tests/support/Runs.h"
#include "tests/tool/ZelTool.h"

#include <cmath>
#include <numbers>

namespace zel {

using msreader::InMemoryScan;
using test::Outcome;
using test::text;

namespace {

constexpr double kSigmaMinutes = 0.15;
constexpr double kHeight = 1e6;

/// A peak of Gaussian shape.
struct Planted
{
    double mz;
    double minutes;
};

/// A run of 14 minutes, a scan every 2 seconds.
QList<InMemoryScan> runWith(const QList<Planted>& peaks)
{
    QList<InMemoryScan> scans;
    for (int i = 0; i <= 420; ++i) {
        const double minutes = i / 30.0;
        QList<QPointF> points;
        for (const Planted& peak : peaks) {
            const double z = (minutes - peak.minutes) / kSigmaMinutes;
            points.append({peak.mz, std::round(kHeight * std::exp(-0.5 * z * z))});
        }
        std::ranges::sort(points, {}, &QPointF::x);
        scans.append(test::scanOf(i + 1, minutes, points));
    }
    return scans;
}

class TargetedCommandTest : public test::ZelTool
{
protected:
    /// `zel targeted` with what is there.
    Outcome targeted(const char* runsAndMore) const
    {
        return call(text("targeted --psms psms.tsv -o out.tsv ") + text(runsAndMore));
    }

    /// The cells of the output, without the header.
    QList<QByteArrayList> rows() const
    {
        QList<QByteArrayList> rows;
        for (const QByteArray& line : read(text("out.tsv")).trimmed().split('\n').sliced(1)) {
            rows.append(line.split('\t'));
        }
        return rows;
    }
};

enum Column {
    RunName,
    Sequence,
    Modifications,
    Charge,
    Mz,
    Start,
    Apex,
    End,
    Fwhm,
    Area,
    Height,
    PsmCount,
    Offset
};

} // namespace

TEST_F(TargetedCommandTest, MeasuresTheFeaturesOfTwoRunsAndAlignsThoseThatDiffer)
{
    writeRun(text("a.mzML"), runWith({{500.0, 5.0}, {600.0, 7.0}, {600.0, 8.5}}));
    writeRun(text("b.mzML"), runWith({{500.0, 5.4}, {600.0, 7.4}}));
    write(text("psms.tsv"),
          "run\tsequence\tmodifications\tcharge\tmz\trt\n"
          "a\tPEPTIDEK\t\t2\t500\t5.05\na\tPEPTIDEK\t\t2\t500\t4.9\n"
          "b.mzML\tPEPTIDEK\t\t2\t500\t5.3\n"
          "a\tELVISK\tOx/15.9949\t1\t600\t7.01\na\tELVISK\tOx/15.9949\t1\t600\t8.4\n"
          "a\tELVISK\tOx/15.9949\t1\t600\t8.6\nb\tELVISK\tOx/15.9949\t1\t600\t7.5\n");
    const Outcome outcome = targeted("a.mzML b.mzML --diagrams d.html");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains(text("1 ions aligned, 0 left")))
        << outcome.errors.toStdString();
    EXPECT_EQ(files().join(QLatin1Char(' ')),
              text("a.mzML b.mzML d.alignment.html d.html out.tsv psms.tsv"));
    EXPECT_TRUE(read(text("d.html")).contains("PEPTIDEK - z=2"));

    const double area = 60.0 * kHeight * kSigmaMinutes * std::sqrt(2.0 * std::numbers::pi);
    struct Expected
    {
        const char* run;
        const char* sequence;
        double apex;
        const char* psmCount;
        double offset;
        double share; ///< of the planted area
    };
    const Expected expected[] = {
        {"a", "ELVISK", 7.0, "1", 0.4, 1.0},
        {"a", "ELVISK", 8.5, "2", 0.4, 1.0},
        {"b", "ELVISK", 7.4, "1", 0.0, 1.0},
        {"b", "ELVISK", 8.9, "0", 0.0, 0.0}, // the other run's second peak has a place here too
        {"a", "PEPTIDEK", 5.0, "2", 0.0, 1.0},
        {"b", "PEPTIDEK", 5.4, "1", 0.0, 1.0},
    };
    const QList<QByteArrayList> all = rows();
    ASSERT_EQ(all.size(), std::size(expected));
    for (qsizetype i = 0; i < all.size(); ++i) {
        SCOPED_TRACE(i);
        const Expected& wanted = expected[i];
        const QByteArrayList& row = all[i];
        EXPECT_EQ(row[RunName], wanted.run);
        EXPECT_EQ(row[Sequence], wanted.sequence);
        EXPECT_EQ(row[PsmCount], wanted.psmCount);
        EXPECT_NEAR(row[Offset].toDouble(), wanted.offset, 0.04) << "the alignment goes by scans";
        EXPECT_NEAR(row[Area].toDouble(), wanted.share * area, 0.01 * area);
        EXPECT_LT(row[Start].toDouble(), wanted.apex);
        EXPECT_GT(row[End].toDouble(), wanted.apex);
        if (wanted.share > 0.0) {
            EXPECT_NEAR(row[Apex].toDouble(), wanted.apex, 0.02);
            EXPECT_NEAR(row[Fwhm].toDouble(), 2.355 * kSigmaMinutes, 0.02);
        }
    }
}

TEST_F(TargetedCommandTest, NamesAndCountsTheMatchesThatItCannotUse)
{
    writeRun(text("run.mzML"), runWith({{500.0, 5.0}}));
    const QByteArray head = "run\tsequence\tprotein\tmodifications\tcharge\tmz\trt\n";
    const QByteArray good = "run\tPEPTIDEK\tP1\tDeam/0.984016\t2\t500\t5.05\n";
    write(text("psms.tsv"), head + good);
    ASSERT_EQ(targeted("run.mzML").exitCode, 0);
    const QByteArray clean = read(text("out.tsv"));

    write(text("psms.tsv"),
          head + good + "run\tPEPTIDEK\tP1\tDeam/0.984016\t0\t500\t5.05\n" +
              "run\tPEPTIDEK\tP1\tDeam/0.984016;\t2\t500\t5.05\n" +
              "run\tPEPTIDEK\tP1\tDeam/0.984016\t2\t500\t303\n" +
              "run\tPEPTIDEK\tP2\tDeam/0.984016\t2\t500\t5.05\n" +
              "elsewhere\tPEPTIDEK\tP1\t\t2\t500\t5.05\n");
    const Outcome outcome = targeted("run.mzML");
    EXPECT_EQ(outcome.exitCode, 0);
    EXPECT_EQ(read(text("out.tsv")), clean);
    for (const char* const part :
         {"columns that are not read: protein",
          "line 3: expected a charge from 1 to 100",
          "line 4: expected modifications as label/mass shift",
          "line 5: the time 303 min lies outside run run, 0 to 14 min",
          "line 6: PEPTIDEK with charge 2 at 5.05 min stands there already",
          "line 7: run elsewhere was not given",
          "1 matches are used, 5 left out"}) {
        EXPECT_TRUE(outcome.errors.contains(text(part))) << part << '\n'
                                                         << outcome.errors.toStdString();
    }
}

TEST_F(TargetedCommandTest, TakesTimesFromTheRunWhereMzIdentMlHasNone)
{
    QList<InMemoryScan> scans = runWith({{436.186, 5.0}}); // ACDK, singly charged
    InMemoryScan fragments = test::scanOf(152, 5.01, {{200.0, 1.0}}, 2);
    fragments.info.nativeId = text("controllerType=0 controllerNumber=1 scan=124");
    scans.insert(151, fragments);
    for (qsizetype i = 152; i < scans.size(); ++i) {
        scans[i].info.scanId = i + 1;
    }
    writeRun(text("run2.mzML"), scans);
    const Outcome outcome =
        call("targeted run2.mzML -o out.tsv --psms " ZEL_TEST_FILES "/matches.mzid");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    ASSERT_EQ(rows().size(), 1);
    EXPECT_EQ(rows()[0][Sequence], "ACDK");
    EXPECT_NEAR(rows()[0][Apex].toDouble(), 5.0, 0.02);
    EXPECT_TRUE(outcome.errors.contains(text("1 of runs that were not given")));
}

TEST_F(TargetedCommandTest, EndsABadCallWithOneClearLineAndNoFile)
{
    writeRun(text("run.mzML"), runWith({{500.0, 5.0}}));
    write(text("psms.tsv"), "sequence\tcharge\tmz\trt\nPEPTIDEK\t2\t500\t5\n");
    for (const test::BadCall& bad : {
             test::BadCall{"targeted --psms p.tsv run.mzML -o out.tsv",
                           "needs the column charge",
                           1,
                           "p.tsv",
                           "sequence\tz\trt\nPEPTIDEK\t2\t5\n"},
             {"targeted --psms psms.tsv run.mzML run.mzML", "two runs are called run"},
             {"targeted --psms psms.tsv run.mzML --score xcorr", "needs the column xcorr"},
             {"targeted --psms psms.tsv run.mzML --diagrams none/d.html", "none/d.html"},
             {"targeted --psms psms.tsv run.mzML --mode best", "--mode", 2},
             {"targeted --psms psms.tsv run.mzML --isotope-selector 30,18", "ascending", 2},
             {"targeted --psms psms.tsv run.mzML --mode fixed --diagrams d", "adaptive", 2},
         }) {
        expectRefused(bad);
    }
}

} // namespace zel
