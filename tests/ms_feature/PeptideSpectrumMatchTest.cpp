#include "ms_feature/records/PeptideSpectrumMatch.h"

#include "ms_feature/records/IsotopeSelector.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

#include <limits>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

/// SAMPLER: residues 784.390159 Da plus water, 802.400724 Da neutral.
constexpr double kSamplerMassDa = 802.400724;

PeptideSpectrumMatch sampler(int charge, double mz)
{
    PeptideSpectrumMatch match;
    match.setSequence(QStringLiteral("SAMPLER"));
    match.setCharge(charge);
    match.setCalcMz(mz);
    return match;
}

} // namespace

TEST(PeptideSpectrumMatchTest, TakesTheMassFromEitherSignOfTheCharge)
{
    EXPECT_NEAR(sampler(2, 402.207638).calcMr(), kSamplerMassDa, 2e-6);
    EXPECT_NEAR(sampler(-1, 801.393448).calcMr(), kSamplerMassDa, 2e-6);
    EXPECT_EQ(sampler(0, 402.207638).calcMr(), 0.0);
    // Fails with a proton mass of fewer than 10 decimals.
    EXPECT_NEAR(sampler(1000, 1.00727646677 + 1e-9).calcMr(), 1e-6, 1e-8);
}

TEST(PeptideSpectrumMatchTest, HashesToAText)
{
    PeptideSpectrumMatch match = sampler(2, 402.207638);
    EXPECT_EQ(match.peptideHash(), QStringLiteral("SAMPLER::802.4007:2"));
    EXPECT_EQ(match.unchargedPeptideHash(), QStringLiteral("SAMPLER::802.4007:0"));
    match.setTarnicStyleMods(QStringLiteral("a:b/15.9949;"));
    EXPECT_EQ(match.peptideHash(), QStringLiteral("SAMPLER:a:b/15.9949;:802.4007:2"));
    EXPECT_EQ(PeptideSpectrumMatch::toHash(QString(), QString(), 1234.56789, -3),
              QStringLiteral("::1234.5679:-3"));
    // A known limit: fields that stand inside the texts are filled too.
    EXPECT_EQ(PeptideSpectrumMatch::toHash(QStringLiteral("A%2"), QStringLiteral("mod"), 1.0, 2),
              QStringLiteral("Amod:mod:1.0000:2"));
}

TEST(PeptideSpectrumMatchTest, StepsFromIsotopeToIsotope)
{
    double mz = -1.0;
    ASSERT_THAT(sampler(2, 402.0).getIsotopeMz(3, &mz), IsOk());
    EXPECT_DOUBLE_EQ(mz, 402.0 + 1.5050325);
    ASSERT_THAT(sampler(-2, 402.0).getIsotopeMz(-1, &mz), IsOk());
    EXPECT_DOUBLE_EQ(mz, 402.0 - 0.5016775);
    EXPECT_THAT(sampler(1003, 402.0).getIsotopeMz(1, &mz), IsOk());
    EXPECT_THAT(sampler(1004, 402.0).getIsotopeMz(1, &mz), HasError(kError));
    EXPECT_THAT(sampler(0, 402.0).getIsotopeMz(1, &mz), HasError(kError));
}

TEST(IsotopeSelectorTest, TakesTheFirstThresholdNotBelowTheMass)
{
    IsotopeSelector selector;
    for (const auto& [mass, isotope] : {std::pair{0.0, 0},
                                        {1800.0, 0},
                                        {1800.01, 1},
                                        {80000.0, 7},
                                        {80000.1, 8},
                                        {std::numeric_limits<double>::quiet_NaN(), 8}}) {
        EXPECT_EQ(selector.isotopeToUse(mass), isotope) << mass;
    }
    selector.setIsotopeMasses({});
    EXPECT_EQ(selector.isotopeToUse(500.0), 0);
}

} // namespace zel
