#include "ms_feature/finders/MsFeatureFinderSegV2.h"
#include "tests/support/HtmlPage.h"
#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel {

using test::valueOf;

TEST(FeatureDiagramsTest, TheAdaptiveFinderDrawsEachFeature)
{
    const QTemporaryDir folder;
    MsFeatureFinderSettings settings;
    settings.adaptiveHtmlDumpFilename = folder.filePath(QStringLiteral("page.html"));
    const QList<PeptideSpectrumMatch> psms = {
        test::psmAt(15.5), test::psmAt(16.5), test::psmAt(16.6)};
    const PlotBase xic(
        test::chromatogramOf({{15.5, 1e6, 0.1}, {16.5, 5e5, 0.1}}, 14.0, 18.0, 201, 100.0));
    const PlotBase flat(test::chromatogramOf({}, 14.0, 18.0, 201, 5.0));
    {
        test::Opened<MsFeatureFinderSegV2> finder(settings, std::optional<double>(), false);
        EXPECT_EQ(valueOf(finder.findFeature(psms, xic))->timeIntervalList().size(), 2);
        EXPECT_FALSE(valueOf(finder.findFeature(psms, flat)));
    }
    const QList<QStringList> diagrams =
        test::diagramsOf(test::textOf(settings.adaptiveHtmlDumpFilename));
    ASSERT_EQ(diagrams.size(), 4) << "the flat XIC has no feature";
    EXPECT_EQ(diagrams[3].filter(QStringLiteral("<rect")).size(), 4) << "span and half maximum";
    // Minute 15.5 of 14 to 18 on 400 pixels; a tenth of 200 pixels.
    const QStringList apexes = diagrams[3].filter(QStringLiteral("<circle"));
    ASSERT_EQ(apexes.size(), 3);
    EXPECT_TRUE(apexes[0].contains(QStringLiteral("cx=\"150\" cy=\"180\"")));
}

} // namespace zel
