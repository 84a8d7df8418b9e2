#include "feature_finder/records/FeatureFinderObjectUtils.h"
#include "tests/support/Features.h"
#include "tests/support/Matchers.h"

#include <QFile>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel::test {

TEST(FeatureTextFilesTest, ReadsBackTheFeaturesThatItWrote)
{
    using Utils = FeatureFinderObjectUtils;
    std::mt19937 random(2);
    const QList<ChargeFeature> features = {randomFeature(random), randomFeature(random)};
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("features.json"));
    Utils::writeChargeFeaturesJSONToText(path, features);
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(path)), ChargeFeatureList(features));
    EXPECT_EQ(valueOf(Utils::readChargeFeatureListJSONFromText(
                          folder.filePath(QStringLiteral("none.json"))))
                  .size(),
              0)
        << "a missing file is an empty list";
    QFile file(path);
    ASSERT_TRUE(file.resize(file.size() / 2));
    EXPECT_THAT(Utils::readChargeFeatureListJSONFromText(path), HasError(kBadParameterError));
}

} // namespace zel::test
