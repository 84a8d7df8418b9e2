#include "feature_finder/records/ChargeFeature.h"

#include "feature_finder/records/ChargeFeatureList.h"
#include "feature_finder/records/FeatureFinderObjectUtils.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <random>

namespace zel::test {

TEST(ChargeFeatureTest, ComesBackFromItsTextUnchanged)
{
    std::mt19937 random(11);
    for (int i = 0; i < 20; ++i) {
        const ChargeFeature feature = i == 0 ? ChargeFeature() : randomFeature(random);
        ChargeFeature copy = randomFeature(random);
        ASSERT_THAT(copy.deserialize(feature.serialize()), IsOk());
        EXPECT_EQ(copy, feature);
    }
}

TEST(ChargeFeatureTest, RefusesTextThatIsNoChargeFeature)
{
    ChargeFeature feature;
    for (const char* text : {"", "{\"apexD1\": 1", "[1, 2]"}) {
        EXPECT_THAT(feature.deserialize(QString::fromUtf8(text)), HasError(kBadParameterError));
    }
    const QJsonObject good = ChargeFeature().toJson();
    for (const QString& name : good.keys()) {
        QJsonObject missing = good;
        missing.remove(name);
        EXPECT_THAT(feature.fromJson(missing), HasError(kFileFormatError)) << name.toStdString();
        missing.insert(QStringLiteral("more"), 1); // as many as there should be
        EXPECT_THAT(feature.fromJson(missing), HasError(kError)) << name.toStdString();
    }
    QJsonObject wrongType = good;
    wrongType.insert(QStringLiteral("charge"), 2.5);
    EXPECT_THAT(feature.fromJson(wrongType), HasError(kFileFormatError));
}

TEST(ChargeFeatureListTest, ComesBackFromItsFileInTheSortedOrderOfItsMemberNames)
{
    using Utils = FeatureFinderObjectUtils;
    QList<ChargeFeature> features;
    for (int i = 1; i <= 11; ++i) {
        features.append(featureOf(100.0 * i, i, i));
    }
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("features.json"));
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(path)).size(), 0) << "no file";
    Utils::writeChargeFeaturesJSONToText(path, features);
    const auto read = valueOf(Utils::readChargeFeatureListJSONFromText(path));
    ASSERT_EQ(read.size(), 11);
    EXPECT_EQ(read.chargeFeatures()[1], features[9]) << "feature10 before feature2";
    ASSERT_TRUE(QFile::resize(path, QFile(path).size() / 2));
    EXPECT_THAT(Utils::readChargeFeatureListJSONFromText(path), HasError(kBadParameterError));
}

TEST(ChargeFeatureListTest, StopsAtTheFirstBadMember)
{
    QJsonObject object;
    for (const char* name : {"feature1", "my feature", "other", "the feature"}) {
        object.insert(QString::fromUtf8(name), featureOf(1.0, 1.0, 1).toJson());
    }
    ChargeFeatureList list;
    EXPECT_THAT(list.deserialize(QString::fromUtf8(QJsonDocument(object).toJson())),
                HasError(kError, "json object key other doesnt't contain feature"));
    EXPECT_EQ(list.size(), 2);
    EXPECT_THAT(list.deserialize(QStringLiteral("[]")), HasError(kBadParameterError));
    EXPECT_EQ(list.size(), 2);
}

} // namespace zel::test
