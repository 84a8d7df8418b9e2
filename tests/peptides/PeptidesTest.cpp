#include "common/stable/MathUtils.h"
#include "ms1Matcher/Ms1Matcher.h"
#include "tests/support/Features.h"
#include "tests/support/LogCapture.h"
#include "tests/support/Matchers.h"

#include <QFile>
#include <QJsonArray>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <limits>
#include <random>

namespace zel::test {

namespace {

Peptide peptideOf(const char* sequence, double modificationMass = 0.0, int count = 2)
{
    Peptide peptide;
    peptide.protein = QStringLiteral("P1");
    peptide.proteinLength = 50;
    peptide.sequence = QString::fromLatin1(sequence);
    peptide.start = 3;
    peptide.end = 3 + static_cast<int>(peptide.sequence.size()) - 1;
    peptide.modifications.addModificationWithCount(
        {count, {QStringLiteral("mod"), QStringLiteral("M"), modificationMass, 4}});
    return peptide;
}

QJsonObject without(QJsonObject object, const QString& key)
{
    object.remove(key);
    return object;
}

/// Candidates of exactly these masses: no residues, one modification.
PeptidesList candidatesOf(const std::vector<double>& masses)
{
    PeptidesList list;
    const double water = Peptide().mass();
    for (const double mass : masses) {
        list.addPeptide(peptideOf("", mass - water, 1));
    }
    return list;
}

} // namespace

TEST(PeptidesListTest, ComesBackFromItsTextUnchanged)
{
    const PeptidesList list({peptideOf("MAGIC", 15.994915), Peptide()});
    PeptidesList copy({peptideOf("OLD")});
    ASSERT_THAT(copy.deserialize(list.serialize()), IsOk());
    EXPECT_EQ(copy, list);
    EXPECT_EQ(list.toJson()[0].toObject().keys().join(QLatin1Char(' ')),
              QStringLiteral("end modifications protein proteinLength sequence start"));

    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("list.json"));
    PeptidesListUtils::writePeptideListToJsonText(path, list);
    ASSERT_THAT(PeptidesListUtils::readPeptideListFromJsonText({}, &copy), IsOk());
    EXPECT_EQ(copy.size(), 2) << "an empty path changes nothing";
    copy.clear();
    ASSERT_THAT(PeptidesListUtils::readPeptideListFromJsonText(path, &copy), IsOk());
    EXPECT_EQ(copy, list);
    ASSERT_THAT(PeptidesListUtils::readPeptideListFromJsonText(path + QLatin1Char('x'), &copy),
                IsOk());
    EXPECT_EQ(copy.size(), 0) << "a missing file is an empty list";
}

TEST(PeptidesListTest, NamesWhatIsMissing)
{
    const QJsonObject whole = peptideOf("MAGIC").toJson();
    for (const QString& key : whole.keys()) {
        PeptidesList list({Peptide()});
        const QJsonArray array = {whole, without(whole, key), whole};
        const Error error = list.fromJson(array);
        EXPECT_THAT(error, HasError(kFileFormatError));
        EXPECT_TRUE(error.message().contains(key)) << key.toStdString();
        EXPECT_EQ(list.size(), 1) << "those before the failure stay";
    }
    QJsonObject modification = Modification().toJson();
    EXPECT_EQ(modification.value(QStringLiteral("location")).toInt(), -1);
    Modification read;
    read.location = 9;
    EXPECT_THAT(read.fromJson(without(modification, QStringLiteral("location"))), IsOk());
    EXPECT_EQ(read.location, 9) << "the one member that may be missing";
    modification[QStringLiteral("location")] = 1.5;
    EXPECT_THAT(read.fromJson(modification), HasError(kFileFormatError));

    PeptidesList list;
    for (const char* text : {"", "{\"a\": 1}", "[1", "word"}) {
        EXPECT_THAT(list.deserialize(QString::fromLatin1(text)), HasError(kBadParameterError));
    }
    EXPECT_THAT(list.deserialize(QStringLiteral("[7]")), HasError(kFileFormatError));
}

TEST(PeptideTest, AddsItsModificationsToTheMassOfItsSequence)
{
    Peptide peptide = peptideOf("PEPTIDE", 16.0);
    peptide.modifications.addModificationWithCount({2, {{}, {}, 16.0, -1}});
    // Residues from the IUPAC atomic weights of the most abundant isotopes.
    EXPECT_NEAR(peptide.mass(), 799.359964 + 64.0, 1e-5);
    Peptide other = peptide;
    other.modifications.modifications[1].modification.mass += 1e-12;
    EXPECT_EQ(other, peptide);
    other.modifications.modifications[1].modification.mass += 1e-9;
    EXPECT_NE(other, peptide);
}

TEST(Ms1MatcherTest, FindsWhatThePlainDoubleLoopFinds)
{
    std::mt19937 random(5);
    std::uniform_int_distribution<int> steps(0, 400);
    constexpr double tolerancePpm = 2000.0; // of 1000: two steps, so that ends are hit exactly
    std::vector<double> masses;
    for (int i = 0; i < 300; ++i) {
        masses.push_back(999.0 + steps(random));
    }
    const PeptidesList candidates = candidatesOf(masses);
    ChargeFeatureList features;
    for (int i = 0; i < 200; ++i) {
        features.addChargeFeature(featureOf(1000.0 + steps(random), 1.0, i + 1));
    }
    features.addChargeFeature(ChargeFeature()); // mass -1: no window
    Ms1Matcher matcher(candidates, features, tolerancePpm);
    EXPECT_TRUE(matcher.matchedChargeFeaturePeptides().chargeFeaturePeptideMatches().isEmpty());

    ChargeFeaturePeptideListMatchesList expected;
    for (const ChargeFeature& feature : features.chargeFeatures()) {
        const double tolerance = feature.monoIsotopicMass * tolerancePpm / 1e6;
        PeptidesMatchScoreList matches;
        for (const Peptide& peptide : candidates.peptidesList()) {
            if (feature.monoIsotopicMass - tolerance <= peptide.mass() &&
                peptide.mass() <= feature.monoIsotopicMass + tolerance) {
                matches.addPeptideMatchScore({peptide, 100.0});
            }
        }
        if (!matches.peptideMatchScores.isEmpty()) {
            expected.addChargeFeaturePeptideMatchList({feature, matches});
        }
    }
    for (int run = 0; run < 2; ++run) {
        LogCapture log;
        ASSERT_THAT(matcher.exec(), IsOk());
        EXPECT_EQ(log.lines().constLast(),
                  QStringLiteral("Ms1Matcher execution finished. adding %1 matches")
                      .arg(expected.chargeFeaturePeptideMatches().size()));
        ASSERT_EQ(matcher.matchedChargeFeaturePeptides(), expected);
    }
    ChargeFeaturePeptideListMatchesList copy;
    ASSERT_THAT(copy.deserialize(expected.serialize()), IsOk());
    EXPECT_EQ(copy, expected);
}

TEST(Ms1MatcherTest, TakesBothEndsOfTheWindowAndNothingElse)
{
    const double upper = 1000.0 + 1000.0 * 10.0 / 1e6;
    const std::vector<double> candidates = {1000.0 - 1000.0 * 10.0 / 1e6,
                                            upper,
                                            std::nextafter(upper, 2e3),
                                            std::numeric_limits<double>::quiet_NaN()};
    const auto countOf = [](const PeptidesList& list, double mass, double ppm) {
        Ms1Matcher matcher(list, ChargeFeatureList({featureOf(mass, 1.0, 1)}), ppm);
        EXPECT_THAT(matcher.exec(), IsOk());
        const auto found = matcher.matchedChargeFeaturePeptides().chargeFeaturePeptideMatches();
        return found.isEmpty() ? 0 : found[0].peptidesList().peptideMatchScores.size();
    };
    const double water = Peptide().mass();
    const PeptidesList list = candidatesOf(candidates);
    // The sum with the mass of water may round; the candidates say what they came to.
    const auto inside = std::ranges::count_if(list.peptidesList(), [&](const Peptide& peptide) {
        return peptide.mass() >= candidates[0] && peptide.mass() <= upper;
    });
    EXPECT_EQ(countOf(list, 1000.0, 10.0), inside);
    EXPECT_EQ(countOf(candidatesOf({water}), water, 0.0), 1);
    EXPECT_EQ(countOf(list, 1000.0, -10.0), 0);
    EXPECT_EQ(countOf(list, std::numeric_limits<double>::quiet_NaN(), 10.0), 0);
    EXPECT_EQ(countOf(PeptidesList(), 1000.0, 10.0), 0);
}

} // namespace zel::test
