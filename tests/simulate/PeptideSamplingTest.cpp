#include "tools/simulate/PeptideSampling.h"

#include "tests/support/Matchers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel::simulate {

using test::HasError;
using test::valueOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

} // namespace

TEST(PeptideSamplingTest, CutsLikeTrypsin)
{
    SimulationSettings settings;
    settings.minPeptideLength = 2;
    settings.maxPeptideLength = 8;
    settings.missedCleavages = 0;
    const QStringList proteins = {text("MAKPEPRKGGKAXEKTTEND"), text("MAKPEPR")};
    EXPECT_THAT(digest(proteins, settings),
                ElementsAre(text("MAKPEPR"), text("GGK"), text("TTEND")));
    settings.missedCleavages = 1;
    EXPECT_THAT(
        digest(proteins, settings),
        ElementsAre(text("MAKPEPR"), text("MAKPEPRK"), text("KGGK"), text("GGK"), text("TTEND")));
}

TEST(FastaTest, IsReadWhateverItsLineEndsOrRefusedWithTheLineThatIsWrong)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("proteins.fasta"));
    const auto readFrom = [&path](const QByteArray& content) {
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        return readFasta(path);
    };
    EXPECT_THAT(valueOf(readFrom(
                    ">sp|P1|ONE some protein\r\nMAKpep\r\nTIDER\r\n\r\n>two\nGGGK*\n>empty\n")),
                ElementsAre(text("MAKPEPTIDER"), text("GGGK*"), text("")));
    EXPECT_THAT(readFasta(text("/nonexistent/a.fasta")), HasError(kFileOpenError));
    const std::pair<QByteArray, const char*> rows[] = {
        {"MAKPEP\n", "line 1"},
        {">one\nMAK\n12345\n", "line 3"},
        {QByteArray("\x1f\x8b\x00\xff", 4), "gzip stream is damaged"}};
    for (const auto& [content, place] : rows) {
        const auto result = readFrom(content);
        ASSERT_THAT(result, HasError(kFileFormatError)) << content.constData();
        EXPECT_THAT(result.error().message().toStdString(), HasSubstr(place));
    }
}

} // namespace zel::simulate
