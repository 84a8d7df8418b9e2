#pragma once

#include "common/stable/Export.h"
#include "ms_feature/diagrams/Graphy.h"

#include <string>
#include <vector>

namespace zel {

/// The finished diagrams of the process, written as one HTML page: a table, each cell one diagram
/// as inline SVG. The targeted finders and the alignment fill it when they are given a file name.
///
/// Failures are not reported: a file that cannot be opened leaves no trace. There is no lock; who
/// asks for diagrams works from one thread.
class ZEL_EXPORT GraphyCollection
{
public:
    /// The one collection, made at first use.
    static GraphyCollection& instance();
    GraphyCollection(const GraphyCollection&) = delete;
    GraphyCollection& operator=(const GraphyCollection&) = delete;

    /// Adds a diagram at the end.
    /// \param fileStem  unless empty, the collection is written to "<fileStem>.<number>.html" and
    ///                  cleared as soon as it holds 1000 diagrams or more in full rows; numbers
    ///                  count from 1
    /// \param columns   how many diagrams stand in a row, at least 1; the same below
    void append(Graphy&& diagram, const std::string& fileStem, int columns);
    /// Fills the last row up with blank diagrams, which stay, and writes the page in place of what
    /// the file held. Nothing happens when the file cannot be opened.
    void write(const char* path, int columns);
    /// Whether `write` draws lines of one stroke that go on from each other as one path, which
    /// looks the same and takes a small part of the space; else each line is an element of its own,
    /// which is the default.
    void setJoinsLines(bool joinsLines) { m_joinsLines = joinsLines; }
    /// Drops all diagrams.
    void clear();
    /// Writes, then clears, even when writing failed.
    void flush(const char* path, int columns);

private:
    GraphyCollection() = default;

    std::vector<Graphy> m_diagrams;
    int m_fileCounter = 0;
    int m_minDiagramsPerFile = 1000;
    bool m_joinsLines = false;
};

} // namespace zel
