#include "common/ms_types/TurboXicSettings.h"

#include "tests/support/Matchers.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>
#include <gtest/gtest.h>

namespace zel {

TEST(TurboXicSettingsTest, SurvivesAStreamAndRefusesAShortOne)
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
