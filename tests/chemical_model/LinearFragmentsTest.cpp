#include "chemical_model/LinearFragments.h"

#include "chemical_model/Residues.h"

#include <gtest/gtest.h>

namespace chem {

namespace {

QList<SimpleFragment> fragmentsOf(const char* sequence)
{
    QList<SimpleFragment> fragments;
    generateLinearFragments(MoleculeComplex(QString::fromUtf8(sequence)), fragments);
    return fragments;
}

} // namespace

TEST(LinearFragmentsTest, HasTheResiduesOfOneEndAndTheOffsetOfItsSeries)
{
    // What each type has beyond its residues, from the atoms that it gains and loses; A to B less
    // ammonia begin at the first residue, X to the last at the other end, then the precursor.
    const double offsets[] = {-27.994915,
                              -26.987090,
                              0.0,
                              17.026549,
                              16.018724,
                              -18.010565,
                              -17.026549,
                              43.989829,
                              0.0,
                              44.997654,
                              18.010565,
                              0.984016,
                              1.991841,
                              0.0,
                              0.0,
                              18.010565};
    const MoleculeComplex complex(QStringLiteral("SAMPLEKWU"));
    QList<SimpleFragment> fragments(3); // what is there stays
    generateLinearFragments(complex, fragments);
    ASSERT_EQ(fragments.size(), 3 + 13 * 9 + 1);
    for (const SimpleFragment& fragment : fragments.sliced(3)) {
        double mass = offsets[static_cast<int>(fragment.type)];
        for (const QChar residue : fragment.residues) {
            mass += residueMass(residue);
        }
        EXPECT_NEAR(fragment.neutralMass, mass, 2e-6) << qPrintable(fragment.residues);
        EXPECT_TRUE(fragment.type < FragmentType::X
                        ? complex.sequence().startsWith(fragment.residues)
                        : complex.sequence().endsWith(fragment.residues))
            << qPrintable(fragment.residues);
    }
    EXPECT_TRUE(fragmentsOf("").isEmpty());
}

TEST(LinearFragmentsTest, GivesTheSameForAMaskWithAReusedBuffer)
{
    QList<SimpleFragment> buffer;
    const FragmentTypeMask masks[] = {kAllFragmentTypes,
                                      fragmentTypeBit(FragmentType::ADot) |
                                          fragmentTypeBit(FragmentType::ZDot),
                                      fragmentTypeBit(FragmentType::Precursor),
                                      0};
    for (const char* sequence : {"LONGERPEPTIDESEQUENCE", "K", "", "SAMPLER"}) {
        const MoleculeComplex complex(QString::fromUtf8(sequence));
        for (const FragmentTypeMask mask : masks) {
            const qsizetype count = generateLinearFragments(complex, mask, buffer);
            QList<SimpleFragment> expected = fragmentsOf(sequence);
            expected.removeIf([mask](const SimpleFragment& fragment) {
                return (mask & fragmentTypeBit(fragment.type)) == 0;
            });
            ASSERT_EQ(count, expected.size()) << sequence << " " << mask;
            for (qsizetype i = 0; i < count; ++i) {
                EXPECT_EQ(buffer[i].neutralMass, expected[i].neutralMass) << sequence << mask;
                EXPECT_EQ(buffer[i].residues, expected[i].residues) << sequence << mask;
            }
        }
    }
}

} // namespace chem
