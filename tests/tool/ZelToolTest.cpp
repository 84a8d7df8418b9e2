// Runs the tool as a user would: output, exit codes, error lines, and files that must not be left
// behind.

#include "tests/tool/ZelTool.h"

#include "tests/support/Runs.h"

namespace zel {

using test::BadCall;
using test::Outcome;
using test::text;
using ZelToolTest = test::ZelTool;

namespace {

QList<msreader::InMemoryScan> smallRun(int scanCount = 40)
{
    QList<msreader::InMemoryScan> scans;
    for (int i = 0; i < scanCount; ++i) {
        scans.append(
            test::scanOf(i + 1, 0.1 * i, {{400.0, 1.0 + i}, {500.001, 10.0 * i}, {500.3, 7.0}}));
    }
    return scans;
}

} // namespace

TEST_F(ZelToolTest, WritesTheChromatogramsOfTheLibraryDigitForDigit)
{
    writeRun(text("run.mzML"), smallRun());
    write(text("windows.tsv"),
          "name\tmz\tppm\trt_start\trt_end\tgroup\n"
          "a\t500.001\t10\t0.35\t2.05\t\n"
          "b\t400\t5\t\t\tboth\n"
          "c\t500.3\t5\t1\t\tboth\n");
    const Outcome outcome = call("xic run.mzML --windows windows.tsv -o out.tsv --plot out.html");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();

    const QList<QByteArray> lines = read(text("out.tsv")).trimmed().split('\n');
    ASSERT_EQ(lines.size(), 1 + 17 + 40)
        << "a header, 17 scans in 0.35 to 2.05 min, all 40 for the group";
    EXPECT_EQ(lines[0], "name\trt_min\tintensity");
    for (int i = 0; i < 17; ++i) {
        const QList<QByteArray> cells = lines[1 + i].split('\t');
        EXPECT_EQ(cells[0], "a");
        EXPECT_NEAR(cells[1].toDouble(), 0.1 * (i + 4), 1e-12);
        EXPECT_EQ(cells[2].toDouble(), 10.0 * (i + 4));
    }
    for (int i = 0; i < 40; ++i) {
        const QList<QByteArray> cells = lines[18 + i].split('\t');
        EXPECT_EQ(cells[0], "both");
        EXPECT_EQ(cells[2].toDouble(), 1.0 + i + (i >= 10 ? 7.0 : 0.0)) << "scan " << i;
    }
    EXPECT_TRUE(read(text("out.html")).contains("<svg"));
}

TEST_F(ZelToolTest, SimulatesRunsThatItCanRead)
{
    ASSERT_EQ(call("simulate -o s.mzML --minutes 4 --peptides 5 --drift 0.1 --samples 2").exitCode,
              0);
    EXPECT_EQ(files(), (QStringList{text("s.truth.tsv"), text("s_1.mzML"), text("s_2.mzML")}));
    EXPECT_EQ(call("info s_1.mzML s_2.mzML").output.count(text("MS1: 241 spectra")), 2);

    // The defaults of drift, peak width and mobility width would not do.
    const Outcome simulated =
        call("simulate -o m.mzML --minutes 1 --mobility-scans 100 --peptides 5");
    ASSERT_EQ(simulated.exitCode, 0) << simulated.errors.toStdString();
    EXPECT_TRUE(simulated.errors.contains(text("--drift becomes 0.1")));
    const Outcome info = call("info m.mzML");
    EXPECT_TRUE(info.output.contains(text("61 spectra"))) << info.output.toStdString();
    EXPECT_TRUE(info.output.contains(text("mobility 0.6"))) << info.output.toStdString();
}

TEST_F(ZelToolTest, ReadsTheOptionsThatItHasWritten)
{
    writeRun(text("run.mzML"), smallRun());
    const QString line = text("xic run.mzML --mz 400 --mz 500.001 --rt 0.35-2.05");
    ASSERT_EQ(call(line + text(" --write-config xic.toml")).exitCode, 0);
    const Outcome outcome = call("--config xic.toml xic");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.output.count(QLatin1Char('\n')), 1 + 2 * 17);
    EXPECT_EQ(outcome.output, call(line).output);
    EXPECT_EQ(call("--config xic.toml xic --rt 0-0.05").output.count(QLatin1Char('\n')), 1 + 2);

    write(text("xic.toml"), "[xic]\nmzz=5\n");
    const Outcome refused = call("--config xic.toml xic run.mzML --mz 400");
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(refused.errors.contains(text("unknown setting in --config: xic.mzz")))
        << refused.errors.toStdString();
}

TEST_F(ZelToolTest, EndsABadCallWithOneClearLineAndNoFile)
{
    constexpr auto windows = "xic run.mzML --windows w.tsv -o out.tsv";
    constexpr auto badRun = "xic bad --mz 500 -o out.tsv";
    writeRun(text("run.mzML"), smallRun(3));
    for (const BadCall& bad : {
             BadCall{"", "a command is missing", 2},
             {"foo", "there is no command \"foo\"; the commands are digest,", 2},
             {"xic run.mzML --mz abc", "--mz: expected a number above 0, but found", 2},
             {"simulate -o s.mzML --drift 5", "--drift must be at most 3, but is 5", 2},
             {"xic run.mzML --mass 5", "--mass needs --isotopes", 2},
             {"xic run.mzML", "one of --windows, --mz and --isotopes", 2},
             {"xic run.mzML --mz 500 --rt 3-1", "ends before it starts", 2},
             {"xic run.mzML --mz 500 --rt 3", "A-B", 2},
             {"xic run.mzML --mz=-5", "--mz", 2},
             {"xic run.mzML --mz 500 --ppm nan", "--ppm: expected a number", 2},
             {"xic run.mzML --mz 500 --ms-level 2 -o out.tsv", "holds no scans of MS level 2"},
             {"xic run.mzML --mz 500 -o none/out.tsv", "none/out.tsv"},
             {badRun, "bad"},
             {badRun, "bad", 1, "bad", "this is no mzML file\n"},
             {windows, "w.tsv"},
             {windows, "w.tsv is empty", 1, "w.tsv", ""},
             {windows, "columns name", 1, "w.tsv", "name\tmass\na\t5\n"},
             {windows, "w.tsv, line 2", 1, "w.tsv", "name\tmz\tppm\nb\tmany\t5\n"},
             {windows, "w.tsv, line 2", 1, "w.tsv", "name\tmz\tppm\na\tinf\t5\n"},
             {windows, "w.tsv, line 3", 1, "w.tsv", "name\tmz\tppm\n\nb\t500\n"},
             {windows, "line 2", 1, "w.tsv", "name\tmz_start\tmz_end\na\t500\t499\n"},
             {windows, "line 3", 1, "w.tsv", "name\tmz\tppm\na\t500\t5\na\t501\t5\n"},
         }) {
        expectRefused(bad);
    }
}

} // namespace zel
