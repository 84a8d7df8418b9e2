// How commands end before their time, what they say of nothing, and one bad run among others.

#include "tests/support/Runs.h"
#include "tests/tool/ZelTool.h"

#include <QDirIterator>
#include <QElapsedTimer>

#include <sys/stat.h>

#include <csignal>

namespace zel::test {

namespace {

using msreader::InMemoryScan;

class WatchToolTest : public ZelTool
{
protected:
    WatchToolTest()
    {
        QList<InMemoryScan> scans;
        for (int i = 0; i < 200; ++i) {
            scans.append(scanOf(i + 1, 0.05 * i, {{400.0, 1.0 + i}, {500.5, 100.0}}));
        }
        writeRun(text("run.mzML"), scans);
        write(text("bad.mzML"), "no run");
        write(text("empty.tsv"), "name\tmz\tppm\n");
        write(text("none.tsv"), "sequence\tcharge\trt\n");
        write(text("psms.tsv"), "sequence\tcharge\tmz\trt\nPEPTIDEK\t2\t500.5\t5\n");
    }

    /// All that is below the folder, hidden entries too.
    QStringList everything() const
    {
        QStringList names;
        QDirIterator entries(m_folder.path(),
                             QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext()) {
            names.append(entries.next());
        }
        names.sort();
        return names;
    }
};

} // namespace

// Nobody writes into the pipe, so each command waits for ever in a call that nothing interrupts.
TEST_F(WatchToolTest, EndsOnSignalsAlsoInCallsThatCannotBeStopped)
{
    ASSERT_EQ(mkfifo(path(text("pipe.mzML")).toLocal8Bit().constData(), 0600), 0);
    ASSERT_TRUE(QDir(m_folder.path()).mkdir(text("out.dir")));
    const QStringList before = everything();
    for (const char* line : {"features pipe.mzML -o out.dir --tsv",
                             "xic pipe.mzML --mz 500 -o out.tsv --plot out.html",
                             "targeted pipe.mzML --psms psms.tsv -o out.tsv --diagrams out.html",
                             "info run.mzML pipe.mzML"}) {
        for (const int signal : {SIGINT, SIGTERM}) {
            QProcess process;
            process.setWorkingDirectory(m_folder.path());
            process.start(text(ZEL_TOOL_PATH), text(line).split(QLatin1Char(' ')));
            ASSERT_TRUE(process.waitForStarted());
            EXPECT_FALSE(process.waitForFinished(200)) << line;
            QElapsedTimer timer;
            timer.start();
            kill(static_cast<pid_t>(process.processId()), signal);
            ASSERT_TRUE(process.waitForFinished(10'000)) << line;
            EXPECT_LT(timer.elapsed(), 2000) << "half a second, and what a busy machine adds";
            EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
            EXPECT_EQ(process.exitCode(), 128 + signal) << line;
            EXPECT_TRUE(process.readAllStandardError().endsWith("zel: canceled\n")) << line;
            EXPECT_EQ(everything(), before) << line;
        }
    }
}

TEST_F(WatchToolTest, LeavesIgnoredSignalsIgnored)
{
    const QString line = text("mkfifo pipe; " ZEL_TOOL_PATH " info pipe & sleep 0.2; kill -INT $!;"
                              "sleep 0.5; kill -TERM $!; wait $!"); // "&" ignores SIGINT
    EXPECT_EQ(run(text("/bin/sh"), {text("-c"), line}, m_folder.path()).exitCode, 128 + SIGTERM);
}

TEST_F(WatchToolTest, SaysInALineWhereAnAnswerIsEmpty)
{
    struct Case
    {
        const char* call;
        int rows;
        const char* said;
    };
    for (const Case& c :
         {Case{"xic run.mzML --mz 500.5 --rt 20-30", 0, "no scan lies in the times of mz_500.5"},
          {"xic run.mzML --turbo --mz 500.5 --rt 20-30", 0, "no scan lies in the times"},
          {"xic run.mzML --turbo --mz 500.5 --rt 5.01-5.02", 0, "no scan lies in the times"},
          {"xic run.mzML --isotopes sum --mass 998 --charge 2 --rt 20-30", 0, "no scan lies in"},
          {"xic run.mzML --mz 500.5 --mz 700", 400, "no signal in 1 of 2 windows, such as mz_700"},
          {"xic run.mzML --windows empty.tsv", 0, "the table holds no windows"},
          {"targeted run.mzML --psms none.tsv", 0, "0 matches are used"},
          {"features run.mzML -o out.dir --min-hill-length-d1 500", 0, "no hills were found"}}) {
        const Outcome outcome = call(c.call);
        EXPECT_EQ(outcome.exitCode, 0) << c.call << outcome.errors.toStdString();
        EXPECT_EQ(outcome.output.count(QLatin1Char('\n')), c.rows + 1) << c.call;
        EXPECT_TRUE(outcome.errors.contains(text(c.said))) << c.call << '\n'
                                                           << outcome.errors.toStdString();
    }
}

TEST_F(WatchToolTest, DoesTheOtherRunsOfABatchAndNamesTheBadOnes)
{
    QByteArray damaged = read(text("run.mzML"));
    damaged.replace(damaged.indexOf("<binary>", damaged.size() / 2) + 8, 8, "        ");
    write(text("unreadable.mzML"), damaged);
    const Outcome unreadable = call("features unreadable.mzML run.mzML -o out.dir");
    EXPECT_EQ(unreadable.exitCode, 1);
    EXPECT_TRUE(unreadable.errors.contains(text("zel: unreadable.mzML: spectrum")))
        << unreadable.errors.toStdString();

    for (const char* line :
         {"info bad.mzML run.mzML",
          "features bad.mzML run.mzML -o out.dir",
          "targeted bad.mzML run.mzML --psms psms.tsv",
          "targeted bad.mzML run.mzML --psms psms.tsv --mode adaptive --diagrams d.html"}) {
        const Outcome outcome = call(line);
        EXPECT_EQ(outcome.exitCode, 1) << line;
        EXPECT_TRUE(outcome.output.contains(text("run"))) << line;
        EXPECT_TRUE(outcome.errors.contains(text("this is no mzML"))) << line;
        EXPECT_TRUE(outcome.errors.endsWith(text("zel: 1 of 2 runs failed: bad.mzML\n")))
            << line << '\n'
            << outcome.errors.toStdString();
    }
}

} // namespace zel::test
