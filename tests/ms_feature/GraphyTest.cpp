#include "ms_feature/diagrams/GraphyCollection.h"
#include "tests/support/HtmlPage.h"
#include "tests/support/Matchers.h"

#include <QDir>
#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <sstream>

namespace zel {

using test::diagramsOf;
using test::textOf;

namespace {

/// 100 x 50 pixels for x from 2 to 12 and y from -10 to 90.
Graphy canvas()
{
    Graphy diagram(100, 50);
    diagram.xMin = 2.0;
    diagram.xMax = 12.0;
    diagram.yMin = -10.0;
    diagram.yMax = 90.0;
    return diagram;
}

/// What the last shape of the diagram is written as.
std::string lastOf(const Graphy& diagram)
{
    std::ostringstream out;
    diagram.shapes.back().shape->draw(out, diagram.shapes.back().style);
    return out.str();
}

/// The one collection, empty before and after, and a folder for its files.
class GraphyCollectionTest : public testing::Test
{
protected:
    GraphyCollectionTest() { m_collection.clear(); }
    ~GraphyCollectionTest() override { m_collection.clear(); }

    void appendBlank(int count, const std::string& stem = {}, int columns = 1)
    {
        for (int i = 0; i < count; ++i) {
            m_collection.append(Graphy(7, 5), stem, columns);
        }
    }
    QByteArray path(const char* name) const
    {
        return m_folder.filePath(QString::fromLatin1(name)).toUtf8();
    }

    GraphyCollection& m_collection = GraphyCollection::instance();
    QTemporaryDir m_folder;
};

} // namespace

TEST(GraphyTest, WritesEachShapeWithTheStyleOfItsMoment)
{
    using testing::HasSubstr;
    Graphy diagram = canvas();
    diagram.setStroke(0.9F, 0.5F, 0.7F, 0.05F);
    diagram.setFill(0.8F, 0.0F, 0.625F, 0.2F);
    diagram.lineToData(2.06, 88.9);
    diagram.boxData(3.0, 0.0, 4.0, 40.0);
    EXPECT_THAT(lastOf(diagram), HasSubstr(R"x(x="10" y="25" width="10" height="20")x"));
    EXPECT_THAT(lastOf(diagram), HasSubstr(R"x(fill="rgb(80%, 0%, 62.5%)" fill-opacity="0.2")x"));
    diagram.circleData(7.0, 40.0, 10.0); // (10 / 100 + 100 / 50) / 2 = 1.05 units a pixel
    EXPECT_THAT(lastOf(diagram), HasSubstr(R"x(cx="50" cy="25" r="10")x"));
    diagram.lineToData(12.0, 90.0);
    EXPECT_THAT(lastOf(diagram), HasSubstr(R"x(x1="1" y1="1" x2="100" y2="0")x"))
        << "only lines move the pen";
}

// Plots of one point, and points without a number, end up somewhere, not in undefined behaviour.
TEST(GraphyTest, SurvivesRangesWithoutExtent)
{
    Graphy diagram(10, 10);
    diagram.lineData(1e300, -1e300, std::nan(""), 0.0);
    diagram.boxData(-1e300, 1e300, 1e300, -1e300);
    EXPECT_THAT(lastOf(diagram), testing::HasSubstr(R"x(width="4294967295")x"));
    diagram.circleData(0.0, 0.0, 4.4);
    EXPECT_THAT(lastOf(diagram), testing::HasSubstr(R"x(r="4")x")) << "scale 1";
}

TEST_F(GraphyCollectionTest, WritesAPageOfFullRows)
{
    const auto page = [this] { return textOf(QString::fromUtf8(path("page.html"))); };
    m_collection.append(canvas(), {}, 1);
    m_collection.write(path("page.html"), 2);
    EXPECT_EQ(diagramsOf(page()).size(), 2) << "an empty one fills the row";
    appendBlank(3); // two are there
    m_collection.flush(path("page.html"), 4);
    EXPECT_EQ(page().count(QStringLiteral("<tr>")), 2);
    EXPECT_EQ(page().count(QStringLiteral("width=\"100px\" height=\"50px\"")), 1);
    EXPECT_EQ(page().count(QStringLiteral("width=\"128px\"")), 4);
    m_collection.write(path("page.html"), 4);
    EXPECT_TRUE(diagramsOf(page()).isEmpty()) << "a flush clears";
}

TEST_F(GraphyCollectionTest, JoinsLinesThatGoOnFromEachOtherIfAsked)
{
    Graphy diagram(100, 50);
    diagram.line(0, 9, 5, 9);
    for (const auto& [x, y] : {std::pair(5, 9), {8, 9}, {8, 2}, {9, 4}}) {
        diagram.line(diagram.penX, diagram.penY, x, y);
    }
    diagram.line(9, 5, 7, 5); // from elsewhere
    diagram.line(7, 5, 9, 5);
    diagram.setStroke(1.0F, 0.0F, 0.0F, 1.0F);
    diagram.line(9, 5, 2147483647, -2147483647); // in another stroke
    diagram.text(1, 2, "one");
    m_collection.append(std::move(diagram), {}, 1);
    m_collection.setJoinsLines(true);
    m_collection.write(path("page.html"), 1);
    m_collection.setJoinsLines(false);
    const QStringList shapes = diagramsOf(textOf(QString::fromUtf8(path("page.html"))))[0];
    const QString style =
        QStringLiteral(R"x(" fill="none" stroke="black" stroke-linejoin="round" />)x");
    ASSERT_EQ(shapes.size(), 4);
    EXPECT_EQ(shapes[0], QStringLiteral("\t<path d=\"M0 9l8 0l0-7l1 2") + style);
    EXPECT_EQ(shapes[1], QStringLiteral("\t<path d=\"M9 5l-2 0l2 0") + style);
    EXPECT_TRUE(shapes[2].startsWith(QStringLiteral("\t<line x1=\"9\"")));
}

TEST_F(GraphyCollectionTest, WritesANumberedFileOnceARowIsFullBeyondAThousand)
{
    const std::string stem = path("Stem").toStdString();
    const auto files = [this] {
        return QDir(m_folder.path()).entryList({QStringLiteral("Stem.*.html")});
    };
    appendBlank(999);
    m_collection.append(Graphy(7, 5), {}, 1);
    appendBlank(1, stem, 3);
    EXPECT_EQ(files().size(), 0) << "1001 diagrams";
    appendBlank(1, stem, 3);
    ASSERT_EQ(files().size(), 1);
    const QString page = textOf(m_folder.filePath(files().constFirst()));
    EXPECT_EQ(diagramsOf(page).size(), 1002);
    EXPECT_EQ(page.count(QStringLiteral("<tr>")), 334);
    appendBlank(1, stem, 3);
    EXPECT_EQ(files().size(), 1) << "it counts from zero again";

    // A file that cannot be opened costs its diagrams.
    m_collection.flush(path("no folder/page.html"), 1);
    m_collection.write(path("page.html"), 1);
    EXPECT_TRUE(diagramsOf(textOf(QString::fromUtf8(path("page.html")))).isEmpty());
}

} // namespace zel
