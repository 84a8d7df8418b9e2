#include "ms_feature/diagrams/GraphyCollection.h"

#include <algorithm>
#include <fstream>
#include <locale>

namespace zel {

namespace {

constexpr int kBlankSize = 128; ///< pixels

std::size_t columnCount(int columns)
{
    return static_cast<std::size_t>(std::max(columns, 1));
}

void writeCell(const Graphy& diagram, std::ostream& out)
{
    const int width = diagram.width;
    const int height = diagram.height;
    out << "<td>\n"
        << "<svg width=\"" << width << "px\" height=\"" << height << "px\" viewBox=\"0 0 " << width
        << ' ' << height << "\"\n"
        << "     xmlns=\"http://www.w3.org/2000/svg\" version=\"1.1\">\n\n";
    for (const ShapeContainer& container : diagram.shapes) {
        out << '\t';
        container.shape->draw(out, container.style);
        out << '\n';
    }
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
        writeCell(m_diagrams[i], out);
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
