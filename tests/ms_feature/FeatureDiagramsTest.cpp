#include "ms_feature/finders/MsFeatureFinderSegV2.h"
#include "tests/support/HtmlPage.h"
#include "tests/support/Matchers.h"
#include "tests/support/XicSource.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace zel {

using test::valueOf;

namespace {

qsizetype countOf(const QStringList& shapes, const char* element)
{
    return shapes.filter(QLatin1Char('<') + QString::fromLatin1(element)).size();
}

/// Runs the finder on an XIC of two peaks, and on a flat one, and reads what it drew.
template <typename Finder, typename... Arguments>
QList<QStringList> diagramsBy(Arguments... arguments)
{
    const QTemporaryDir folder;
    MsFeatureFinderSettings settings;
    settings.adaptiveHtmlDumpFilename = folder.filePath(QStringLiteral("page.html"));
    const QList<PeptideSpectrumMatch> psms = {
        test::psmAt(15.5), test::psmAt(16.5), test::psmAt(16.6)};
    const PlotBase xic(
        test::chromatogramOf({{15.5, 1e6, 0.1}, {16.5, 5e5, 0.1}}, 14.0, 18.0, 201, 100.0));
    {
        test::Opened<Finder> finder(settings, arguments...);
        const auto drawn = valueOf(finder.findFeature(psms, xic));
        test::Opened<Finder> silent(MsFeatureFinderSettings(), arguments...);
        const auto undrawn = valueOf(silent.findFeature(psms, xic));
        EXPECT_EQ(drawn->timeIntervalList().size(), 2);
        EXPECT_EQ(undrawn->timeIntervalList().size(), 2);
        EXPECT_FALSE(valueOf(
            finder.findFeature(psms, PlotBase(test::chromatogramOf({}, 14.0, 18.0, 201, 5.0)))));
    }
    return test::diagramsOf(test::textOf(settings.adaptiveHtmlDumpFilename));
}

} // namespace

TEST(FeatureDiagramsTest, BothAdaptiveFindersDrawEachFeature)
{
    for (const bool second : {false, true}) {
        const QList<QStringList> diagrams =
            second ? diagramsBy<MsFeatureFinderSegV2>(std::optional<double>(), false)
                   : diagramsBy<MsFeatureFinderSeg>();
        ASSERT_EQ(diagrams.size(), 4) << "the flat XIC has no feature";
        const qsizetype curve = 1 + 1 + 201; // base line, pen, points
        EXPECT_EQ(countOf(diagrams[0], "line"), curve);
        EXPECT_EQ(countOf(diagrams[1], "line"), 2 + (second ? 400 : 160));
        EXPECT_GE(countOf(diagrams[2], "line"), curve + 1 + 5) << "at least five extremes";

        const QStringList& last = diagrams[3];
        EXPECT_EQ(countOf(last, "line"), curve);
        ASSERT_EQ(countOf(last, "rect"), 4) << "span and half-maximum range of two features";
        ASSERT_EQ(countOf(last, "circle"), 3);
        // Minute 15.5 of 14 to 18 on 400 pixels; a tenth of 200 pixels.
        EXPECT_THAT(last[curve + 2].toStdString(), testing::HasSubstr("cx=\"150\" cy=\"180\""));
        EXPECT_THAT(last[curve + 7].toStdString(), testing::HasSubstr(">2 features<"));
        EXPECT_THAT(last[curve + 9].toStdString(), testing::ContainsRegex(">FWHM: 0.2[34]"));
    }
}

} // namespace zel
