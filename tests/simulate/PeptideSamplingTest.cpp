#include "tools/simulate/PeptideSampling.h"

#include "tests/support/Matchers.h"

#include <QFile>
#include <QSet>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel::simulate {

using test::HasError;
using test::IsOk;
using test::valueOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

class FastaTest : public ::testing::Test
{
protected:
    /// A file in the test's folder with this content.
    QString fileWith(const QByteArray& content)
    {
        const QString path = m_folder.filePath(QStringLiteral("proteins.fasta"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        return path;
    }

private:
    QTemporaryDir m_folder;
};

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

TEST_F(FastaTest, IsReadWhateverItsLineEnds)
{
    const QByteArray content =
        ">sp|P1|ONE some protein\r\nMAKpep\r\nTIDER\r\n\r\n>two\nGGGK*\n>empty\n";
    EXPECT_THAT(valueOf(readFasta(fileWith(content))),
                ElementsAre(text("MAKPEPTIDER"), text("GGGK*"), text("")));
}

TEST_F(FastaTest, IsRefusedWithTheLineThatIsWrong)
{
    EXPECT_THAT(readFasta(text("/nonexistent/a.fasta")), HasError(kFileOpenError));
    const std::pair<QByteArray, const char*> rows[] = {
        {"MAKPEP\n", "line 1"},
        {">one\nMAK\n12345\n", "line 3"},
        {QByteArray("\x1f\x8b\x00\xff", 4), "gzip stream is damaged"}};
    for (const auto& [content, place] : rows) {
        const auto result = readFasta(fileWith(content));
        ASSERT_THAT(result, HasError(kFileFormatError)) << content.constData();
        EXPECT_THAT(result.error().message().toStdString(), HasSubstr(place));
    }
    SimulationSettings settings;
    settings.fastaPath = fileWith(">one\nMAK\n");
    EXPECT_THAT(choosePeptides(settings), HasError(kBadParameterError));
}

TEST(PeptideSamplingTest, MakesRandomTrypticPeptidesOfNaturalComposition)
{
    SimulationSettings settings;
    settings.peptideCount = 5000;
    const QStringList peptides = valueOf(choosePeptides(settings));
    ASSERT_EQ(peptides.size(), 5000);
    EXPECT_EQ(QSet<QString>(peptides.cbegin(), peptides.cend()).size(), 5000);
    double leucines = 0.0;
    double residues = 0.0;
    for (const QString& peptide : peptides) {
        EXPECT_TRUE(peptide.endsWith(u'K') || peptide.endsWith(u'R'));
        leucines += static_cast<double>(peptide.count(u'L'));
        residues += static_cast<double>(peptide.size() - 1);
    }
    EXPECT_NEAR(leucines / residues, 0.0965 / (1.0 - 0.0553 - 0.0580), 0.005);

    settings.minPeptideLength = settings.maxPeptideLength = 1;
    EXPECT_THAT(choosePeptides(settings), HasError(kBadParameterError)); // there are K and R only
}

} // namespace zel::simulate
