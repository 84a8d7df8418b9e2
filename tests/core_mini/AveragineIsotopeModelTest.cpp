#include "common/core_mini/src/algo/isotopes/AveragineIsotopeModel.h"

#include "common/core_mini/src/algo/isotopes/AveragineGenerator.h"
#include "common/core_mini/src/algo/isotopes/MolCalc.h"
#include "tests/support/BruteForceIsotopes.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <limits>
#include <tuple>

namespace zel {

using test::bruteForceIsotopes;
using test::HasError;
using test::IsOk;

namespace {

MolecularFormula formulaOf(double c, double h, double n, double o, double s)
{
    MolecularFormula formula;
    formula.setMolecularFormula({{MolecularFormula::Carbon, c},
                                 {MolecularFormula::Hydrogen, h},
                                 {MolecularFormula::Nitrogen, n},
                                 {MolecularFormula::Oxygen, o},
                                 {MolecularFormula::Sulfur, s}});
    return formula;
}

QList<double> ratiosOf(const AveragineIsotopeModel& model, double mass)
{
    QList<double> ratios;
    EXPECT_THAT(model.peakIntensityRatiosFromMass(mass, &ratios), IsOk());
    return ratios;
}

} // namespace

TEST(AveragineIsotopeModelTest, IsExactForWholeMultiplesOfItsUnit)
{
    AveragineIsotopeModel model;
    const MolecularFormula unit = formulaOf(5, 8, 2, 1, 1);
    ASSERT_THAT(model.init(unit), IsOk());
    for (const int units : {1, 2, 7, 40, 300}) {
        const chem::Molecule molecule = {{chem::Element::C, 5 * units},
                                         {chem::Element::H, 8 * units},
                                         {chem::Element::N, 2 * units},
                                         {chem::Element::O, units},
                                         {chem::Element::S, units}};
        const std::vector<double> expected = bruteForceIsotopes(molecule, 250);
        const QList<double> ratios = ratiosOf(model, unit.monoisotopicMass() * units);
        for (qsizetype k = 1; k < ratios.size(); ++k) {
            const double ratio = expected[static_cast<std::size_t>(k)] / expected[0];
            EXPECT_NEAR(ratios[k] / ratios[0], ratio, 1e-9 * ratio)
                << units << " units, peak " << k;
        }
    }
}

TEST(AveragineIsotopeModelTest, FoldsFractionalUnitsLikePowers)
{
    // The pattern of twice a mass is the pattern of that mass folded with itself.
    const AveragineIsotopeModel& model = AveragineIsotopeModel::senko();
    for (const double mass : {130.7, 512.3, 1734.9, 4999.99, 74000.1}) {
        const QList<double> once = ratiosOf(model, mass);
        const QList<double> twice = ratiosOf(model, 2 * mass);
        for (qsizetype k = 0; k < std::min(once.size(), twice.size()); ++k) {
            double folded = 0.0;
            for (qsizetype i = 0; i <= k; ++i) {
                folded += once[i] * once[k - i];
            }
            // Both patterns lack up to 1e-4, each was made to sum to 1 again.
            EXPECT_NEAR(twice[k], folded, 3e-4 * folded + 1e-12) << mass << " Da, peak " << k;
        }
    }
}

TEST(AveragineIsotopeModelTest, RefusesWhatHasNoPattern)
{
    QList<double> ratios = {1.0};
    AveragineIsotopeModel model;
    EXPECT_THAT(model.peakIntensityRatiosFromMass(1000.0, &ratios), HasError(kError));
    EXPECT_TRUE(ratios.isEmpty());
    for (const double hydrogen : {-1.0, std::nan("")}) {
        EXPECT_THAT(model.init(formulaOf(0, hydrogen, 0, 0, 0)), HasError(kBadParameterError));
    }
    EXPECT_THAT(model.init(MolecularFormula()), HasError(kBadParameterError));
    ASSERT_THAT(model.init(formulaOf(30.4, 49.7, 12.2, 7.2, 0.6)), IsOk());
    for (const double mass : {-1.0, std::nan(""), std::numeric_limits<double>::infinity(), 1e12}) {
        EXPECT_THAT(model.peakIntensityRatiosFromMass(mass, &ratios), HasError(kBadParameterError))
            << mass;
    }
    EXPECT_EQ(ratiosOf(model, 19.0), QList<double>{1.0});
}

TEST(AveragineGeneratorTest, PlacesThePatternByCharge)
{
    const double mass = 2345.6789;
    const QList<double> ratios = ratiosOf(AveragineIsotopeModel::senko(), mass);
    const QList<QPointF> signal = AveragineGenerator(mass).generateSignal(3);
    ASSERT_EQ(signal.size(), ratios.size());
    for (qsizetype k = 0; k < signal.size(); ++k) {
        const double neutral = mass + static_cast<double>(k) * 1.003355;
        EXPECT_NEAR(signal[k].x(), neutral / 3 + 1.00727646677, 1e-9);
        EXPECT_EQ(signal[k].y(), ratios[k]);
    }
}

TEST(MolCalcTest, TurnsMassesIntoMzAndBack)
{
    for (const auto& [mass, charge, isotope] : {std::tuple(1045.5, 2, 0), {20000.25, 19, -5}}) {
        const double mz = molcalc::calculateChargedMzFromMW(mass, charge, isotope);
        EXPECT_NEAR(mz, (mass + isotope * 1.003355) / charge + 1.00727646677, 1e-9);
        EXPECT_NEAR(
            molcalc::calculateUnchargedMassFromMzCharge(mz, charge, isotope, true), mass, 1e-9);
        const double deprotonated = molcalc::calculateChargedMzFromMW(mass, -charge, isotope);
        EXPECT_NEAR(
            molcalc::calculateUnchargedMassFromMzCharge(deprotonated, charge, isotope, false),
            mass,
            1e-9);
    }
    EXPECT_EQ(molcalc::calculateChargedMzFromMW(1000.0, 0, 0), 1000.0);
    EXPECT_EQ(molcalc::calculateUnchargedMassFromMzCharge(1000.0, 0, 0), 1000.0);
}

TEST(MolCalcTest, AddsModificationsToThePeptideMass)
{
    const QString sequence = QStringLiteral("DRVYIHPF");
    EXPECT_NEAR(molcalc::calculateMassOfPeptide(sequence, {}), 1045.5345, 1e-4);
    const QMap<int, std::pair<QString, double>> modifications = {
        {3, {QStringLiteral("Phospho"), 79.966331}}, {99, {QStringLiteral("Any"), -1.5}}};
    EXPECT_NEAR(
        molcalc::calculateMassOfPeptide(sequence, modifications), 1045.5345 + 78.466331, 1e-4);
}

} // namespace zel
