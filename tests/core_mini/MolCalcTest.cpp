#include "common/core_mini/src/algo/isotopes/MolCalc.h"

#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <random>

namespace zel::molcalc {

TEST(MolCalcTest, TurnsMassesIntoMzAndBack)
{
    std::mt19937_64 random(3);
    for (int round = 0; round < 1000; ++round) {
        const double mass = 100.0 + static_cast<double>(random() % 20'000'000) * 1e-3;
        const int charge = 1 + static_cast<int>(random() % 20);
        const int isotope = static_cast<int>(random() % 16) - 5;
        const double mz = calculateChargedMzFromMW(mass, charge, isotope);
        EXPECT_NEAR(mz, (mass + isotope * 1.003355) / charge + 1.00727646677, 1e-9);
        EXPECT_NEAR(calculateUnchargedMassFromMzCharge(mz, charge, isotope, true), mass, 1e-9);
        const double deprotonated = calculateChargedMzFromMW(mass, -charge, isotope);
        EXPECT_NEAR(
            calculateUnchargedMassFromMzCharge(deprotonated, charge, isotope, false), mass, 1e-9);
    }
    EXPECT_EQ(calculateChargedMzFromMW(1000.0, 0, 0), 1000.0);
    EXPECT_EQ(calculateUnchargedMassFromMzCharge(1000.0, 0, 0), 1000.0);
}

TEST(MolCalcTest, AddsModificationsToThePeptideMass)
{
    const QString sequence = QStringLiteral("DRVYIHPF");
    EXPECT_NEAR(calculateMassOfPeptide(sequence, {}), 1045.5345, 1e-4);
    const QMap<int, std::pair<QString, double>> modifications = {
        {3, {QStringLiteral("Phospho"), 79.966331}}, {99, {QStringLiteral("Any"), -1.5}}};
    EXPECT_NEAR(calculateMassOfPeptide(sequence, modifications), 1045.5345 + 78.466331, 1e-4);
}

} // namespace zel::molcalc
