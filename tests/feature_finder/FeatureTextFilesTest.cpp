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
    using Utils = FeatureFinderObjectUtils;
    std::mt19937 random(2);
    const QList<ChargeFeature> features = {randomFeature(random), randomFeature(random)};
    const QString path = pathOf("features.json");
    Utils::writeChargeFeaturesJSONToText(path, features);
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(path)), ChargeFeatureList(features));
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(pathOf("none.json"))).size(), 0)
        << "a missing file is an empty list";
    QFile file(path);
    ASSERT_TRUE(file.resize(file.size() / 2));
    EXPECT_THAT(Utils::readChargeFeatureListJSONFromText(path), HasError(kBadParameterError));
}

TEST_F(FeatureTextFilesTest, WritesFeaturesAsCsv)
{
    ChargeFeature feature = featureOf(1234.56789, 20.5, 1000000, 2);
    feature.mzApexOfCluster = 618.291234;
    feature.averagineScore = 1e-7;
    feature.startD1 = 18.0;
    feature.endD1 = 1234567.0;
    feature.isotopeCount = 4;
    const QString path = pathOf("features.csv");
    FeatureFinderObjectUtils::writeChargeFeaturesToCSV(path, {ChargeFeature(), feature});
    FeatureFinderObjectUtils::writeChargeFeaturesToCSV(path, {feature}); // replaces
    EXPECT_EQ(contentOf(path),
              "mz,monoMass,intensity,averagine,startD1,endD1,apexD1,startD2,endD2,apexD2,"
              "isotopeCount,charge,apexIndex,monoOffset\n"
              "618.291, 1234.57, 1000000, 1e-07, 18, 1.23457e+06, 20.5, -1, -1, -1, 4, 2, -1, "
              "-2147483648\n");
}

} // namespace zel::test
