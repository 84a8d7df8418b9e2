#include "common/ms_types/MsDataSampleId.h"
#include "common/ms_types/MsDataTypes.h"
#include "common/ms_types/MsScanId.h"
#include "common/ms_types/XicWindow.h"
#include "tests/support/Matchers.h"

#include <QHash>
#include <QMap>
#include <QMetaEnum>
#include <gtest/gtest.h>

namespace zel {

TEST(MsTypesTest, SampleIdsAreKeysOfHashAndMap)
{
    QHash<MsDataSampleId, int> hash;
    QMap<MsDataSampleId, int> map;
    for (const int id : {3, -1, 2, 3}) {
        ++hash[MsDataSampleId(id)];
        ++map[MsDataSampleId(id)];
    }
    EXPECT_EQ(hash.size(), 3);
    EXPECT_EQ(hash.value(MsDataSampleId(3)), 2);
    EXPECT_EQ(map.keys(),
              (QList<MsDataSampleId>{MsDataSampleId(-1), MsDataSampleId(2), MsDataSampleId(3)}));
}

TEST(MsTypesTest, ScanIdsTellWhichPartsAreSet)
{
    using msreader::MsScanId;
    EXPECT_EQ(MsScanId(12).toString(), QStringLiteral("12"));
    EXPECT_EQ(MsScanId(12, 3).toString(), QStringLiteral("12.3"));
    EXPECT_EQ(MsScanId().toString(), QStringLiteral("-.-"));
    EXPECT_NE(MsScanId(12), MsScanId(12, 0));
}

TEST(MsTypesTest, TurnsAFilterIntoItsKeyText)
{
    namespace types = msreader::ZEL_QEnumsMsDataTypes;
    const int index = types::staticMetaObject.indexOfEnumerator("PeakPickingFilter");
    ASSERT_GE(index, 0);
    const QMetaEnum filters = types::staticMetaObject.enumerator(index);
    EXPECT_STREQ(filters.valueToKey(static_cast<int>(types::PeakPickingFilter::Profile)),
                 "Profile");
    EXPECT_STREQ(filters.valueToKey(1), "Centroid");
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
