#include "tests/support/Spectra.h"
#include "tests/tool/ZelTool.h"

#include <QSet>

#include <functional>

namespace zel::test {

using msreader::InMemoryScan;
using msreader::Polarity;

namespace {

class RunSelectionTest : public ZelTool
{
protected:
    /// Ten MS1 scans of two kinds in turn, with a peak of 10 counts and one of 1000.
    QString writeMixedRun(const std::function<void(InMemoryScan&, bool isSecond)>& tell) const
    {
        QList<InMemoryScan> scans;
        for (int i = 1; i <= 10; ++i) {
            const bool isSecond = i % 2 == 0;
            scans.append(scanOf(i, i, {{500.0, isSecond ? 1000.0 : 10.0}}));
            tell(scans.last(), isSecond);
        }
        return writeRun(text("run.mzML"), scans);
    }

    static Outcome xic(const QString& run, const QStringList& more = {})
    {
        return zel(QStringList{text("xic"), run, text("--mz"), text("500")} + more);
    }

    /// The intensities of a chromatogram, each once.
    static QSet<QString> intensitiesOf(const Outcome& outcome)
    {
        QSet<QString> intensities;
        for (const QString& row : outcome.output.split(u'\n', Qt::SkipEmptyParts).mid(1)) {
            intensities.insert(row.section(u'\t', 2));
        }
        return intensities;
    }

    static void expectRefused(const QStringList& call, const char* option)
    {
        const Outcome outcome = zel(call);
        EXPECT_EQ(outcome.exitCode, 1) << call.join(u' ').toStdString();
        EXPECT_TRUE(outcome.errors.contains(text(option))) << outcome.errors.toStdString();
        EXPECT_TRUE(outcome.output.isEmpty());
    }
};

const QSet<QString> kFirst{text("10")};
const QSet<QString> kSecond{text("1000")};

} // namespace

TEST_F(RunSelectionTest, NeverMixesPolarities)
{
    const QString run = writeMixedRun([](InMemoryScan& scan, bool isSecond) {
        scan.info.polarity = isSecond ? Polarity::Negative : Polarity::Positive;
    });
    const QString psms = write(text("psms.tsv"), "sequence\tcharge\trt\nPEPTIDEK\t2\t5\n");
    expectRefused({text("xic"), run, text("--mz"), text("500")}, "--polarity");
    expectRefused({text("features"), run, text("-o"), path(text("out"))}, "--polarity");
    expectRefused({text("targeted"), run, text("--psms"), psms}, "--polarity");

    const QStringList positive{text("--polarity"), text("positive")};
    const QStringList negative{text("--polarity"), text("negative")};
    EXPECT_EQ(intensitiesOf(xic(run, positive)), kFirst);
    EXPECT_EQ(intensitiesOf(xic(run, negative)), kSecond);
    // One folder for the indices of both.
    const QStringList cached{text("--turbo"), text("--cache"), m_folder.path()};
    EXPECT_EQ(intensitiesOf(xic(run, cached + positive)), kFirst);
    EXPECT_EQ(intensitiesOf(xic(run, cached + negative)), kSecond);
    EXPECT_EQ(zel(QStringList{text("targeted"), run, text("--psms"), psms} + positive).exitCode, 0);
    EXPECT_TRUE(zel({text("info"), run}).output.contains(text("positive and negative")));
}

TEST_F(RunSelectionTest, NeverMixesCompensationVoltages)
{
    const QString run = writeMixedRun([](InMemoryScan& scan, bool isSecond) {
        scan.info.compensationVoltage = isSecond ? -60.0 : -45.0;
    });
    expectRefused({text("xic"), run, text("--mz"), text("500")}, "-60, -45 V");
    EXPECT_EQ(intensitiesOf(xic(run, {text("--faims"), text("-45")})), kFirst);
    expectRefused({text("xic"), run, text("--mz"), text("500"), text("--faims"), text("-50")},
                  "faims-50");
    EXPECT_TRUE(zel({text("info"), run}).output.contains(text("FAIMS -60, -45 V")));
}

TEST_F(RunSelectionTest, NeverMixesIsolationWindows)
{
    // Windows that overlap from 408 to 412.
    const QString run = writeMixedRun([](InMemoryScan& scan, bool isSecond) {
        if (scan.info.retentionTimeMinutes > 1.0) {
            scan.info.msLevel = 2;
            scan.precursor.isolationMz = isSecond ? 415.0 : 405.0;
            scan.precursor.isolationLowerOffset = scan.precursor.isolationUpperOffset = 7.0;
        }
    });
    const QStringList level{text("--ms-level"), text("2"), text("--isolation")};
    expectRefused({text("xic"), run, text("--mz"), text("500"), text("--ms-level"), text("2")},
                  "2 isolation windows, from m/z 405 to 415");
    EXPECT_EQ(intensitiesOf(xic(run, level + QStringList{text("409")})), kFirst);
    EXPECT_EQ(intensitiesOf(xic(run, level + QStringList{text("411")})), kSecond);
    expectRefused(QStringList{text("xic"), run, text("--mz"), text("500")} + level +
                      QStringList{text("423")},
                  "no isolation window contains m/z 423");
    EXPECT_EQ(xic(run).exitCode, 0) << "MS1 is of one kind";
}

} // namespace zel::test
