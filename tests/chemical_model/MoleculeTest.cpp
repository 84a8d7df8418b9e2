#include "chemical_model/Molecule.h"

#include "chemical_model/ChemicalFactory.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <numeric>
#include <random>

namespace chem {

using ::testing::HasSubstr;
using zel::kBadParameterError;
using zel::test::HasError;
using zel::test::valueOf;

namespace {

Molecule molecule(const char* formula)
{
    return valueOf(Molecule::fromFormula(QString::fromUtf8(formula)));
}

} // namespace

TEST(ElementsTest, AbundancesOfEachElementSumToOne)
{
    for (std::size_t i = 0; i < kElementCount; ++i) {
        const ElementInfo& info = elementInfo(static_cast<Element>(i));
        const double sum = std::accumulate(
            info.isotopes.begin(), info.isotopes.end(), 0.0, [](double total, const Isotope& iso) {
                return total + iso.abundance;
            });
        EXPECT_NEAR(sum, 1.0, 1e-12) << info.symbol;
        EXPECT_TRUE(std::ranges::is_sorted(info.isotopes, {}, &Isotope::massNumber)) << info.symbol;
        EXPECT_EQ(elementOfSymbol(QString::fromLatin1(info.symbol)), static_cast<Element>(i));
    }
}

TEST(MoleculeTest, HasTheMonoisotopicMassOfTextbooks)
{
    const std::pair<const char*, double> rows[] = {
        {"H2O", 18.0105647},
        {"N(-1)H(-1)O(1)", 0.984016},    // deamidation, Unimod 7
        {"H O(3) P", 79.966331},         // phosphorylation, Unimod 21
        {"C3H7NO2Se", 168.9641994},      // selenocysteine, PubChem 25076
        {"C257H383N65O77S6", 5803.6376}, // human insulin
        {"C34H32ClFeN4O4", 651.1461},    // hemin
        {"C11H12I3NO2", 570.8002},       // iopanoic acid
    };
    for (const auto& [text, massDa] : rows) {
        EXPECT_NEAR(molecule(text).monoisotopicMass(), massDa, 2e-4) << text;
    }
}

TEST(MoleculeTest, WritesFormulasThatReadBackTheSame)
{
    EXPECT_EQ(molecule("O(1)H(-1)N(-1)").formula(), QStringLiteral("H(-1)N(-1)O"));
    EXPECT_EQ(molecule("\tNaCl CH3C(+2) H0 ").formula(), QStringLiteral("C3H3ClNa"));
    EXPECT_EQ(molecule("C10H17N3O6") - molecule("N(-1)H(-1)O(1)"), molecule("C10H18N4O5"));

    std::mt19937_64 random(7);
    for (int round = 0; round < 200; ++round) {
        Molecule any;
        for (int i = 0; i < 5; ++i) {
            any.add(static_cast<Element>(random() % kElementCount),
                    static_cast<std::int64_t>(random() % 2001) - 1000);
        }
        if (!any.isEmpty()) {
            EXPECT_EQ(valueOf(Molecule::fromFormula(any.formula())), any)
                << qPrintable(any.formula());
        }
    }
}

TEST(MoleculeTest, RefusesBadFormulasAndNamesThePlace)
{
    const std::pair<const char*, const char*> rows[] = {
        {"", "empty"},
        {"C6Xx12", "position 3 of the formula, but there is \"Xx12\""},
        {"Co", "position 1"}, // not carbon and a stray letter
        {"C6(H2O)3", "position 3"},
        {"C()", "position 2"},
        {"C(2.5)", "position 2"},
        {"C123456789012345678901234567890", "position 2"},
        {"H(-10000000)H(-1)", "position 14"},
        {"C\xC2\xB2", "position 2"}, // superscript two is a digit to Unicode, not here
    };
    for (const auto& [formula, expected] : rows) {
        const auto result = Molecule::fromFormula(QString::fromUtf8(formula));
        ASSERT_THAT(result, HasError(kBadParameterError)) << formula;
        EXPECT_THAT(result.error().message().toStdString(), HasSubstr(expected)) << formula;
    }
}

} // namespace chem
