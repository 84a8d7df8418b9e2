#include "dia/diamolecule/digestion/Digestion.h"

#include "dia/diamolecule/options/SernoxTables.h"

#include <gmock/gmock.h>

namespace zel {

using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// "sequence@start-end/missed" of each peptide.
std::vector<std::string> textsOf(const QList<BasicPeptide>& peptides)
{
    std::vector<std::string> texts;
    for (const BasicPeptide& peptide : peptides) {
        texts.push_back(QStringLiteral("%1@%2-%3/%4")
                            .arg(peptide.sequence)
                            .arg(peptide.start)
                            .arg(peptide.end)
                            .arg(peptide.missedCleavages)
                            .toStdString());
    }
    return texts;
}

QList<BasicPeptide> digested(const char* sequence,
                             int enzyme,
                             int missedCleavages,
                             int maxLength = 50)
{
    QList<BasicPeptide> peptides = {BasicPeptide()};
    digestSequence(QString::fromLatin1(sequence),
                   SernoxEnzymeBeforeRules[enzyme],
                   SernoxEnzymeAfterRules[enzyme],
                   missedCleavages,
                   0,
                   maxLength,
                   peptides);
    return peptides;
}

constexpr int kTrypsin = 0;
constexpr int kAspN = 3;
constexpr int kNone = 7;

} // namespace

TEST(DigestionTest, CutsByRules)
{
    struct Case
    {
        const char* sequence;
        int enzyme;
        int missedCleavages;
        int maxLength;
        std::vector<std::string> peptides;
    };
    const std::vector<Case> cases = {
        {"AKBRC", kTrypsin, 0, 50, {"AK@0-1/0", "BR@2-3/0", "C@4-4/0"}},
        {"AKBRC", kTrypsin, 1, 50, {"AK@0-1/0", "BR@2-3/0", "C@4-4/0", "AKBR@0-3/1", "BRC@2-4/1"}},
        {"AAK", kTrypsin, 2, 50, {"AAK@0-2/0"}},
        {"", kTrypsin, 2, 50, {}},
        // K before P is cut, but joining across it costs nothing.
        {"AKPGRC", kTrypsin, 0, 50, {"AK@0-1/0", "PGR@2-4/0", "C@5-5/0", "AKPGR@0-4/0"}},
        {"AADBBD", kAspN, 0, 50, {"AA@0-1/0", "DBB@2-4/0", "D@5-5/0"}},
        {"AKBR", kNone, 2, 1, {"AKBR@0-3/0"}},
        // A piece that is too long leaves the list, but lies inside what is joined across it.
        {"AKBBBBBKCRD",
         kTrypsin,
         1,
         4,
         {"AK@0-1/0", "CR@8-9/0", "D@10-10/0", "AKBBBBBKCR@0-9/1", "CRD@8-10/1"}},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(textsOf(digested(c.sequence, c.enzyme, c.missedCleavages, c.maxLength)),
                  c.peptides)
            << c.sequence << " enzyme " << c.enzyme << " missed " << c.missedCleavages;
    }
    const QMap<QString, bool> neverCuts = {{QStringLiteral("P"), false}};
    QList<BasicPeptide> peptides;
    digestSequence(QStringLiteral("AKPR"), neverCuts, {}, 0, 0, 3, peptides);
    EXPECT_THAT(textsOf(peptides), ElementsAre("AKPR@0-3/0"));
    EXPECT_EQ(peptides[0].proteinLength, 4);
}

TEST(DigestionTest, TakesEveryPartWithoutRules)
{
    QList<BasicPeptide> peptides = {BasicPeptide()};
    digestNonSpecific(QStringLiteral("ABCD"), 2, 3, peptides);
    EXPECT_THAT(
        textsOf(peptides),
        ElementsAre("@0-0/0", "AB@0-1/0", "ABC@0-2/0", "BC@1-2/0", "BCD@1-3/0", "CD@2-3/0"));
    digestNonSpecific({}, 1, 3, peptides);
    EXPECT_EQ(peptides.size(), 6);
}

TEST(DigestionTest, AddsWhatTheEndsOfAProteinLose)
{
    EXPECT_THAT(additionalPeptides({}), IsEmpty());
    const QList<BasicPeptide> whole = digested("MABCDE", kNone, 0);
    EXPECT_THAT(textsOf(additionalPeptides(whole)),
                ElementsAre("ABCDE@1-5/0",
                            "MAB@0-2/0",
                            "MABC@0-3/0",
                            "MABCD@0-4/0",
                            "AB@1-2/0",
                            "ABC@1-3/0",
                            "ABCD@1-4/0"));
    // Far from the end, and too short to be clipped that far.
    EXPECT_THAT(textsOf(additionalPeptides(digested("AKBBBBBBR", kTrypsin, 0))),
                ElementsAre("BBBB@2-5/0", "BBBBB@2-6/0", "BBBBBB@2-7/0"));
    EXPECT_THAT(textsOf(additionalPeptides(digested("MK", kTrypsin, 0))),
                ElementsAre("K@1-1/0", "M@0-0/0"));
}

TEST(DigestionTest, DecoratesAccessions)
{
    EXPECT_EQ(decorateAccessionWithIndex("P12345", 17), "17_P12345");
    EXPECT_EQ(stripIndexFromDecoratedAccession("17_sp_A_B"), "sp_A_B");
    EXPECT_EQ(stripIndexFromDecoratedAccession("none"), "none");
}

TEST(SernoxTablesTest, HaveOneIndexASubject)
{
    ASSERT_EQ(SernoxEnzymeNames.size(), 8);
    EXPECT_EQ(SernoxEnzymeAfterRules.size(), 8);
    EXPECT_EQ(SernoxEnzymeBeforeRules.size(), 8);
    EXPECT_EQ(SernoxEnzymeNames[5], QStringLiteral("ArgC @ R | C-term"));
    EXPECT_EQ(SernoxEnzymeAfterRules[2].keys().join(QString()), QStringLiteral("DE"));
    EXPECT_EQ(SernoxEnzymeBeforeRules[1].value(QStringLiteral("P"), true), false);
    ASSERT_EQ(SernoxFragmentationTypeNames.size(), SernoxFragmentationTypeFragments.size());
    std::vector<std::vector<int>> numbers;
    for (const auto& types : SernoxFragmentationTypeFragments) {
        numbers.emplace_back();
        for (const chem::FragmentType type : types) {
            numbers.back().push_back(static_cast<int>(type));
        }
        std::ranges::sort(numbers.back());
    }
    EXPECT_EQ(numbers,
              (std::vector<std::vector<int>>{
                  {2, 10}, {2, 10}, {2, 10}, {1, 3, 12}, {3, 12}, {2, 3, 10, 12}, {2, 3, 10, 12}}));
    EXPECT_EQ(SernoxProteinFdrNames.join(QLatin1Char('|')),
              QStringLiteral("1% FDR|2% FDR|No cuts"));
}

} // namespace zel
