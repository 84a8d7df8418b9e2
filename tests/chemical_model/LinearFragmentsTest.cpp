#include "chemical_model/LinearFragments.h"

#include "common/stable/PhysicalConstants.h"
#include "tests/support/Matchers.h"

#include <QMetaEnum>
#include <gtest/gtest.h>

namespace chem {

namespace {

QList<SimpleFragment> fragmentsOf(const char* sequence)
{
    QList<SimpleFragment> fragments;
    generateLinearFragments(MoleculeComplex(QString::fromUtf8(sequence)), fragments);
    return fragments;
}

/// The fragment of a type with so many residues.
SimpleFragment fragmentOf(const QList<SimpleFragment>& fragments, FragmentType type, int length)
{
    for (const SimpleFragment& fragment : fragments) {
        if (fragment.type == type && fragment.residues.size() == length) {
            return fragment;
        }
    }
    ADD_FAILURE() << "no fragment of type " << static_cast<int>(type) << " and length " << length;
    return {};
}

bool equal(const SimpleFragment& a, const SimpleFragment& b)
{
    return a.neutralMass == b.neutralMass && a.residues == b.residues && a.type == b.type;
}

} // namespace

TEST(LinearFragmentsTest, GivesPublishedFragmentIons)
{
    struct Row
    {
        FragmentType type;
        int length;
        double mz;
        const char* residues;
    };
    // Singly charged ions of PEPTIDE.
    const Row rows[] = {
        {FragmentType::A, 2, 199.1077, "PE"},
        {FragmentType::B, 2, 227.1026, "PE"},
        {FragmentType::C, 2, 244.1292, "PE"},
        {FragmentType::X, 1, 174.0397, "E"},
        {FragmentType::Y, 2, 263.0874, "DE"},
        {FragmentType::ZDot, 1, 132.0417, "E"},
        {FragmentType::BMinusH2O, 2, 209.0921, "PE"},
        {FragmentType::BMinusNH3, 2, 210.0761, "PE"},
    };
    const QList<SimpleFragment> fragments = fragmentsOf("PEPTIDE");
    for (const Row& row : rows) {
        const SimpleFragment fragment = fragmentOf(fragments, row.type, row.length);
        EXPECT_NEAR(fragment.neutralMass + zel::kProtonMassDa, row.mz, 1e-4) << row.mz;
        EXPECT_EQ(fragment.residues, QString::fromUtf8(row.residues));
    }
}

TEST(LinearFragmentsTest, KeepsTheMassBalance)
{
    const MoleculeComplex complex(QStringLiteral("SAMPLEKWU"));
    QList<SimpleFragment> fragments(3); // what is there stays
    generateLinearFragments(complex, fragments);
    ASSERT_EQ(fragments.size(), 3 + 13 * 9 + 1);
    fragments.remove(0, 3);
    const double mass = complex.monoisotopicMass();
    for (int length = 1; length < 9; ++length) {
        const auto massOf = [&](FragmentType type, int residues) {
            return fragmentOf(fragments, type, residues).neutralMass;
        };
        EXPECT_NEAR(
            massOf(FragmentType::B, length) + massOf(FragmentType::Y, 9 - length), mass, 1e-9);
        EXPECT_NEAR(
            massOf(FragmentType::C, length) + massOf(FragmentType::Z, 9 - length), mass, 1e-9);
        EXPECT_NEAR(massOf(FragmentType::CDot, length) + massOf(FragmentType::ZDot, 9 - length),
                    mass,
                    1e-9);
    }
    const SimpleFragment precursor = fragmentOf(fragments, FragmentType::Precursor, 9);
    EXPECT_EQ(precursor.neutralMass, mass);
    EXPECT_EQ(precursor.residues, complex.sequence());
    EXPECT_TRUE(fragmentsOf("").isEmpty());
}

TEST(LinearFragmentsTest, HasTheOffsetOfEachSeries)
{
    // What each type has beyond a glycine residue, from the atoms that it gains and loses.
    const QList<double> offsets = {-27.994915,
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
                                   1.991841};
    const QList<SimpleFragment> fragments = fragmentsOf("G");
    for (int type = 0; type < 13; ++type) {
        const SimpleFragment fragment = fragmentOf(fragments, static_cast<FragmentType>(type), 1);
        EXPECT_NEAR(fragment.neutralMass - 57.021464, offsets[type], 2e-6) << type;
    }
}

TEST(LinearFragmentsTest, GivesTheSameForAMaskWithAReusedBuffer)
{
    QList<SimpleFragment> buffer;
    const FragmentTypeMask masks[] = {
        kAllFragmentTypes,
        fragmentTypeBit(FragmentType::B) | fragmentTypeBit(FragmentType::Y),
        fragmentTypeBit(FragmentType::Precursor),
        fragmentTypeBit(FragmentType::Immonium),
        0,
        fragmentTypeBit(FragmentType::ADot) | fragmentTypeBit(FragmentType::ZDot)};
    for (const char* sequence : {"LONGERPEPTIDESEQUENCE", "PEPTIDE", "K", "", "SAMPLER"}) {
        const MoleculeComplex complex(QString::fromUtf8(sequence));
        for (const FragmentTypeMask mask : masks) {
            const qsizetype count = generateLinearFragments(complex, mask, buffer);
            QList<SimpleFragment> expected = fragmentsOf(sequence);
            expected.removeIf([mask](const SimpleFragment& fragment) {
                return (mask & fragmentTypeBit(fragment.type)) == 0;
            });
            ASSERT_EQ(count, expected.size()) << sequence << " " << mask;
            EXPECT_TRUE(std::equal(expected.cbegin(), expected.cend(), buffer.cbegin(), equal))
                << sequence << " " << mask;
        }
    }
}

TEST(FragmentTypeTest, IsKnownToTheMetaObjectSystem)
{
    const QMetaObject& metaObject = ZEL_QEnumsFragmentType::staticMetaObject;
    const QMetaEnum metaEnum = metaObject.enumerator(metaObject.indexOfEnumerator("FragmentType"));
    EXPECT_EQ(metaEnum.keyCount(), 16);
    EXPECT_EQ(metaEnum.keyToValue("ZDot"), 12);
    EXPECT_EQ(fragmentTypeBit(static_cast<FragmentType>(16)), 0u);
    EXPECT_EQ(fragmentTypeBit(static_cast<FragmentType>(-1)), 0u);
}

} // namespace chem
