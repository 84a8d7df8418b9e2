#include "tools/identifications/SpectrumMatchFile.h"

#include "tests/support/Matchers.h"
#include "tools/identifications/PeptideText.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel::identifications {

using Reason = MatchReport::Reason;
using test::HasError;
using test::valueOf;

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

class SpectrumMatchFileTest : public ::testing::Test
{
protected:
    Result<SpectrumMatchFile> read(const QByteArray& content, const char* score = "")
    {
        const QString path = m_folder.filePath(text("matches"));
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
        file.close();
        return readSpectrumMatches(path, text(score), &m_report);
    }

    MatchReport m_report;
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(SpectrumMatchFileTest, ReadsOrNamesEachRowOfATable)
{
    struct Row
    {
        const char* name;
        const char* cells; ///< sequence, modifications, charge, mz, mass, rt, score
        std::optional<Reason> reason = {};
    };
    const Row rows[] = {
        {"WithMz", "PEPTIDEK\t\t2\t464.7\t\t5\t1", {}},
        {"WithMassOnly", "PEPTIDEK\t\t2\t\t927.45\t5\t1", {}},
        {"WithNeither", "PEPTIDEK\tOx/15.9949;Ac@N-term/42.0106\t2.0\t\t\t5\t", {}},
        {"NoSequence", "\t\t2\t464.7\t\t5\t1", Reason::Sequence},
        {"MassInTheSequence", "PEP[+16]TIDE\t\t2\t464.7\t\t5\t1", Reason::Sequence},
        {"ResidueWithoutMass", "PEPTXDE\t\t2\t\t\t5\t1", Reason::Mass},
        {"LabelAlone", "PEPTIDEK\tOx\t2\t464.7\t\t5\t1", Reason::Modifications},
        {"SeparatorAtTheEnd", "PEPTIDEK\tOx/16;\t2\t464.7\t\t5\t1", Reason::Modifications},
        {"CommaForASemicolon", "PEPTIDEK\tOx/16,Ox/16\t2\t464.7\t\t5\t1", Reason::Modifications},
        {"PlaceholderOfTheHash", "PEPTIDEK\t%3/16\t2\t464.7\t\t5\t1", Reason::Modifications},
        {"ChargeZero", "PEPTIDEK\t\t0\t464.7\t\t5\t1", Reason::Charge},
        {"BrokenCharge", "PEPTIDEK\t\t2.5\t464.7\t\t5\t1", Reason::Charge},
        {"NegativeMz", "PEPTIDEK\t\t2\t-464.7\t\t5\t1", Reason::Mass},
        {"InfiniteMz", "PEPTIDEK\t\t2\tinf\t\t5\t1", Reason::Mass},
        {"NoTime", "PEPTIDEK\t\t2\t464.7\t\t\t1", Reason::Time},
        {"WordForAScore", "PEPTIDEK\t\t2\t464.7\t\t5\tgood", Reason::Score},
    };
    for (const auto& [name, cells, reason] : rows) {
        SCOPED_TRACE(name);
        m_report = MatchReport();
        const auto file = valueOf(
            read(QByteArray("sequence\tmodifications\tcharge\tmz\tmass\trt\tscore\n") + cells));
        EXPECT_EQ(file.matches.size(), reason ? 0 : 1);
        EXPECT_EQ(m_report.totalCount(), reason ? 1 : 0);
        if (reason) {
            EXPECT_EQ(m_report.count(*reason), 1) << m_report.summary().toStdString();
            EXPECT_TRUE(m_report.messages().value(0).contains(text("matches, line 2: ")));
        }
    }
}

TEST_F(SpectrumMatchFileTest, ReadsATable)
{
    const QByteArray table = "run\tcharge\tsequence\tprotein\tmodifications\tmass\trt\tq_value\n"
                             "a.mzML\t2\tPEPTIDEK\tP1\tOx/16;Ac/42.5\t\t5.5\t0.01\n"
                             "\t3\tPEPTIDEK\tP1\t\t3000\t6\t\n";
    const auto file = valueOf(read(table, "q_value"));
    EXPECT_EQ(file.unknownColumns, QStringList(text("protein")));
    ASSERT_EQ(file.matches.size(), 2);
    const SpectrumMatch& calculated = file.matches[0];
    EXPECT_EQ(calculated.run, text("a.mzML"));
    // PEPTIDEK: 927.4549 Da, the sum of the residues' masses in Unimod and of water.
    EXPECT_NEAR(calculated.mz, (927.4549 + 58.5) / 2 + 1.007276, 1e-4);
    EXPECT_EQ(calculated.rtMinutes, 5.5);
    EXPECT_EQ(calculated.score, -0.01) << "of q-values the small ones are good";
    EXPECT_NEAR(file.matches[1].mz, 1001.007276, 1e-6);

    EXPECT_THAT(read("sequence\tcharge\nPEPTIDEK\t2\n"), HasError(kFileFormatError));
    EXPECT_THAT(read(table, "xcorr"), HasError(kFileFormatError)) << "no such score";
    EXPECT_THAT(read("sequence\trt\trt\tcharge\nK\t1\t2\t1\n"), HasError(kFileFormatError));
}

TEST_F(SpectrumMatchFileTest, ReadsMzIdentMl)
{
    QFile file(text(ZEL_TEST_FILES "/matches.mzid"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray content = file.readAll();
    const auto matches = valueOf(read(content)).matches;
    ASSERT_EQ(matches.size(), 2);
    EXPECT_EQ(runName(matches[0].run), text("run1"));
    EXPECT_EQ(matches[0].sequence, text("KQMETANK"));
    EXPECT_EQ(matches[0].modifications, text("Oxidation@M3/15.994915;K8/0.984016"));
    EXPECT_EQ(matches[0].mz, 483.7319);
    EXPECT_NEAR(matches[0].rtMinutes.value_or(0.0), 24.1, 1e-9) << "1446 seconds";
    EXPECT_EQ(matches[0].score, 2.5) << "the search engine's, not the number of peaks";
    // ACDK: 435.1788 Da; the file does not tell its m/z.
    EXPECT_NEAR(matches[1].mz, 435.1788 + 1.007276, 1e-3);
    EXPECT_FALSE(matches[1].rtMinutes);
    EXPECT_EQ(matches[1].spectrumId, text("scan=124"));
    EXPECT_EQ(m_report.count(Reason::LowerRank), 1);
    EXPECT_EQ(m_report.count(Reason::BelowThreshold), 1);
    EXPECT_EQ(m_report.count(Reason::Decoy), 1);
    EXPECT_EQ(m_report.count(Reason::Charge), 1);
    EXPECT_EQ(m_report.totalCount(), 4);

    EXPECT_EQ(valueOf(read(content, "my score")).matches.size(), 1);
    EXPECT_EQ(m_report.count(Reason::Score), 1) << "of the match that has no such score";
    for (const qsizetype size : {content.size() / 3, content.size() - 20}) {
        EXPECT_THAT(read(content.left(size)), HasError(kFileFormatError)) << "cut at " << size;
    }
}

TEST_F(SpectrumMatchFileTest, ReadsPepXml)
{
    const QByteArray head = "<?xml version=\"1.0\"?>\n<msms_pipeline_analysis>\n";
    const QByteArray run =
        "<msms_run_summary base_name=\"/data/run1\" raw_data=\".mzML\">\n"
        "<search_summary base_name=\"/data/run1\" search_engine=\"Comet\" "
        "precursor_mass_type=\"monoisotopic\" fragment_mass_type=\"monoisotopic\"/>\n"
        "<spectrum_query spectrum=\"run1.00123.00123.2\" start_scan=\"123\" end_scan=\"123\" "
        "precursor_neutral_mass=\"965.5\" assumed_charge=\"2\" retention_time_sec=\"90\">\n"
        "<search_result><search_hit hit_rank=\"1\" peptide=\"KQMETANK\" protein=\"P1\" "
        "num_matched_ions=\"10\" tot_num_ions=\"16\" calc_neutral_pep_mass=\"965.4488\">\n"
        "<modification_info><mod_aminoacid_mass position=\"3\" mass=\"147.0354\"/>"
        "</modification_info>\n"
        "<search_score name=\"xcorr\" value=\"2.5\"/></search_hit>"
        "<search_hit hit_rank=\"1\" peptide=\"ACDK\" protein=\"DECOY_P1\" "
        "calc_neutral_pep_mass=\"435.2\"><search_score name=\"xcorr\" "
        "value=\"2\"/></search_hit></search_result></spectrum_query>\n"
        "</msms_run_summary>\n";
    const auto matches = valueOf(read(head + run + "</msms_pipeline_analysis>")).matches;
    ASSERT_EQ(matches.size(), 1);
    EXPECT_EQ(m_report.count(Reason::Decoy), 1);
    EXPECT_EQ(runName(matches[0].run), text("run1"));
    EXPECT_TRUE(matches[0].modifications.startsWith(text("M3/15.99")));
    EXPECT_NEAR(matches[0].mz, 965.4488 / 2 + 1.007276, 1e-5);
    EXPECT_NEAR(matches[0].rtMinutes.value_or(0.0), 1.5, 1e-9);
    EXPECT_EQ(matches[0].score, 2.5);
    EXPECT_THAT(read(head + run + run + "</msms_pipeline_analysis>"), HasError(kFileFormatError))
        << "matches of the second run would count for the first";
    // A score outside of a hit, which libpwiz does not survive.
    QByteArray displaced = head + run + "</msms_pipeline_analysis>";
    displaced.replace("search_hit", "search_hut");
    EXPECT_THAT(read(displaced), HasError(kFileFormatError));
    EXPECT_THAT(read("<?xml version=\"1.0\"?><html></html>"), HasError(kFileFormatError));
    // What else libpwiz does not survive. The last is no fault of the file.
    const QByteArray whole = head + run + "</msms_pipeline_analysis>";
    for (const char* const position : {"9", "0", "-3", "x", ""}) {
        QByteArray outside = whole;
        outside.replace("position=\"3\"", QByteArray("position=\"") + position + '"');
        EXPECT_THAT(read(outside), HasError(kFileFormatError)) << position;
    }
    QByteArray withoutSummary = whole;
    withoutSummary.replace("<search_summary", "<search_summery");
    EXPECT_THAT(read(withoutSummary), HasError(kFileFormatError));
    QByteArray unitFirst = whole;
    unitFirst.replace("Comet", "X! Tandem");
    unitFirst.replace("\"monoisotopic\"/>",
                      "\"monoisotopic\"><parameter name=\"spectrum, parent monoisotopic mass error "
                      "units\" value=\"ppm\"/></search_summary>");
    EXPECT_EQ(valueOf(read(unitFirst)).matches.size(), 1);
}

} // namespace zel::identifications
