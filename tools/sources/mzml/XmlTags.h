#pragma once

#include <QtGlobal>

#include <array>
#include <span>

namespace zel::msreader {

/// Follows the tags of an XML text that comes in pieces, to find a "<" inside a tag or a quoted
/// value, where XML allows none: a quote or a ">" is missing before it.
///
/// It may start anywhere. What comes before the first "<" is then not looked at. Comments become
/// blanks, and so do quotes and brackets in instructions ("<?...?>"), since libpwiz takes them for
/// more.
class XmlTags
{
public:
    /// \param bytes  follow those of the last call
    /// \return the index of the first "<" inside a tag; -1 when there is none
    qsizetype follow(std::span<char> bytes);

private:
    enum class Place {
        Text,
        TagStart,
        Tag,
        DoubleQuoted,
        SingleQuoted,
        Declaration, ///< "<!" and on
        Instruction, ///< "<?" and on
    };

    Place placeAfter(char byte);
    bool isComment() const;
    bool endsHere() const;

    Place m_place = Place::Text;
    // Of a declaration (a comment, a CDATA section or a document type) or an instruction:
    qsizetype m_length = 0; ///< bytes after "<!" or "<?"
    char m_first = 0;
    std::array<char, 2> m_last{};
};

} // namespace zel::msreader
