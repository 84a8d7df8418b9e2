// Runs the tool as a user would: output, exit codes, error lines, and files that must not be left
// behind.

#include "tests/tool/ZelTool.h"

#include "tests/support/Runs.h"

#include <csignal>
#include <ostream>

namespace zel {

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

TEST_F(ZelToolTest, WritesIntoWhatIsNoFileInsteadOfReplacingIt)
{
    writeRun(text("run.mzML"), smallRun(3));
    const Outcome outcome = call("xic run.mzML --mz 400 -o /dev/stdout");
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.output.count(QLatin1Char('\n')), 4);
}

TEST_F(ZelToolTest, TellsWhatARunHolds)
{
    writeRun(text("run.mzML"), smallRun());
    const Outcome outcome = call("info --tsv run.mzML");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    const QStringList cells =
        outcome.output.trimmed().split(QLatin1Char('\n')).value(1).split(QLatin1Char('\t'));
    EXPECT_EQ(cells.mid(1, 3), (QStringList{text("1"), text("40"), text("120")}));
    EXPECT_NEAR(cells.value(5).toDouble(), 3.9, 1e-9);
    EXPECT_EQ(cells.value(8), text("centroid"));
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

namespace {

struct BadCall
{
    const char* name;
    const char* line;
    int exitCode;
    const char* errorPart; ///< must stand in the error line
    const char* file = nullptr;
    const char* content = nullptr;
};

void PrintTo(const BadCall& call, std::ostream* os)
{
    *os << call.name;
}

class ZelToolBadCallTest : public ZelToolTest, public ::testing::WithParamInterface<BadCall>
{};

constexpr auto kWindows = "xic run.mzML --windows w.tsv -o out.tsv";
constexpr auto kBadRun = "xic bad --mz 500 -o out.tsv";

const BadCall kBadCalls[] = {
    {"NoCommand", "", 2, "a command is missing"},
    {"UnknownCommand", "foo", 2, "there is no command \"foo\"; the commands are features,"},
    {"WordForAnOption", "xic run.mzML --mz abc", 2, "--mz: expected a number above 0, but found"},
    {"ContradictingOptions",
     "simulate -o s.mzML --drift 5",
     2,
     "--drift must be at most 3, but is 5"},
    {"UnknownOption", "xic run.mzML --mass 5", 2, "--mass needs --isotopes"},
    {"NoWindow", "xic run.mzML", 2, "one of --windows, --mz and --isotopes"},
    {"ReversedTime", "xic run.mzML --mz 500 --rt 3-1", 2, "ends before it starts"},
    {"TimeWithoutEnd", "xic run.mzML --mz 500 --rt 3", 2, "A-B"},
    {"NegativeMz", "xic run.mzML --mz=-5", 2, "--mz"},
    {"NotANumber", "xic run.mzML --mz 500 --ppm nan", 2, "--ppm: expected a number"},
    {"MissingRun", kBadRun, 1, "bad"},
    {"EmptyRun", kBadRun, 1, "bad", "bad", ""},
    {"TextInsteadOfARun", kBadRun, 1, "bad", "bad", "this is no mzML file\n"},
    {"OtherXml", kBadRun, 1, "bad", "bad", "<?xml version=\"1.0\"?><html></html>"},
    {"GarbledGzip", kBadRun, 1, "bad", "bad", "\x1f\x8b\x08 and then nothing of the kind"},
    {"NoScansOfTheLevel",
     "xic run.mzML --mz 500 --ms-level 2 -o out.tsv",
     1,
     "holds no scans of MS level 2"},
    {"UnwritableOutput", "xic run.mzML --mz 500 -o none/out.tsv", 1, "none/out.tsv"},
    {"MissingWindows", kWindows, 1, "w.tsv"},
    {"EmptyWindows", kWindows, 1, "w.tsv is empty", "w.tsv", ""},
    {"WindowsWithoutColumns", kWindows, 1, "columns name", "w.tsv", "name\tmass\na\t5\n"},
    {"WordForANumber", kWindows, 1, "w.tsv, line 2", "w.tsv", "name\tmz\tppm\nb\tmany\t5\n"},
    {"InfiniteNumber", kWindows, 1, "w.tsv, line 2", "w.tsv", "name\tmz\tppm\na\tinf\t5\n"},
    {"RowTooShort", kWindows, 1, "w.tsv, line 3", "w.tsv", "name\tmz\tppm\n\nb\t500\n"},
    {"MzEndsReversed",
     kWindows,
     1,
     "w.tsv, line 2",
     "w.tsv",
     "name\tmz_start\tmz_end\na\t500\t499\n"},
    {"NameTwice", kWindows, 1, "w.tsv, line 3", "w.tsv", "name\tmz\tppm\na\t500\t5\na\t501\t5\n"},
};

} // namespace

TEST_P(ZelToolBadCallTest, EndsWithOneClearLineAndNoFile)
{
    const BadCall& bad = GetParam();
    writeRun(text("run.mzML"), smallRun(3));
    if (bad.file != nullptr) {
        write(text(bad.file), bad.content);
    }
    const QStringList before = files();
    const Outcome outcome = call(bad.line);
    EXPECT_EQ(outcome.exitCode, bad.exitCode) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains(text(bad.errorPart))) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.errors.trimmed().count(QLatin1Char('\n')), 0) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.startsWith(text("zel: "))) << outcome.errors.toStdString();
    EXPECT_EQ(files(), before) << "files were left behind";
}

INSTANTIATE_TEST_SUITE_P(BadCalls,
                         ZelToolBadCallTest,
                         ::testing::ValuesIn(kBadCalls),
                         [](const auto& call) { return std::string(call.param.name); });

TEST_F(ZelToolTest, LeavesNothingBehindWhenInterrupted)
{
    const QString run = writeRun(text("run.mzML"), smallRun(6000));
    const QStringList before = files();
    QProcess process;
    process.start(text(ZEL_TOOL_PATH),
                  {text("xic"), run, text("--mz"), text("500"), text("-o"), path(text("out.tsv"))});
    ASSERT_TRUE(process.waitForStarted());
    // The first line of progress comes after the first of 24 chunks.
    process.setReadChannel(QProcess::StandardError);
    ASSERT_TRUE(process.waitForReadyRead());
    kill(static_cast<pid_t>(process.processId()), SIGINT);
    ASSERT_TRUE(process.waitForFinished());
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 130);
    EXPECT_EQ(files(), before);
}

} // namespace zel
