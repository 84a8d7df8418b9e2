#include "ms_feature/diagrams/GraphyCollection.h"

#include "common/stable/SvgElement.h"

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <locale>
#include <sstream>

namespace zel {

namespace {

constexpr int kBlankSize = 128; ///< pixels

std::size_t columnCount(int columns)
{
    return static_cast<std::size_t>(std::max(columns, 1));
}

using Shape = std::vector<ShapeContainer>::const_iterator;

const LineSegment* lineOf(const ShapeContainer& container)
{
    return dynamic_cast<const LineSegment*>(container.shape.get());
}

/// Whether the second shape is a line that goes on where the first one, a line, ends.
bool goesOn(const ShapeContainer& first, const ShapeContainer& second)
{
    const LineSegment* const line = lineOf(first);
    const LineSegment* const next = lineOf(second);
    return line != nullptr && next != nullptr && first.style.stroke == second.style.stroke &&
           line->x2 == next->x1 && line->y2 == next->y1;
}

/// From one point of a path to the next, pixels.
struct Step
{
    std::int64_t x;
    std::int64_t y;
};

/// The steps of lines that go on from each other. Level ones in one direction are one step.
std::vector<Step> stepsOf(Shape first, Shape end)
{
    std::vector<Step> steps;
    for (Shape shape = first; shape != end; ++shape) {
        const LineSegment& line = *lineOf(*shape);
        const Step step = {std::int64_t{line.x2} - line.x1, std::int64_t{line.y2} - line.y1};
        if (!steps.empty() && step.y == 0 && steps.back().y == 0 &&
            (step.x < 0) == (steps.back().x < 0)) {
            steps.back().x += step.x;
        } else {
            steps.push_back(step);
        }
    }
    return steps;
}

/// Writes lines that go on from each other as one path, in relative coordinates, which take the
/// fewest digits.
void writePath(Shape first, Shape end, std::ostream& out)
{
    std::ostringstream data;
    data.imbue(std::locale::classic());
    data << 'M' << lineOf(*first)->x1 << ' ' << lineOf(*first)->y1;
    for (const Step& step : stepsOf(first, end)) {
        data << 'l' << step.x << (step.y < 0 ? "" : " ") << step.y;
    }
    SvgElement(out, "path")
        .set("d", data.str())
        .set("fill", "none")
        .set("stroke", first->style.stroke)
        .set("stroke-linejoin", "round")
        .end();
}

void writeShapes(const std::vector<ShapeContainer>& shapes, bool joinsLines, std::ostream& out)
{
    for (auto shape = shapes.begin(); shape != shapes.end();) {
        auto next = shape + 1;
        while (joinsLines && next != shapes.end() && goesOn(*(next - 1), *next)) {
            ++next;
        }
        out << '\t';
        if (next - shape > 1) {
            writePath(shape, next, out);
        } else {
            shape->shape->draw(out, shape->style);
        }
        out << '\n';
        shape = next;
    }
}

void writeCell(const Graphy& diagram, bool joinsLines, std::ostream& out)
{
    const int width = diagram.width;
    const int height = diagram.height;
    out << "<td>\n"
        << "<svg width=\"" << width << "px\" height=\"" << height << "px\" viewBox=\"0 0 " << width
        << ' ' << height << "\"\n"
        << "     xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\">\n\n";
    writeShapes(diagram.shapes, joinsLines, out);
    out << "\n</svg>\n</td\n>";
}

} // namespace

GraphyCollection& GraphyCollection::instance()
{
    static GraphyCollection collection;
    return collection;
}

void GraphyCollection::append(Graphy&& diagram, const std::string& fileStem, int columns)
{
    m_diagrams.push_back(std::move(diagram));
    const bool isFull = m_diagrams.size() >= static_cast<std::size_t>(m_minDiagramsPerFile) &&
                        m_diagrams.size() % columnCount(columns) == 0;
    if (!fileStem.empty() && isFull) {
        ++m_fileCounter;
        flush((fileStem + '.' + std::to_string(m_fileCounter) + ".html").c_str(), columns);
    }
}

void GraphyCollection::write(const char* path, int columns)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        return;
    }
    out.imbue(std::locale::classic());
    const std::size_t rowLength = columnCount(columns);
    while (m_diagrams.size() % rowLength != 0) {
        m_diagrams.emplace_back(kBlankSize, kBlankSize);
    }
    out << "<html><head><title>Graphy collection</title></head><body><table border=\"1\" "
           "cellspacing=\"10\">\n";
    for (std::size_t i = 0; i < m_diagrams.size(); ++i) {
        if (i % rowLength == 0) {
            out << "<tr>\n";
        }
        writeCell(m_diagrams[i], m_joinsLines, out);
        if ((i + 1) % rowLength == 0) {
            out << "</tr>\n";
        }
    }
    out << "</table></body></html>\n";
}

void GraphyCollection::clear()
{
    m_diagrams.clear();
}

void GraphyCollection::flush(const char* path, int columns)
{
    write(path, columns);
    clear();
}

} // namespace zel
