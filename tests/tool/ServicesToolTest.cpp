// Lists of peptides, matching by mass and antibody links, as a user runs them.

#include "feature_finder/dao/FeatureFinderDaoV2.h"
#include "feature_finder/records/ChargeFeatureList.h"
#include "tests/tool/ZelTool.h"

#include <gmock/gmock.h>

namespace zel::test {

using ::testing::ElementsAre;
using ::testing::HasSubstr;

namespace {

// Trastuzumab's variable domains (Carter et al. 1992; INN list 78) before the constant regions of
// UniProt P01857, P01859, P01861 and P01834.
const QByteArray kHeavyVariable =
    "EVQLVESGGGLVQPGGSLRLSCAASGFNIKDTYIHWVRQAPGKGLEWVARIYPTNGYTRYADSVKGRFTISADTSKNTAYLQMNSLRAEDTA"
    "VYYCSRWGGDGFYAMDYWGQGTLVTVSS";
const QByteArray kIgG1 =
    "ASTKGPSVFPLAPSSKSTSGGTAALGCLVKDYFPEPVTVSWNSGALTSGVHTFPAVLQSSGLYSLSSVVTVPSSSLGTQTYICNVNHKPSNT"
    "KVDKKVEPKSCDKTHTCPPCPAPELLGGPSVFLFPPKPKDTLMISRTPEVTCVVVDVSHEDPEVKFNWYVDGVEVHNAKTKPREEQYNSTYR"
    "VVSVLTVLHQDWLNGKEYKCKVSNKALPAPIEKTISKAKGQPREPQVYTLPPSRDELTKNQVSLTCLVKGFYPSDIAVEWESNGQPENNYKT"
    "TPPVLDSDGSFFLYSKLTVDKSRWQQGNVFSCSVMHEALHNHYTQKSLSLSPGK";
const QByteArray kIgG2 =
    "ASTKGPSVFPLAPCSRSTSESTAALGCLVKDYFPEPVTVSWNSGALTSGVHTFPAVLQSSGLYSLSSVVTVPSSNFGTQTYTCNVDHKPSNT"
    "KVDKTVERKCCVECPPCPAPPVAGPSVFLFPPKPKDTLMISRTPEVTCVVVDVSHEDPEVQFNWYVDGVEVHNAKTKPREEQFNSTFRVVSV"
    "LTVVHQDWLNGKEYKCKVSNKGLPAPIEKTISKTKGQPREPQVYTLPPSREEMTKNQVSLTCLVKGFYPSDISVEWESNGQPENNYKTTPPM"
    "LDSDGSFFLYSKLTVDKSRWQQGNVFSCSVMHEALHNHYTQKSLSLSPGK";
const QByteArray kIgG4 =
    "ASTKGPSVFPLAPCSRSTSESTAALGCLVKDYFPEPVTVSWNSGALTSGVHTFPAVLQSSGLYSLSSVVTVPSSSLGTKTYTCNVDHKPSNT"
    "KVDKRVESKYGPPCPSCPAPEFLGGPSVFLFPPKPKDTLMISRTPEVTCVVVDVSQEDPEVQFNWYVDGVEVHNAKTKPREEQFNSTYRVVS"
    "VLTVLHQDWLNGKEYKCKVSNKGLPSSIEKTISKAKGQPREPQVYTLPPSQEEMTKNQVSLTCLVKGFYPSDIAVEWESNGQPENNYKTTPP"
    "VLDSDGSFFLYSRLTVDKSRWQEGNVFSCSVMHEALHNHYTQKSLSLSLGK";
const QByteArray kLight =
    "DIQMTQSPSSLSASVGDRVTITCRASQDVNTAVAWYQQKPGKAPKLLIYSASFLYSGVPSRFSGSRSGTDFTLTISSLQPEDFATYYCQQHY"
    "TTPPTFGQGTKVEIKRTVAAPSVFIFPPSDEQLKSGTASVVCLLNNFYPREAKVQWKVDNALQSGNSQESVTEQDSKDSTYSLSSTLTLSKA"
    "DYEKHKVYACEVTHQGLSSPVTKSFNRGEC";

/// One column of a table, without its header.
QStringList column(const QString& table, int index)
{
    QStringList cells;
    for (const QString& row : table.split(u'\n', Qt::SkipEmptyParts).mid(1)) {
        cells.append(row.section(u'\t', index, index));
    }
    return cells;
}

/// The links of a table: "heavy 1:22-heavy 1:96".
QSet<QString> linksOf(const QString& table)
{
    QSet<QString> links;
    for (const QString& row : table.split(u'\n', Qt::SkipEmptyParts).mid(1)) {
        links.insert(row.section(u'\t', 1, 2).replace(u'\t', u':') + u'-' +
                     row.section(u'\t', 3, 4).replace(u'\t', u':'));
    }
    return links;
}

class ServicesToolTest : public ZelTool
{
protected:
    void expectRefused(const char* line, int exitCode, const char* reason) const
    {
        const Outcome outcome = call(line);
        EXPECT_EQ(outcome.exitCode, exitCode) << line;
        EXPECT_TRUE(outcome.output.isEmpty()) << line;
        EXPECT_THAT(outcome.errors.toStdString(), HasSubstr(reason)) << line;
        EXPECT_EQ(outcome.errors.count(u'\n'), 1) << outcome.errors.toStdString();
    }
};

} // namespace

TEST_F(ServicesToolTest, DigestListsPeptidesByTheRules)
{
    // One protein in parts with blanks and small letters, one that repeats a peptide of it and has
    // a letter without a mass.
    write(text("p.fasta"), ">sp|P1 one\r\nMAcK PEPtidek\r\n>P2\nPEPTIDEKAAXAAK*\n");
    const Outcome outcome =
        call("digest p.fasta -o p.json --tsv p.tsv --missed-cleavages 0 --min-length 4 "
             "--fixed Carbamidomethyl:C:57.021464 --variable Oxidation:M:15.994915:2");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("6 letters were made upper case, and 2"));
    EXPECT_THAT(outcome.errors.toStdString(), HasSubstr("1 peptides with letters"));
    const QString table = QString::fromUtf8(read(text("p.tsv")));
    // The place before P is cut, but joining across it is free.
    EXPECT_THAT(column(table, 2),
                ElementsAre(text("MACK"),
                            text("MACK"),
                            text("PEPTIDEK"),
                            text("MACKPEPTIDEK"),
                            text("MACKPEPTIDEK")));
    EXPECT_EQ(table.split(u'\n')[2].section(u'\t', 3, 5),
              text("1\t4\tCarbamidomethyl@C/57.021464;Oxidation@M/15.994915"));
    EXPECT_NEAR(column(table, 6)[2].toDouble(), 927.454929, 1e-5);

    // The list is read back, each peptide matches its own mass, and FASTA is as good as the list.
    write(text("f.tsv"), "mono_mass\tcharge\n927.454929\t2\n-1\t2\n");
    const Outcome ofList = call("match f.tsv p.json");
    EXPECT_THAT(column(ofList.output, 5), ElementsAre(text("PEPTIDEK")));
    EXPECT_THAT(ofList.errors.toStdString(), HasSubstr("1 features without a positive mass"));
    EXPECT_THAT(ofList.errors.toStdString(),
                HasSubstr("1 matches, 1 of 2 features; by chance 0.0"));
    EXPECT_EQ(call("match f.tsv p.fasta --missed-cleavages 0 --min-length 4").output,
              ofList.output);
    EXPECT_EQ(column(call("match f.tsv p.fasta --every-place").output, 7).size(), 2);
}

TEST_F(ServicesToolTest, MatchReadsFeaturesInEachForm)
{
    write(text("p.fasta"), ">p\nPEPTIDEK\n");
    ChargeFeature feature;
    feature.monoIsotopicMass = 927.4640;
    feature.mzApexOfCluster = 464.739;
    feature.charge = 2;
    feature.apexIntensity = 1000;
    feature.apexD1 = 12.5;
    const ChargeFeatureList features({feature});
    write(text("f.json"), features.serialize().toUtf8());
    write(text("f.tsv"),
          "mz\tmono_mass\tcharge\trt_apex\tintensity\n464.739\t927.464\t2\t12.5\t1000\n");
    MasterFeature master;
    master.setChargeFeatures({feature});
    FeatureFinderDaoV2 store;
    ASSERT_THAT(store.createFtrs(text("f.mzML"), m_folder.path(), {master}), IsOk());

    const Outcome ofTable = call("match f.tsv p.fasta");
    ASSERT_EQ(column(ofTable.output, 11).size(), 1) << ofTable.errors.toStdString();
    EXPECT_NEAR(column(ofTable.output, 11)[0].toDouble(), 9.782, 2e-3);
    EXPECT_EQ(call("match f.json p.fasta").output, ofTable.output);
    EXPECT_EQ(call("match f.ftrs p.fasta").output, ofTable.output);
    EXPECT_TRUE(column(call("match f.tsv p.fasta --ppm 9.7").output, 0).isEmpty());
    EXPECT_EQ(call("match f.tsv p.fasta --ppm 0").exitCode, 0);
}

TEST_F(ServicesToolTest, RefusesWhatIsNoListInOneLine)
{
    write(text("p.fasta"), ">p\nPEPTIDEK\n");
    write(text("none.fasta"), ">p\nXXXXXXXX\n");
    write(text("f.tsv"), "mono_mass\n927.4\n");
    write(text("nan.tsv"), "mono_mass\nnan\n");
    write(text("other.tsv"), "mass\n927.4\n");
    write(text("object.json"), "{}");
    write(text("key.json"), R"([{"protein": "p", "proteinLength": 8, "sequence": 7}])");
    write(text("feature.json"), R"({"feature1": {"apexD1": "x"}})");
    write(text("broken.ftrs"), QByteArray("SQLite format 3\0", 16) + QByteArray(2000, 'x'));
    write(text("empty.json"), "[]");
    expectRefused("match nan.tsv p.fasta", 1, "line 2");
    expectRefused("match other.tsv p.fasta", 1, "mono_mass");
    expectRefused("match broken.ftrs p.fasta", 1, "no store of features");
    expectRefused("match feature.json p.fasta", 1, "feature 1");
    expectRefused("match f.tsv object.json", 1, "no JSON array");
    expectRefused("match f.tsv key.json", 1, "sequence");
    expectRefused("match f.tsv p.fasta --ppm -1", 2, "--ppm");
    expectRefused("match f.tsv p.fasta --ppm nan", 2, "--ppm");
    expectRefused("digest p.fasta --fixed C:57", 2, "--fixed");
    expectRefused("digest p.fasta --variable Oxidation:M:15.99:0", 2, "--variable");
    EXPECT_EQ(call("digest none.fasta").exitCode, 1);
    EXPECT_THAT(call("match f.tsv empty.json").errors.toStdString(), HasSubstr("0 matches"));

    expectRefused("xlink EVCZ DIC", 1, "position 4");
    expectRefused("xlink EVC", 2, "--fasta");
    const Outcome few = call("xlink EVQ DIQ");
    EXPECT_EQ(few.exitCode, 0);
    EXPECT_EQ(few.errors.count(text("cysteines")), 4);
}

TEST_F(ServicesToolTest, XlinkFindsTheTextbookLinks)
{
    struct Isotype
    {
        const QByteArray& constant;
        const char* within; ///< heavy chain, positions from 1
        const char* hinge;
        const char* toLight;
    };
    // The loops of the domains by UniProt's features, the rest by Wypych et al. 2008 and Liu and
    // May 2012.
    const Isotype isotypes[] = {
        {kIgG1, "22-96 147-203 264-324 370-428", "229 232", "223"},
        {kIgG2, "22-96 147-203 260-320 366-424", "222 223 226 229", "134"},
        {kIgG4, "22-96 147-203 261-321 367-425", "226 229", "134"},
    };
    for (const Isotype& isotype : isotypes) {
        QSet<QString> expected;
        for (const QString& number : {text("1"), text("2")}) {
            for (const QString& loop : text(isotype.within).split(u' ')) {
                expected.insert(text("heavy %1:%2-heavy %1:%3")
                                    .arg(number, loop.section(u'-', 0, 0), loop.section(u'-', 1)));
            }
            for (const char* loop : {"light %1:23-light %1:88", "light %1:134-light %1:194"}) {
                expected.insert(text(loop).arg(number));
            }
            expected.insert(text("heavy %1:%2-light %1:214").arg(number, text(isotype.toLight)));
        }
        for (const QString& hinge : text(isotype.hinge).split(u' ')) {
            expected.insert(text("heavy 1:%1-heavy 2:%1").arg(hinge));
        }
        write(text("chains.fasta"),
              ">H\n" + kHeavyVariable + isotype.constant + "\n>L\n" + kLight + '\n');
        EXPECT_EQ(linksOf(call("xlink --fasta chains.fasta").output), expected);
    }
}

TEST_F(ServicesToolTest, XlinkListsLinkedPeptidesForMatching)
{
    write(text("chains.fasta"),
          ">heavy\n" + (kHeavyVariable + kIgG1).toLower() + "\n>light\n" + kLight + '\n');
    const Outcome outcome = call(
        "xlink --fasta chains.fasta -o l.tsv --cysteines c.tsv --html l.html --peptides l.json");
    ASSERT_EQ(outcome.exitCode, 0) << outcome.errors.toStdString();
    EXPECT_EQ(read(text("c.tsv")).count('\n'), 1 + 2 * 11 + 2 * 5);
    EXPECT_EQ(read(text("l.html")).count("<path"), 16);
    // SCDK of the heavy chain and GEC of the light one, less two hydrogens.
    write(text("f.tsv"), "mono_mass\n756.2418\n");
    const QString matched = call("match f.tsv l.json").output;
    EXPECT_THAT(column(matched, 5), ElementsAre(text("SCDK"))) << matched.toStdString();
}

} // namespace zel::test
