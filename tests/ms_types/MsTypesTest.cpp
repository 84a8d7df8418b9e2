#include "common/ms_types/MsScanId.h"
#include "common/ms_types/XicWindow.h"
#include "tests/support/Matchers.h"

#include <gtest/gtest.h>

namespace zel {

TEST(MsTypesTest, ScanIdsTellWhichPartsAreSet)
{
    using msreader::MsScanId;
    EXPECT_EQ(MsScanId(12).toString(), QStringLiteral("12"));
    EXPECT_EQ(MsScanId(12, 3).toString(), QStringLiteral("12.3"));
    EXPECT_EQ(MsScanId().toString(), QStringLiteral("-.-"));
    EXPECT_NE(MsScanId(12), MsScanId(12, 0));
}

// Angiotensin II, DRVYIHPF, C50H71N13O12: [M+2H]2+ is m/z 523.7745 and [M+H]+ 1046.5418 (a common
// calibrant).
TEST(MsTypesTest, CentresAWindowOnTheIon)
{
    constexpr double angiotensinMass = 1045.53451;
    const XicWindowFactory factory;
    const XicWindow window = factory.create(angiotensinMass, 2, 10.0, 1.0, 3.0, 0);
    EXPECT_THAT(window.mz, test::NearPpm(523.7745, 0.2));
    const XicDimensions box = window.toXicDimensions();
    EXPECT_NEAR(
        *box.mzInterval().maximum() - *box.mzInterval().minimum(), 2 * 523.7745 * 10e-6, 1e-6);
    EXPECT_EQ(box.timeInterval(), (math::ClosedMultiInterval<double, 6>(1.0, 3.0)));

    EXPECT_THAT(factory.create(angiotensinMass, 1, 10.0, 1.0, 3.0, 0).mz,
                test::NearPpm(1046.5418, 0.2));
    EXPECT_NEAR(factory.create(angiotensinMass, 2, 10.0, 1.0, 3.0, 3).mz - window.mz,
                3 * 1.003355 / 2,
                1e-9);
}

} // namespace zel
