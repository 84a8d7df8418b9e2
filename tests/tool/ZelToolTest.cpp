// Runs the tool as a user would: output, exit codes, error lines, and files that must not be left
// behind.

#include "tests/tool/ZelTool.h"

#include "tests/support/Runs.h"

#include <csignal>
#include <ostream>

namespace zel {

using test::Outcome;
using test::text;
using test::zel;
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
    const QString run = writeRun(text("run.mzML"), smallRun());
    const QString windows = write(text("windows.tsv"),
                                  "name\tmz\tppm\trt_start\trt_end\tgroup\n"
                                  "a\t500.001\t10\t0.35\t2.05\t\n"
                                  "b\t400\t5\t\t\tboth\n"
                                  "c\t500.3\t5\t1\t\tboth\n");
    const Outcome outcome = zel({text("xic"),
                                 run,
                                 text("--windows"),
                                 windows,
                                 text("-o"),
                                 path(text("out.tsv")),
                                 text("--plot"),
                                 path(text("out.html"))});
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
    const QString run = writeRun(text("run.mzML"), smallRun(3));
    const Outcome outcome =
        zel({text("xic"), run, text("--mz"), text("400"), text("-o"), text("/dev/stdout")});
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.output.count(QLatin1Char('\n')), 4);
}

TEST_F(ZelToolTest, TellsWhatARunHolds)
{
    const QString run = writeRun(text("run.mzML"), smallRun());
    const Outcome outcome = zel({text("info"), text("--tsv"), run});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    const QStringList cells =
        outcome.output.trimmed().split(QLatin1Char('\n')).value(1).split(QLatin1Char('\t'));
    EXPECT_EQ(cells.mid(1, 3), (QStringList{text("1"), text("40"), text("120")}));
    EXPECT_NEAR(cells.value(5).toDouble(), 3.9, 1e-9);
    EXPECT_EQ(cells.value(8), text("centroid"));
}

TEST_F(ZelToolTest, SimulatesRunsThatItCanRead)
{
    const Outcome simulated = zel({text("simulate"),
                                   text("-o"),
                                   path(text("s.mzML")),
                                   text("--minutes"),
                                   text("4"),
                                   text("--peptides"),
                                   text("5"),
                                   text("--samples"),
                                   text("2"),
                                   text("--drift"),
                                   text("0.1")});
    ASSERT_EQ(simulated.exitCode, 0) << simulated.errors.toStdString();
    EXPECT_EQ(files(), (QStringList{text("s.truth.tsv"), text("s_1.mzML"), text("s_2.mzML")}));
    const Outcome info = zel({text("info"), path(text("s_1.mzML")), path(text("s_2.mzML"))});
    EXPECT_EQ(info.exitCode, 0) << info.errors.toStdString();
    EXPECT_EQ(info.output.count(text("MS1: 241 spectra")), 2) << info.output.toStdString();
}

TEST_F(ZelToolTest, SimulatesShortMobilityRunsThatItCanRead)
{
    // The defaults of drift, peak width and mobility width would not do.
    const QString run = path(text("m.mzML"));
    const QStringList call = {text("simulate"), text("-o"), run, text("--minutes"), text("1")};
    const QStringList small = {
        text("--mobility-scans"), text("100"), text("--peptides"), text("5")};
    const Outcome simulated = zel(call + small);
    ASSERT_EQ(simulated.exitCode, 0) << simulated.errors.toStdString();
    EXPECT_TRUE(simulated.errors.contains(text("--drift becomes 0.1")));
    const Outcome info = zel({text("info"), run});
    EXPECT_TRUE(info.output.contains(text("61 spectra"))) << info.output.toStdString();
    EXPECT_TRUE(info.output.contains(text("mobility 0.6"))) << info.output.toStdString();
}

TEST_F(ZelToolTest, ReadsTheOptionsThatItHasWritten)
{
    const QString run = writeRun(text("run.mzML"), smallRun());
    const QString file = path(text("xic.toml"));
    const QStringList call = {text("xic"),
                              run,
                              text("--mz"),
                              text("400"),
                              text("--mz"),
                              text("500.001"),
                              text("--rt"),
                              text("0.35-2.05")};
    const QStringList read = {text("--config"), file, text("xic")};
    ASSERT_EQ(zel(call + QStringList{text("--write-config"), file}).exitCode, 0);
    const Outcome outcome = zel(read);
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(outcome.output.count(QLatin1Char('\n')), 1 + 2 * 17);
    EXPECT_EQ(outcome.output, zel(call).output);
    EXPECT_EQ(zel(read + QStringList{text("--rt"), text("0-0.05")}).output.count(QLatin1Char('\n')),
              1 + 2);

    write(text("xic.toml"), "[xic]\nmzz=5\n");
    const Outcome refused = zel(read + QStringList{run, text("--mz"), text("400")});
    EXPECT_EQ(refused.exitCode, 2);
    EXPECT_TRUE(refused.errors.contains(text("unknown setting in --config: xic.mzz")))
        << refused.errors.toStdString();
}

namespace {

struct BadCall
{
    const char* name;
    QStringList (*arguments)(const QString& run, const QString& folder);
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

QStringList xic(const QString& run, const QStringList& more)
{
    return QStringList{text("xic"), run} + more;
}

/// `zel xic RUN --windows FOLDER/w.tsv -o FOLDER/out.tsv`
QStringList withWindows(const QString& run, const QString& folder)
{
    return xic(run,
               {text("--windows"), folder + text("/w.tsv"), text("-o"), folder + text("/out.tsv")});
}

/// `zel xic FOLDER/bad -o FOLDER/out.tsv --mz 500`
QStringList onBadRun(const QString& /*run*/, const QString& folder)
{
    return xic(folder + text("/bad"),
               {text("--mz"), text("500"), text("-o"), folder + text("/out.tsv")});
}

const BadCall kBadCalls[] = {
    {"NoCommand",
     [](const QString&, const QString&) { return QStringList(); },
     2,
     "a command is missing"},
    {"UnknownCommand",
     [](const QString&, const QString&) { return QStringList{text("foo")}; },
     2,
     "there is no command \"foo\"; the commands are features,"},
    {"WordForAnOption",
     [](const QString& run, const QString&) {
         return xic(run, {text("--mz"), text("abc")});
     },
     2,
     "--mz: expected a number above 0, but found \"abc\""},
    {"ContradictingOptions",
     [](const QString&, const QString& folder) {
         return QStringList{
             text("simulate"), text("-o"), folder + text("/s.mzML"), text("--drift"), text("5")};
     },
     2,
     "--drift must be at most 3, but is 5"},
    {"UnknownOption",
     [](const QString& run, const QString&) {
         return xic(run, {text("--mass"), text("5")});
     },
     2,
     "--mass needs --isotopes"},
    {"NoWindow",
     [](const QString& run, const QString&) { return xic(run, {}); },
     2,
     "one of --windows, --mz and --isotopes"},
    {"ReversedTime",
     [](const QString& run, const QString&) {
         return xic(run, {text("--mz"), text("500"), text("--rt"), text("3-1")});
     },
     2,
     "ends before it starts"},
    {"TimeWithoutEnd",
     [](const QString& run, const QString&) {
         return xic(run, {text("--mz"), text("500"), text("--rt"), text("3")});
     },
     2,
     "A-B"},
    {"NegativeMz",
     [](const QString& run, const QString&) { return xic(run, {text("--mz=-5")}); },
     2,
     "--mz"},
    {"NotANumber",
     [](const QString& run, const QString&) {
         return xic(run, {text("--mz"), text("500"), text("--ppm"), text("nan")});
     },
     2,
     "--ppm: expected a number at least 0, but found \"nan\""},
    {"MissingRun", onBadRun, 1, "bad"},
    {"EmptyRun", onBadRun, 1, "bad", "bad", ""},
    {"TextInsteadOfARun", onBadRun, 1, "bad", "bad", "this is no mzML file\n"},
    {"OtherXml", onBadRun, 1, "bad", "bad", "<?xml version=\"1.0\"?><html></html>"},
    {"GarbledGzip", onBadRun, 1, "bad", "bad", "\x1f\x8b\x08 and then nothing of the kind"},
    {"NoScansOfTheLevel",
     [](const QString& run, const QString& folder) {
         return xic(run,
                    {text("--mz"),
                     text("500"),
                     text("--ms-level"),
                     text("2"),
                     text("-o"),
                     folder + text("/out.tsv")});
     },
     1,
     "holds no scans of MS level 2"},
    {"UnwritableOutput",
     [](const QString& run, const QString& folder) {
         return xic(run, {text("--mz"), text("500"), text("-o"), folder + text("/none/out.tsv")});
     },
     1,
     "none/out.tsv"},
    {"MissingWindows", withWindows, 1, "w.tsv"},
    {"EmptyWindows", withWindows, 1, "w.tsv is empty", "w.tsv", ""},
    {"WindowsWithoutColumns", withWindows, 1, "columns name", "w.tsv", "name\tmass\na\t5\n"},
    {"WordForANumber",
     withWindows,
     1,
     "w.tsv, line 3",
     "w.tsv",
     "name\tmz\tppm\na\t500\t5\nb\tmany\t5\n"},
    {"InfiniteNumber", withWindows, 1, "w.tsv, line 2", "w.tsv", "name\tmz\tppm\na\tinf\t5\n"},
    {"RowTooShort",
     withWindows,
     1,
     "w.tsv, line 4",
     "w.tsv",
     "name\tmz\tppm\na\t500\t5\n\nb\t500\n"},
    {"MzEndsReversed",
     withWindows,
     1,
     "w.tsv, line 2",
     "w.tsv",
     "name\tmz_start\tmz_end\na\t500\t499\n"},
    {"TimesReversed",
     withWindows,
     1,
     "w.tsv, line 2",
     "w.tsv",
     "name\tmz\tppm\trt_start\trt_end\na\t500\t5\t2\t1\n"},
    {"NameTwice",
     withWindows,
     1,
     "w.tsv, line 3",
     "w.tsv",
     "name\tmz\tppm\na\t500\t5\na\t501\t5\n"},
};

} // namespace

TEST_P(ZelToolBadCallTest, EndsWithOneClearLineAndNoFile)
{
    const BadCall& call = GetParam();
    const QString run = writeRun(text("run.mzML"), smallRun(3));
    if (call.file != nullptr) {
        write(text(call.file), call.content);
    }
    const QStringList before = files();
    const Outcome outcome = zel(call.arguments(run, m_folder.path()));
    EXPECT_EQ(outcome.exitCode, call.exitCode) << outcome.errors.toStdString();
    EXPECT_TRUE(outcome.errors.contains(text(call.errorPart))) << outcome.errors.toStdString();
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
