// Runs `zel` on odd inputs and outputs: pipes, links, devices, full disks, one file in two places.

#include "tests/support/Runs.h"
#include "tests/tool/ZelTool.h"

#include <cmath>

namespace zel {

using msreader::InMemoryScan;
using test::Outcome;
using test::text;
using test::zel;

namespace {

class FilesToolTest : public test::ZelTool
{
protected:
    FilesToolTest()
    {
        QList<InMemoryScan> scans;
        for (int i = 0; i < 5; ++i) {
            scans.append(test::scanOf(i + 1, 0.1 * i, {{400.0, 1.0 + i}, {500.0, 10.0 * i}}));
        }
        writeRun(text("run.mzML"), scans);
        write(text("w.tsv"), "name\tmz\tppm\tgroup\na\t400\t10\tg\nb\t500\t10\tg\n");
    }

    /// Runs a line of shell in the folder, in which `zel` is the tool.
    Outcome shell(const QString& line) const
    {
        return test::run(
            text("/bin/sh"),
            {text("-c"),
             text("cd '%1'; zel() { " ZEL_TOOL_PATH " \"$@\"; }; ").arg(m_folder.path()) + line});
    }
};

} // namespace

TEST_F(FilesToolTest, ReadsThroughAPipeWhatItReadsFromAFile)
{
    const QString expected = shell(text("zel xic run.mzML --windows w.tsv")).output;
    EXPECT_EQ(expected.count(text("\ng\t")), 5) << expected.toStdString();
    for (const char* const line :
         {"cat w.tsv | zel xic run.mzML --windows /dev/stdin",
          "gzip -c w.tsv | zel xic run.mzML --windows /dev/stdin",
          "cat run.mzML | zel xic /dev/stdin --windows w.tsv",
          "gzip -c run.mzML | zel xic /dev/stdin --windows w.tsv",
          "mkfifo f; cat run.mzML > f & zel xic f --turbo --cache kept --windows w.tsv"}) {
        SCOPED_TRACE(line);
        const Outcome outcome = shell(text(line));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        EXPECT_EQ(outcome.output, expected);
    }
    EXPECT_FALSE(QDir(path(text("kept"))).exists()) << "an index that nobody would find again";
}

TEST_F(FilesToolTest, RefusesWhatItCannotReadWithoutReadingItAll)
{
    const char* const lines[] = {
        "zel xic run.mzML --windows /dev/zero",
        "head -c 300000000 /dev/zero | gzip -1 > z.gz; zel targeted run.mzML --psms z.gz",
        "zel info /dev/zero",
        "zel simulate -o out.mzML --fasta /dev/zero",
    };
    for (const char* const line : lines) {
        SCOPED_TRACE(line);
        const Outcome outcome = shell(text(line));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.errors.startsWith(text("zel: "))) << outcome.errors.toStdString();
    }
}

TEST_F(FilesToolTest, OverwritesNoInputAndNoOtherOutput)
{
    shell(text("ln w.tsv hard; ln -s run.mzML soft; ln -s new.tsv dangling; mkdir -p d/run.ftrs "
               "p.alignment.html; cp run.mzML other.mzML;"
               "printf 'sequence\\tcharge\\tmz\\trt\\nK\\t1\\t400\\t0.2\\n' > psms.tsv"));
    const QByteArray run = read(text("run.mzML"));
    const QByteArray windows = read(text("w.tsv"));
    const QStringList before = files();
    const struct
    {
        const char* line;
        const char* message;
    } calls[] = {
        {"zel xic run.mzML --mz 400 -o ./run.mzML", "overwrite the input run.mzML"},
        {"zel xic run.mzML --mz 400 --plot soft -o t.tsv", "overwrite the input run.mzML"},
        {"zel xic run.mzML --windows w.tsv -o hard", "overwrite the input w.tsv"},
        {"zel xic run.mzML --windows w.tsv >> w.tsv", "overwrite the input w.tsv"},
        {"zel xic run.mzML --mz 400 -o same --plot \"$PWD/d/../same\"", "Two outputs"},
        {"zel xic run.mzML --mz 400 -o dangling --plot new.tsv", "Two outputs"},
        {"zel xic run.mzML --mz 400 --plot -", "Two outputs"},
        {"zel xic run.mzML --mz 400 --write-config soft", "overwrite the input run.mzML"},
        {"zel xim run.mzML --frame 1 --mz 1-2 -o soft", "overwrite the input"},
        {"zel targeted run.mzML --psms w.tsv -o w.tsv", "overwrite the input w.tsv"},
        {"zel targeted run.mzML other.mzML --psms psms.tsv -o p.tsv --diagrams p.html",
         "p.alignment.html"},
        {"zel features run.mzML -o d", "d/run.ftrs: "},
        {"zel simulate -o s.mzML --truth s.mzML", "Two outputs"},
        {"zel simulate -o s.mzML --fasta run.mzML --truth soft", "overwrite the input"},
    };
    for (const auto& call : calls) {
        SCOPED_TRACE(call.line);
        const Outcome outcome = shell(text(call.line));
        EXPECT_EQ(outcome.exitCode, 1);
        EXPECT_TRUE(outcome.errors.contains(text(call.message))) << outcome.errors.toStdString();
        EXPECT_EQ(files(), before);
    }
    EXPECT_EQ(read(text("run.mzML")), run);
    EXPECT_EQ(read(text("w.tsv")), windows);
    EXPECT_EQ(shell(text("zel xic run.mzML --mz 400 -o /dev/null --plot /dev/null")).exitCode, 0)
        << "a device may be named twice";
}

TEST_F(FilesToolTest, WritesNoHalfPageOfDiagrams)
{
    write(text("psms.tsv"), "sequence\tcharge\tmz\trt\nK\t1\t400\t0.2\n");
    write(text("d.html.part"), "of somebody else");
    const QStringList before = files();
    // A block is 512 or 1024 bytes; the page has more, the table has less.
    const Outcome outcome =
        shell(text("trap '' XFSZ; ulimit -f 1;"
                   "zel targeted run.mzML --psms psms.tsv -o /dev/null --diagrams d.html"));
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_TRUE(outcome.errors.contains(text("zel: Could not write d.html")))
        << outcome.errors.toStdString();
    EXPECT_EQ(files(), before);
}

TEST_F(FilesToolTest, ShowsNamesAsTheyAre)
{
    shell(text("cp run.mzML '%2.mzML'"));
    write(text("psms.tsv"), "run\tsequence\tcharge\tmz\trt\n%2\tK\t1\t400\t0.2\n");
    const Outcome targeted = shell(text("zel targeted '%2.mzML' --psms psms.tsv"));
    EXPECT_TRUE(targeted.errors.contains(text("%2: features for 1 of 1 ions")))
        << targeted.errors.toStdString();

    const QString flask = QString::fromUtf8("\xF0\x9F\xA7\xAA"); // beyond the basic plane
    const QString name = flask.repeated(60);
    EXPECT_TRUE(shell(text("zel info %1").arg(name)).errors.contains(name));

    shell(text("cp run.mzML \"$(printf 'a\\tb.mzML')\""));
    const Outcome info = shell(text("zel info --tsv a*b.mzML"));
    EXPECT_TRUE(info.output.contains(text("\na b.mzML\t1\t5\t10\t"))) << info.output.toStdString();

    write(text("long.tsv"), "name\tmz\tppm\na\t" + QByteArray(5000, 'x') + "\t10\n");
    const Outcome cut = shell(text("zel xic run.mzML --windows long.tsv"));
    EXPECT_TRUE(cut.errors.startsWith(text("zel: long.tsv, line 2: ")));
    EXPECT_LT(cut.errors.size(), 600);
}

TEST_F(FilesToolTest, DrawsScansThatAreNearlyOfOneTime)
{
    const double minutes = 1.0;
    writeRun(text("near.mzML"),
             {test::scanOf(1, minutes, {{400.0, 1.0}}),
              test::scanOf(2, std::nextafter(minutes, 2.0), {{400.0, 2.0}})});
    const Outcome outcome =
        shell(text("ulimit -t 20; zel xic near.mzML --mz 400 -o /dev/null --plot p.html"));
    EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_TRUE(read(text("p.html")).contains("<polyline"));
}

TEST_F(FilesToolTest, TellsOfAFullDisk)
{
    for (const char* const line : {"zel xic run.mzML --mz 400 > /dev/full",
                                   "zel info run.mzML > /dev/full",
                                   "zel --help > /dev/full",
                                   "zel xic run.mzML --mz 400 -o /dev/full"}) {
        SCOPED_TRACE(line);
        const Outcome outcome = shell(text(line));
        EXPECT_EQ(outcome.exitCode, 1);
        const QString name =
            text(line).contains(text(" -o ")) ? text("/dev/full") : text("standard output");
        EXPECT_TRUE(outcome.errors.endsWith(
            text("zel: Could not write %1: No space left on device\n").arg(name)))
            << outcome.errors.toStdString();
    }
}

} // namespace zel
