#include "feature_finder/records/ChargeFeature.h"

#include "common/stable/Stringify.h"
#include "feature_finder/records/ChargeFeatureList.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <climits>
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
    QList<ChargeFeature> features = {ChargeFeature()};
    for (int i = 0; i < 50; ++i) {
        features.append(randomFeature(random));
    }
    for (const ChargeFeature& feature : std::as_const(features)) {
        ChargeFeature copy = randomFeature(random);
        ASSERT_NE(copy, feature);
        ASSERT_THAT(copy.deserialize(feature.serialize()), IsOk());
        EXPECT_EQ(copy, feature);
        EXPECT_EQ(copy.serialize(), feature.serialize());
    }
    EXPECT_EQ(features.constFirst().monoOffset, INT_MIN);
}

TEST(ChargeFeatureTest, WritesOneFlatObjectNamedAsItsFields)
{
    const ChargeFeature feature = featureOf(1000.25, 7.0, 123, 3);
    const QJsonObject object = feature.toJson();
    QStringList names = kFieldNames;
    names.sort();
    EXPECT_EQ(object.keys(), names);
    EXPECT_EQ(object.value(QStringLiteral("monoIsotopicMass")).toDouble(), 1000.25);
    EXPECT_EQ(object.value(QStringLiteral("apexD1")).toDouble(), 7.0);
    EXPECT_EQ(object.value(QStringLiteral("apexIntensity")).toInt(), 123);
    EXPECT_EQ(object.value(QStringLiteral("charge")).toInt(), 3);
    EXPECT_TRUE(feature.serialize().startsWith(QStringLiteral("{\n    \"apexD1\": 7,\n")));
}

TEST(ChargeFeatureTest, ComparesRealFieldsWithinRounding)
{
    ChargeFeature feature = featureOf(1.0, 5.0, 10);
    ChargeFeature other = feature;
    other.monoIsotopicMass += 1e-13;
    EXPECT_EQ(feature, other);
    other.monoIsotopicMass = 1.0 + 1e-11;
    EXPECT_NE(feature, other);
    feature.monoIsotopicMass = 1000.0;
    other.monoIsotopicMass = 1000.0 + 5e-10; // relative to 1000
    EXPECT_EQ(feature, other);
    other.apexIntensity += 1;
    EXPECT_NE(feature, other);
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

TEST(ChargeFeatureTest, KeepsTheMembersReadBeforeAFailure)
{
    std::mt19937 random(5);
    const ChargeFeature written = randomFeature(random);
    QJsonObject object = written.toJson();
    object.insert(QStringLiteral("endD1"), QStringLiteral("text"));
    ChargeFeature read;
    EXPECT_THAT(read.fromJson(object), HasError(kFileFormatError));
    EXPECT_EQ(read.charge, written.charge);           // before "endD1" in the order of the names
    EXPECT_EQ(read.startD1, ChargeFeature().startD1); // behind it
}

TEST(ChargeFeatureTest, DumpsOneLineForEachField)
{
    const QString dump = stringify(featureOf(1000.5, 2.25, 77),
                                   StringifierState().extendPrefix(QStringLiteral("> ")));
    const QStringList lines = dump.split(QLatin1Char('\n'));
    ASSERT_EQ(lines.size(), kFieldNames.size() + 1);
    EXPECT_EQ(lines[0], QString());
    for (qsizetype i = 0; i < kFieldNames.size(); ++i) {
        const QString start = QStringLiteral("> ") + kFieldNames[i] + QLatin1Char(':');
        EXPECT_TRUE(lines[i + 1].startsWith(start)) << lines[i + 1].toStdString();
    }
    EXPECT_EQ(lines[3], QStringLiteral("> monoIsotopicMass:1000.5"));
    EXPECT_EQ(lines[4], QStringLiteral("> apexIntensity:77"));
    EXPECT_EQ(lines[15], QStringLiteral("> monoOffset:-2147483648"));
}

TEST(ChargeFeatureListTest, ComesBackInTheSortedOrderOfItsMemberNames)
{
    ChargeFeatureList list;
    for (int i = 1; i <= 11; ++i) {
        list.addChargeFeature(featureOf(100.0 * i, i, i));
    }
    ChargeFeatureList read(QList<ChargeFeature>{featureOf(1.0, 1.0, 1)});
    ASSERT_THAT(read.deserialize(list.serialize()), IsOk());
    QList<int> order;
    for (const ChargeFeature& feature : read.chargeFeatures()) {
        order.append(feature.apexIntensity);
    }
    EXPECT_EQ(order, (QList<int>{1, 10, 11, 2, 3, 4, 5, 6, 7, 8, 9}));
    EXPECT_NE(read, list);
}

TEST(ChargeFeatureListTest, StopsAtTheFirstBadMember)
{
    QJsonObject object;
    object.insert(QStringLiteral("feature1"), featureOf(1.0, 1.0, 1).toJson());
    object.insert(QStringLiteral("my feature"), featureOf(2.0, 2.0, 2).toJson());
    object.insert(QStringLiteral("other"), featureOf(3.0, 3.0, 3).toJson());
    object.insert(QStringLiteral("the feature"), featureOf(4.0, 4.0, 4).toJson());
    const auto textOf = [](const QJsonObject& json) {
        return QString::fromUtf8(QJsonDocument(json).toJson());
    };
    ChargeFeatureList list;
    EXPECT_THAT(list.deserialize(textOf(object)),
                HasError(kError, "json object key other doesnt't contain feature"));
    EXPECT_EQ(list.size(), 2);

    object.insert(QStringLiteral("my feature"), 5);
    EXPECT_THAT(list.deserialize(textOf(object)), HasError(kFileFormatError));
    EXPECT_EQ(list.size(), 1);
    EXPECT_THAT(list.deserialize(QStringLiteral("[]")), HasError(kBadParameterError));
    EXPECT_EQ(list.size(), 1);
}

} // namespace zel::test
