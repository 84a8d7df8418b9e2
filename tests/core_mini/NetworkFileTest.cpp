#include "common/core_mini/src/algo/networks/NetworkFile_p.h"
#include "common/core_mini/src/algo/networks/NetworkInputs_p.h"
#include "common/core_mini/src/algo/parameters/SettableFeatureFinderParameters.h"
#include "tests/support/Matchers.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <cstring>
#include <limits>

namespace zel {

using test::HasError;
using test::IsOk;

namespace {

constexpr qsizetype kFixedBytes = 16; // magic, version, length of the header
constexpr qsizetype kChecksumBytes = 32;

Result<networkfile::NetworkPointer> loadCharge(const QString& path)
{
    return networkfile::load(path,
                             QStringLiteral("charge"),
                             networkinputs::chargeInputCount(),
                             networkinputs::kChargeOutputs);
}

/// The shipped file's content.
QByteArray shipped()
{
    const QString path = SettableFeatureFinderParameters().networkFilePath;
    EXPECT_THAT(loadCharge(path), IsOk()); // makes the resource known
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

quint32 numberAt(const QByteArray& content, qsizetype place)
{
    quint32 number = 0;
    std::memcpy(&number, content.constData() + place, sizeof(number));
    return number;
}

/// The content with its checksum made to fit.
QByteArray sealed(QByteArray content)
{
    content.chop(kChecksumBytes);
    return content + QCryptographicHash::hash(content, QCryptographicHash::Sha256);
}

template <typename T>
QByteArray with(QByteArray content, qsizetype place, T value)
{
    std::memcpy(content.data() + place, &value, sizeof(value));
    return sealed(content);
}

/// The content with another text of equal or other length in its header.
QByteArray withHeader(QByteArray content, const char* before, const char* after)
{
    const auto length = static_cast<qsizetype>(numberAt(content, 12));
    QByteArray header = content.mid(kFixedBytes, length);
    EXPECT_TRUE(header.contains(before)) << before;
    header.replace(before, after);
    content.replace(kFixedBytes, length, header);
    return with(content, 12, static_cast<quint32>(header.size()));
}

} // namespace

TEST(NetworkFileTest, RefusesWhatIsDamagedCutOffOrForeign)
{
    const QByteArray content = shipped();
    ASSERT_THAT(networkfile::parse(content), IsOk());
    for (const qsizetype place : {0, 1, 8, 12, 16, 100, 1000, 5000}) {
        QByteArray flipped = content;
        flipped[place] = static_cast<char>(flipped[place] ^ 1);
        EXPECT_THAT(networkfile::parse(flipped), HasError(kFileFormatError)) << place;
        EXPECT_THAT(networkfile::parse(content.first(place)), HasError(kFileFormatError));
        EXPECT_THAT(networkfile::parse(sealed(content.chopped(place + 1))),
                    HasError(kFileFormatError));
    }
    EXPECT_THAT(networkfile::parse(sealed(content + QByteArray(4, '\0'))),
                HasError(kFileFormatError));
}

TEST(NetworkFileTest, RefusesNonsenseWithAFittingChecksum)
{
    const QByteArray content = shipped();
    const qsizetype layer = kFixedBytes + static_cast<qsizetype>(numberAt(content, 12));
    const auto outputs = static_cast<qsizetype>(numberAt(content, layer + 4));
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    ASSERT_THAT(networkfile::parse(sealed(content)), IsOk());
    const std::pair<const char*, QByteArray> rows[] = {
        {"version", with(content, 8, 2U)},
        {"length of the header", with(content, 12, 0xffffffffU)},
        {"other layout", withHeader(content, "\"version\": 1", "\"version\": 2")},
        {"no layers", withHeader(content, "\"layers\": 3", "\"layers\": 0")},
        {"more layers", withHeader(content, "\"layers\": 3", "\"layers\": 2000000000")},
        {"too many inputs", with(content, layer, 0xffffffffU)},
        {"sizes that do not chain", with(content, layer + 4, static_cast<quint32>(outputs - 1))},
        {"unknown activation", with(content, layer + 8, 2U)},
        {"weight not a number", with(content, layer + 12, nan)},
    };
    for (const auto& [what, damaged] : rows) {
        EXPECT_THAT(networkfile::parse(damaged), HasError(kFileFormatError)) << what;
    }
}

TEST(NetworkFileTest, TellsFilesThatCannotBeOpenedFromThoseThatDoNotFit)
{
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("networks"));
    for (const QString& none : {path, folder.path(), QString()}) {
        EXPECT_THAT(loadCharge(none), HasError(kFileOpenError));
    }
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(withHeader(shipped(), "\"charge\"", "\"other\""));
    file.close();
    EXPECT_THAT(loadCharge(path), HasError(kFileFormatError)) << "no network of that name";
    EXPECT_THAT(networkfile::load(path, QStringLiteral("offset"), 3, 16),
                HasError(kFileFormatError))
        << "of another size";
}

} // namespace zel
