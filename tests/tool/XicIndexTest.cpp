// `zel xic --turbo`: what the index keeps, and when a kept one is used, replaced or left alone.

#include "tests/support/Spectra.h"
#include "tests/tool/ZelTool.h"

#include <QRegularExpression>

#include <unistd.h>

namespace zel {

using test::text;

namespace {

QList<msreader::InMemoryScan> runOfHeight(double height, const QList<QPointF>& more = {})
{
    QList<msreader::InMemoryScan> scans;
    for (int i = 0; i < 3; ++i) {
        scans.append(test::scanOf(i + 1, i, QList<QPointF>{{400.0, height}} + more));
    }
    return scans;
}

class XicIndexTest : public test::ZelTool
{
protected:
    /// What the tool says on its way to the chromatogram of m/z 400, whose points have this height.
    QString say(const char* run, double height, const QString& options = {}) const
    {
        const test::Outcome outcome =
            call(text("xic --mz 400 --turbo %1.mzML %2").arg(text(run), options));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
        const QStringList lines = outcome.output.split(QLatin1Char('\n'));
        EXPECT_EQ(lines.size(), 1 + 3 + 1);
        EXPECT_EQ(lines.value(3).section(QLatin1Char('\t'), 2).toDouble(), height);
        const QStringList said = outcome.errors.split(QLatin1Char('\n'));
        return said.filter(QRegularExpression(text("^zel: "))).join(QLatin1Char('\n'));
    }
    QString sayWithCache(const char* run, double height) const
    {
        return say(run, height, text("--cache ") + path(text("kept")));
    }
    QStringList kept() const
    {
        return QDir(path(text("kept"))).entryList(QDir::Files | QDir::Hidden);
    }
};

} // namespace

TEST_F(XicIndexTest, ReplacesWhatIsOfNoUseAndNeverWhatItCannotRead)
{
    QDir(path({})).mkdir(text("other"));
    writeRun(text("run.mzML"), runOfHeight(5));
    EXPECT_THAT(sayWithCache("run", 5).toStdString(),
                ::testing::StartsWith("zel: built the index"));
    writeRun(text("other/run.mzML"), runOfHeight(70));
    EXPECT_TRUE(sayWithCache("other/run", 70).startsWith(text("zel: built the index ") + path({})));
    ASSERT_EQ(kept().size(), 2) << "runs of one name in two folders";
    const QString reused = sayWithCache("run", 5);
    const QString cache = reused.section(QLatin1Char(' '), -1);
    EXPECT_EQ(reused, text("zel: reused the index ") + cache);

    QFile goodFile(cache);
    ASSERT_TRUE(goodFile.open(QIODevice::ReadOnly));
    const QByteArray good = goodFile.readAll();
    const auto overwrite = [&cache](const QByteArray& bytes) {
        QFile file(cache);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(bytes);
    };
    for (const QByteArray& damaged : {good.first(good.size() - 1), QByteArray("none at all")}) {
        overwrite(damaged);
        EXPECT_EQ(sayWithCache("run", 5),
                  text("zel: replaced the index ") + cache + text(": it was damaged"));
        EXPECT_EQ(sayWithCache("run", 5), reused) << "replaced for good";
    }
    EXPECT_EQ(say("run", 5, text("--max-ions 7 --cache ") + path(text("kept"))),
              text("zel: replaced the index ") + cache +
                  text(": it was made with other settings or by another version"));

    ASSERT_TRUE(QFile::remove(cache));
    ASSERT_TRUE(QDir().mkdir(cache)); // cannot be read, whoever asks
    EXPECT_THAT(sayWithCache("run", 5).toStdString(),
                ::testing::StartsWith("zel: built the index in memory: could not read " +
                                      cache.toStdString()));
    EXPECT_TRUE(QFileInfo(cache).isDir());
}

TEST_F(XicIndexTest, ANewIndexThatCannotBeWrittenLosesNothing)
{
    writeRun(text("run.mzML"), runOfHeight(5));
    write(text("kept"), "a file in the place of the folder");
    EXPECT_THAT(sayWithCache("run", 5).toStdString(),
                ::testing::StartsWith("zel: built the index in memory: could not write"));
    EXPECT_EQ(read(text("kept")), "a file in the place of the folder");

    if (geteuid() == 0) {
        GTEST_SKIP() << "no folder is closed to the superuser";
    }
    QFile::remove(path(text("kept")));
    sayWithCache("run", 5);
    const QByteArray old = "an index of long ago";
    const QString cache = text("kept/") + kept().value(0);
    write(cache, old);
    QFile::setPermissions(path(text("kept")), QFile::ReadOwner | QFile::ExeOwner);
    EXPECT_THAT(sayWithCache("run", 5).toStdString(),
                ::testing::StartsWith("zel: built the index in memory: could not write"));
    QFile::setPermissions(path(text("kept")),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    EXPECT_EQ(read(cache), old);
}

TEST_F(XicIndexTest, KeepsAllPeaksAndSaysWhatItLeavesOut)
{
    QList<QPointF> higher;
    for (int i = 0; i < 1500; ++i) {
        higher.append(QPointF(500.0 + 0.1 * i, 100.0));
    }
    writeRun(text("dense.mzML"), runOfHeight(5, higher));
    EXPECT_EQ(say("dense", 5), text("zel: built the index in memory"));
    EXPECT_EQ(say("dense", 0, text("--max-ions 1000")),
              text("zel: --max-ions 1000 keeps the highest peaks only: the largest scan has 1501 "
                   "points\nzel: built the index in memory\nzel: there is no signal in mz_400"));

    writeRun(text("doubled.mzML"), runOfHeight(5, {{400.0, 5}}));
    EXPECT_EQ(
        say("doubled", 5),
        text("zel: 3 of 6 peaks share an m/z bin of their scan with a later one, and are left "
             "out\nzel: built the index in memory"));
}

} // namespace zel
