#include "common/ms_types/TurboXicSettings.h"
#include "common/ms_types/XicWindow.h"
#include "tests/support/Matchers.h"

#include <QDataStream>
#include <QIODevice>
#include <gtest/gtest.h>

namespace zel {

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
    EXPECT_NEAR(factory.create(angiotensinMass, 2, 10.0, 1.0, 3.0, 3).mz - window.mz,
                3 * 1.003355 / 2,
                1e-9);
}

TEST(MsTypesTest, TurboXicSettingsSurviveAStreamAndRefuseAShortOne)
{
    const TurboXicSettings settings{
        -1, 3000, 2000, static_cast<msreader::PeakPickingFilter>(200), true};
    QByteArray bytes;
    QDataStream writer(&bytes, QIODevice::WriteOnly);
    writer << settings;
    ASSERT_EQ(bytes.size(), 14);
    TurboXicSettings read;
    QDataStream reader(bytes);
    reader >> read;
    EXPECT_EQ(read, settings);
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        TurboXicSettings untouched;
        QDataStream stream(bytes.first(size));
        stream >> untouched;
        EXPECT_EQ(stream.status(), QDataStream::ReadPastEnd) << size;
        EXPECT_EQ(untouched, TurboXicSettings()) << size;
    }
}

} // namespace zel
