#include "feature_finder/records/ChargeFeature.h"

#include "feature_finder/records/ChargeFeatureList.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

#include <random>

namespace zel::test {

namespace {

constexpr const char* kUnknownKeyText =
    "can't validate keys in ChargeFeature json; possible schema change, keys added/removed";

/// In the order of the record.
const QStringList kFieldNames = QStringLiteral("mzApexOfCluster mzFirstOfCluster monoIsotopicMass "
                                               "apexIntensity averagineScore startD1 endD1 apexD1 "
                                               "startD2 endD2 apexD2 isotopeCount charge apexIndex "
                                               "monoOffset")
                                    .split(QLatin1Char(' '));

} // namespace

TEST(ChargeFeatureTest, ComesBackFromItsTextUnchanged)
{
    std::mt19937 random(11);
    for (int i = 0; i < 20; ++i) {
        const ChargeFeature feature = i == 0 ? ChargeFeature() : randomFeature(random);
        ChargeFeature copy = randomFeature(random);
        ASSERT_THAT(copy.deserialize(feature.serialize()), IsOk());
        EXPECT_EQ(copy, feature);
    }
    EXPECT_EQ(ChargeFeature().toJson().size(), kFieldNames.size());
}

TEST(ChargeFeatureTest, ComparesRealFieldsWithinRounding)
{
    const ChargeFeature feature = featureOf(1000.0, 5.0, 10);
    EXPECT_EQ(feature, featureOf(1000.0 + 5e-10, 5.0, 10)) << "relative to 1000";
    EXPECT_NE(feature, featureOf(1000.0 + 5e-9, 5.0, 10));
    EXPECT_NE(feature, featureOf(1000.0, 5.0, 11));
}

TEST(ChargeFeatureTest, RefusesTextThatIsNoChargeFeature)
{
    ChargeFeature feature;
    for (const char* text : {"", "no json", "{\"apexD1\": 1", "[1, 2]", "[]"}) {
        EXPECT_THAT(feature.deserialize(QString::fromUtf8(text)), HasError(kBadParameterError))
            << text;
    }

    QJsonObject unknown = ChargeFeature().toJson();
    unknown.insert(QStringLiteral("more"), 1);
    EXPECT_THAT(feature.fromJson(unknown), HasError(kError, kUnknownKeyText));
    unknown.remove(QStringLiteral("apexD1")); // fifteen again
    EXPECT_THAT(feature.fromJson(unknown), HasError(kError, kUnknownKeyText));

    for (const QString& name : kFieldNames) {
        QJsonObject missing = ChargeFeature().toJson();
        missing.remove(name);
        const Error error = feature.fromJson(missing);
        EXPECT_THAT(error, HasError(kFileFormatError)) << name.toStdString();
        EXPECT_TRUE(error.message().contains(name)) << error.message().toStdString();
    }
    QJsonObject wrongType = ChargeFeature().toJson();
    wrongType.insert(QStringLiteral("charge"), 2.5);
    EXPECT_THAT(feature.fromJson(wrongType), HasError(kFileFormatError));
}

TEST(ChargeFeatureListTest, ComesBackInTheSortedOrderOfItsMemberNames)
{
    ChargeFeatureList list;
    for (int i = 1; i <= 11; ++i) {
        list.addChargeFeature(featureOf(100.0 * i, i, i));
    }
    ChargeFeatureList read(QList<ChargeFeature>{featureOf(1.0, 1.0, 1)});
    ASSERT_THAT(read.deserialize(list.serialize()), IsOk());
    ASSERT_EQ(read.size(), 11);
    EXPECT_EQ(read.chargeFeatures()[1], list.chargeFeatures()[9]) << "feature10 before feature2";
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
