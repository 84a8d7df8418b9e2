#pragma once

#include <ostream>
#include <string>

namespace zel {

/// Writes one element of an SVG picture to a text stream: its begin when it is made, then the
/// attributes in the order in which they are set, then one of the two ends. Numbers are written as
/// the stream does it; its locale should be the classic one. Texts are written as they stand:
/// whoever has `<`, `&` or quotes in them escapes them.
class SvgElement
{
public:
    SvgElement(std::ostream& out, const char* name)
        : m_out(out)
        , m_name(name)
    {
        m_out << '<' << m_name;
    }

    template <typename Value>
    SvgElement& set(const char* attribute, const Value& value)
    {
        m_out << ' ' << attribute << "=\"" << value << '"';
        return *this;
    }

    /// Ends an element that holds nothing.
    void end() { m_out << " />"; }
    /// Ends an element that holds a text or other elements.
    void end(const std::string& content) { m_out << '>' << content << "</" << m_name << '>'; }

private:
    std::ostream& m_out;
    const char* m_name;
};

} // namespace zel
