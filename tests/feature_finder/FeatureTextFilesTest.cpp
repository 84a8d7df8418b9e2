#include "feature_finder/hills/HillsUtils.h"
#include "feature_finder/records/FeatureFinderObjectUtils.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel::test {

namespace {

class FeatureTextFilesTest : public ::testing::Test
{
protected:
    QString pathOf(const char* name) const { return m_dir.filePath(QString::fromUtf8(name)); }

    static QByteArray contentOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("no such file");
    }

private:
    QTemporaryDir m_dir;
};

} // namespace

TEST_F(FeatureTextFilesTest, ReadsBackTheFeaturesThatItWrote)
{
    std::mt19937 random(2);
    const QList<ChargeFeature> features = {randomFeature(random), randomFeature(random)};
    const QString path = pathOf("features.json");
    FeatureFinderObjectUtils::writeChargeFeaturesJSONToText(path, features);
    const auto read = FeatureFinderObjectUtils::readChargeFeatureListJSONFromText(path);
    EXPECT_EQ(valueOf(read), ChargeFeatureList(features));
    EXPECT_EQ(contentOf(path), ChargeFeatureList(features).serialize().toUtf8());
}

TEST_F(FeatureTextFilesTest, TakesAMissingFileForAnEmptyListButNotABrokenOne)
{
    using Utils = FeatureFinderObjectUtils;
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(QString())).size(), 0);
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(pathOf("none.json"))).size(), 0);

    const QString path = pathOf("broken.json");
    Utils::writeChargeFeaturesJSONToText(path, {ChargeFeature()});
    QFile file(path);
    ASSERT_TRUE(file.resize(file.size() / 2));
    EXPECT_THAT(Utils::readChargeFeatureListJSONFromText(path), HasError(kBadParameterError));

    Utils::writeChargeFeaturesJSONToText(pathOf("no/such/folder.json"), {ChargeFeature()});
    Utils::writeChargeFeaturesToCSV(pathOf("no/such/folder.csv"), {ChargeFeature()});
    EXPECT_FALSE(QFile::exists(pathOf("no")));
}

TEST_F(FeatureTextFilesTest, WritesCsvWithSixSignificantDigits)
{
    ChargeFeature feature = featureOf(1234.56789, 20.5, 1000000, 2);
    feature.mzApexOfCluster = 618.291234;
    feature.mzFirstOfCluster = 7.0; // not written
    feature.averagineScore = 1e-7;
    feature.startD1 = 18.0;
    feature.endD1 = 1234567.0;
    feature.startD2 = 100.0;
    feature.endD2 = 200.25;
    feature.apexD2 = 150.0;
    feature.isotopeCount = 4;
    const QString path = pathOf("features.csv");
    FeatureFinderObjectUtils::writeChargeFeaturesToCSV(path, {ChargeFeature(), feature, feature});
    FeatureFinderObjectUtils::writeChargeFeaturesToCSV(path, {feature}); // replaces
    EXPECT_EQ(
        contentOf(path),
        "mz,monoMass,intensity,averagine,startD1,endD1,apexD1,startD2,endD2,apexD2,"
        "isotopeCount,charge,apexIndex,monoOffset\n"
        "618.291, 1234.57, 1000000, 1e-07, 18, 1.23457e+06, 20.5, 100, 200.25, 150, 4, 2, -1, "
        "-2147483648\n");
}

TEST_F(FeatureTextFilesTest, WritesHillsOfFramesAndOfRuns)
{
    HillD2 frameHill;
    EXPECT_FALSE(frameHill.isSet());
    frameHill.mzLo = 500.002;
    frameHill.mzHi = 500.25;
    frameHill.mzApex = 500.125;
    frameHill.d2Lo = 3;
    frameHill.d2Hi = 9;
    frameHill.d2Apex = 6;
    frameHill.intensity = 12.5;
    EXPECT_TRUE(frameHill.isSet());
    HillsUtils::writeHillsListToCSV({frameHill}, pathOf("d2.csv"));
    EXPECT_EQ(contentOf(pathOf("d2.csv")),
              "mzApex,mzLo,mzHi,d2Lo,d2Hi,d2Apex,intensity\n500.125,500.002,500.25,3,9,6,12.5\n");

    HillD1 runHill;
    runHill.mzLo = 499.5;
    runHill.mzHi = 500.5;
    runHill.mzApex = 500.012345;
    runHill.d1Lo = 10;
    runHill.d1Hi = 20;
    runHill.d1Apex = 15;
    HillsUtils::writeHillsListToCSV({runHill}, pathOf("d1.csv"), {{10, 3.25}});
    EXPECT_EQ(contentOf(pathOf("d1.csv")),
              "mzLo,mzHi,rtLo,rtHi,color,opacity,misc\n"
              "499.5, 500.5, 3.25, 0, #FF0000, 0.3, 500.012 15\n");
}

} // namespace zel::test
