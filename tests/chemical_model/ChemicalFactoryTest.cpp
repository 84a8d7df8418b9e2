#include "chemical_model/ChemicalFactory.h"

#include "chemical_model/Residues.h"
#include "common/stable/PhysicalConstants.h"
#include "tests/support/BruteForceIsotopes.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>

namespace chem {

using zel::kBadParameterError;
using zel::test::bruteForceIsotopes;
using zel::test::HasError;
using zel::test::IsOk;
using zel::test::valueOf;

namespace {

QSharedPointer<MoleculeComplex> peptide(const char* sequence)
{
    return defaultChemicalFactory()->constructLinearPeptideComplex(QString::fromUtf8(sequence));
}

Molecule molecule(const char* formula)
{
    return valueOf(defaultChemicalFactory()->constructMolecule(QString::fromUtf8(formula)));
}

QList<QPointF> envelopeOf(const Molecule& molecule, int charge, int normalization = 1)
{
    QList<QPointF> envelope;
    EXPECT_THAT(defaultChemicalFactory()->generateIsotopeEnvelope(
                    molecule, charge, &envelope, normalization),
                IsOk());
    return envelope;
}

double sumOf(const QList<QPointF>& envelope)
{
    double sum = 0.0;
    for (const QPointF& point : envelope) {
        sum += point.y();
    }
    return sum;
}

} // namespace

TEST(ChemicalFactoryTest, GivesPublishedPeptideMasses)
{
    // Monoisotopic [M+H]+ as mass calibration tables print it.
    const std::pair<const char*, double> rows[] = {
        {"EGVNDNEEGFFSAR", 1570.6768},         // Glu1-fibrinopeptide B
        {"RPVKVYPNGAEDESAEAFPLEF", 2465.1983}, // ACTH 18-39
    };
    for (const auto& [sequence, mhPlus] : rows) {
        const auto complex = peptide(sequence);
        EXPECT_NEAR(complex->monoisotopicMass() + zel::kProtonMassDa, mhPlus, 3e-4) << sequence;
        EXPECT_NEAR(complex->monoisotopicMass(), complex->molecule().monoisotopicMass(), 1e-9);
    }
}

TEST(ChemicalFactoryTest, KnowsTheMassOfEachResidue)
{
    // Unimod's amino acid table.
    const std::pair<char, double> rows[] = {
        {'A', 71.037114},  {'C', 103.009185}, {'D', 115.026943}, {'E', 129.042593},
        {'F', 147.068414}, {'G', 57.021464},  {'H', 137.058912}, {'I', 113.084064},
        {'J', 113.084064}, {'K', 128.094963}, {'L', 113.084064}, {'M', 131.040485},
        {'N', 114.042927}, {'O', 237.147727}, {'P', 97.052764},  {'Q', 128.058578},
        {'R', 156.101111}, {'S', 87.032028},  {'T', 101.047678}, {'U', 150.953633},
        {'V', 99.068414},  {'W', 186.079313}, {'Y', 163.063329}, {'B', 0.0},
        {'X', 0.0},        {'Z', 0.0},        {'@', 0.0},        {'[', 0.0},
    };
    for (const auto& [letter, massDa] : rows) {
        EXPECT_NEAR(residueMass(QLatin1Char(letter)), massDa, 1e-5) << letter;
    }
    EXPECT_EQ(residueMass(QChar(0x416)), 0.0);
    EXPECT_EQ(peptide("pEP-TX*IDE\r")->monoisotopicMass(), peptide("PEPTIDE")->monoisotopicMass());
}

TEST(ChemicalFactoryTest, GivesTheEnvelopeThatAtomByAtomConvolutionGives)
{
    const Molecule molecules[] = {
        peptide("G")->molecule(),
        molecule("C257H383N65O77S6"),          // insulin
        molecule("C10000H16000N2700O3000S70"), // far beyond an antibody
        molecule("C2H3Br3Cl4"),
        molecule("Si40S40"),
        molecule("C6H12CaK2CuZn3"),
    };
    for (const Molecule& any : molecules) {
        const QList<QPointF> envelope = envelopeOf(any, 2);
        const std::vector<double> expected = bruteForceIsotopes(any, 400);
        double covered = 0.0;
        for (qsizetype k = 0; k < envelope.size(); ++k) {
            covered += expected[static_cast<std::size_t>(k)];
        }
        EXPECT_GT(covered, 0.9999) << qPrintable(any.formula());
        for (qsizetype k = 0; k < envelope.size(); ++k) {
            const double share = expected[static_cast<std::size_t>(k)] / covered;
            // Relative, as the first peaks of a large molecule are tiny.
            EXPECT_NEAR(envelope[k].y(), share, 1e-9 * share + 1e-15)
                << qPrintable(any.formula()) << " " << k;
        }
        EXPECT_NEAR(sumOf(envelope), 1.0, 1e-12) << qPrintable(any.formula());
    }
}

// Computed by IsoSpec 2.2.1 (Lacki et al. 2020, doi:10.1021/acs.analchem.0c00959) from the same
// abundances: every isotopologue by itself, its probability added to those of its mass number.
TEST(ChemicalFactoryTest, GivesTheEnvelopesOfKnownPeptidesThatAnIndependentProgramGives)
{
    const std::pair<const char*, std::array<double, 8>> rows[] = {
        {"C63H98N18O13S", // substance P
         {0.432718, 0.333742, 0.157962, 0.055510, 0.015561, 0.003631, 0.000726, 0.000127}},
        {"C257H383N65O77S6", // human insulin
         {0.028969, 0.090901, 0.154524, 0.186474, 0.177738, 0.141610, 0.097660, 0.059683}},
    };
    for (const auto& [formula, shares] : rows) {
        const QList<QPointF> envelope = envelopeOf(molecule(formula), 1);
        ASSERT_GE(envelope.size(), 5) << formula;
        for (qsizetype k = 0; k < std::min<qsizetype>(envelope.size(), 8); ++k) {
            // An envelope is cut where it covers 99.99 % and scaled to a sum of 1.
            const double share = shares[static_cast<std::size_t>(k)];
            EXPECT_NEAR(envelope[k].y(), share, 1e-4 * share + 1e-6) << formula << " " << k;
        }
    }
}

TEST(ChemicalFactoryTest, StartsAtTheMonoisotopicPeakWhereLighterIsotopesExist)
{
    for (const char* formula : {"C34H32ClFeN4O4", "Se8", "C100Fe4Se3Zn2"}) {
        const Molecule any = molecule(formula);
        const auto shift =
            static_cast<std::size_t>(6 * any.count(Element::Se) + 2 * any.count(Element::Fe));
        const std::vector<double> expected = bruteForceIsotopes(any, 200);
        const QList<QPointF> envelope = envelopeOf(any, 1, 0);
        EXPECT_NEAR(envelope[0].x(), any.monoisotopicMass() + zel::kProtonMassDa, 1e-9);
        for (qsizetype k = 0; k < envelope.size(); ++k) {
            EXPECT_NEAR(envelope[k].y(), expected[shift + static_cast<std::size_t>(k)], 1e-12)
                << formula << " " << k;
        }
        EXPECT_NEAR(sumOf(envelopeOf(any, 1, 1)), 1.0, 1e-12) << formula;
    }
}

TEST(ChemicalFactoryTest, PlacesPointsByChargeAndIsotopeSpacing)
{
    const Molecule any = peptide("RPPGFSPFR")->molecule();
    const double mass = any.monoisotopicMass();
    EXPECT_NEAR(envelopeOf(any, 7)[3].x(), (mass + 3 * 1.003355) / 7 + 1.00727646677, 1e-9);
    EXPECT_NEAR(envelopeOf(any, 0)[1].x(), mass + 1.003355, 1e-9);
    EXPECT_NEAR(envelopeOf(any, -2)[0].x(), mass / 2 - 1.00727646677, 1e-9);
}

TEST(ChemicalFactoryTest, RefusesWhatHasNoEnvelope)
{
    QList<QPointF> envelope = {QPointF(1.0, 2.0)};
    const auto factory = defaultChemicalFactory();
    for (const auto& [any, normalization] : {std::pair(Molecule(), 1),
                                             {molecule("N(-1)H(-1)O(1)"), 1},
                                             {molecule("C10000000"), 1},
                                             {molecule("C6"), 2}}) {
        EXPECT_THAT(factory->generateIsotopeEnvelope(any, 1, &envelope, normalization),
                    HasError(kBadParameterError))
            << qPrintable(any.formula());
    }
    EXPECT_EQ(envelope.size(), 1);
}

} // namespace chem
