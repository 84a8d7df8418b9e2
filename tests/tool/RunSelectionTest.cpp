#include "tests/support/Spectra.h"
#include "tests/tool/ZelTool.h"

#include <functional>

namespace zel::test {

using msreader::InMemoryScan;
using msreader::Polarity;

namespace {

class RunSelectionTest : public ZelTool
{
protected:
    /// Ten MS1 scans of two kinds in turn, with a peak of 10 counts and one of 1000.
    void writeMixedRun(const std::function<void(InMemoryScan&, bool isSecond)>& tell) const
    {
        QList<InMemoryScan> scans;
        for (int i = 1; i <= 10; ++i) {
            const bool isSecond = i % 2 == 0;
            scans.append(scanOf(i, i, {{500.0, isSecond ? 1000.0 : 10.0}}));
            tell(scans.last(), isSecond);
        }
        writeRun(text("run.mzML"), scans);
    }

    /// The intensities of the chromatogram, each once, as one text.
    std::string intensities(const char* more = "") const
    {
        QStringList rows = call(text("xic run.mzML --mz 500 ") + text(more))
                               .output.split(u'\n', Qt::SkipEmptyParts)
                               .mid(1);
        for (QString& row : rows) {
            row = row.section(u'\t', 2);
        }
        rows.removeDuplicates();
        return rows.join(u' ').toStdString();
    }

    void expectInfo(const char* part) const
    {
        EXPECT_TRUE(call("info run.mzML").output.contains(text(part))) << part;
    }
};

} // namespace

TEST_F(RunSelectionTest, NeverMixesPolarities)
{
    writeMixedRun([](InMemoryScan& scan, bool isSecond) {
        scan.info.polarity = isSecond ? Polarity::Negative : Polarity::Positive;
    });
    write(text("psms.tsv"), "sequence\tcharge\trt\nPEPTIDEK\t2\t5\n");
    expectRefused({"xic run.mzML --mz 500", "--polarity"});
    expectRefused({"features run.mzML -o out", "--polarity"});
    expectRefused({"targeted run.mzML --psms psms.tsv", "--polarity"});
    EXPECT_EQ(intensities("--polarity positive"), "10");
    EXPECT_EQ(intensities("--polarity negative"), "1000");
    // One folder for the indices of both.
    EXPECT_EQ(intensities("--turbo --cache . --polarity positive"), "10");
    EXPECT_EQ(intensities("--turbo --cache . --polarity negative"), "1000");
    EXPECT_EQ(call("targeted run.mzML --psms psms.tsv --polarity positive").exitCode, 0);
    expectInfo("positive and negative");
}

TEST_F(RunSelectionTest, NeverMixesCompensationVoltages)
{
    writeMixedRun([](InMemoryScan& scan, bool isSecond) {
        const double jitter = scan.info.retentionTimeMinutes > 5.0 ? 0.004 : 0.0;
        scan.info.compensationVoltage = (isSecond ? -60.0 : -45.0) + jitter;
    });
    expectRefused({"xic run.mzML --mz 500", "-60, -45 V"});
    expectRefused({"xic run.mzML --mz 500 --faims -50", "faims-50"});
    EXPECT_EQ(intensities("--faims -45"), "10");
    expectInfo("FAIMS -60, -45 V");
}

TEST_F(RunSelectionTest, NeverMixesIsolationWindows)
{
    // Windows that overlap from 408 to 412.
    writeMixedRun([](InMemoryScan& scan, bool isSecond) {
        if (scan.info.retentionTimeMinutes > 1.0) {
            scan.info.msLevel = 2;
            const double jitter = scan.info.retentionTimeMinutes > 5.0 ? 1e-5 : 0.0;
            scan.precursor.isolationMz = (isSecond ? 415.0 : 405.0) + jitter;
            scan.precursor.isolationLowerOffset = scan.precursor.isolationUpperOffset = 7.0;
        }
    });
    expectRefused(
        {"xic run.mzML --mz 500 --ms-level 2", "2 isolation windows, from m/z 405 to 415"});
    expectRefused({"xic run.mzML --mz 500 --ms-level 2 --isolation 423",
                   "no isolation window contains m/z 423"});
    EXPECT_EQ(intensities("--ms-level 2 --isolation 409"), "10");
    EXPECT_EQ(intensities("--ms-level 2 --isolation 411"), "1000");
    EXPECT_EQ(call("xic run.mzML --mz 500 --ms-level 2 --isolation 411").output.count(u'\n'), 6);
    EXPECT_EQ(intensities(), "10") << "MS1 is of one kind";
}

} // namespace zel::test
