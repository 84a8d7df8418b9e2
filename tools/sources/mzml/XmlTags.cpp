#include "tools/sources/mzml/XmlTags.h"

#include <algorithm>

namespace zel::msreader {

qsizetype XmlTags::follow(std::span<char> bytes)
{
    for (auto byte = bytes.begin(); byte != bytes.end(); ++byte) {
        if (m_place == Place::Text) { // most of a file are numbers in text form
            byte = std::find(byte, bytes.end(), '<');
            if (byte == bytes.end()) {
                break;
            }
        } else if (*byte == '<' && m_place != Place::Declaration && m_place != Place::Instruction) {
            return byte - bytes.begin();
        }
        const bool wasComment = isComment();
        const bool wasInstruction = m_place == Place::Instruction;
        m_place = placeAfter(*byte);
        const bool isMark = *byte == '"' || *byte == '\'' || *byte == '<' || *byte == '>';
        if ((wasComment && isComment() && *byte != '-') ||
            (wasInstruction && m_place == Place::Instruction && isMark)) {
            *byte = ' ';
        }
    }
    return -1;
}

XmlTags::Place XmlTags::placeAfter(char byte)
{
    switch (m_place) {
    case Place::Text:
        return Place::TagStart;
    case Place::TagStart:
        m_length = 0;
        m_last = {};
        if (byte == '!' || byte == '?') {
            return byte == '!' ? Place::Declaration : Place::Instruction;
        }
        [[fallthrough]];
    case Place::Tag:
        if (byte == '"') {
            return Place::DoubleQuoted;
        }
        if (byte == '\'') {
            return Place::SingleQuoted;
        }
        return byte == '>' ? Place::Text : Place::Tag;
    case Place::DoubleQuoted:
        return byte == '"' ? Place::Tag : Place::DoubleQuoted;
    case Place::SingleQuoted:
        return byte == '\'' ? Place::Tag : Place::SingleQuoted;
    case Place::Declaration:
    case Place::Instruction:
        if (byte == '>' && endsHere()) {
            return Place::Text;
        }
        m_first = m_length++ == 0 ? byte : m_first;
        m_last = {m_last[1], byte};
        break;
    }
    return m_place;
}

bool XmlTags::isComment() const
{
    return m_place == Place::Declaration && m_length > 0 && m_first == '-';
}

/// Whether a ">" closes the declaration or instruction: a comment ends with "-->", a CDATA section
/// with "]]>", an instruction with "?>".
bool XmlTags::endsHere() const
{
    if (m_place == Place::Instruction) {
        return m_last[1] == '?';
    }
    constexpr qsizetype shortestComment = 4; // "----"
    if (isComment()) {
        return m_length >= shortestComment && m_last == std::array{'-', '-'};
    }
    return m_length == 0 || m_first != '[' || m_last == std::array{']', ']'};
}

} // namespace zel::msreader
