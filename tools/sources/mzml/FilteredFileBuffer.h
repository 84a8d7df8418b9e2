#pragma once

#include "tools/sources/mzml/XmlTags.h"

#include <QFile>

#include <functional>
#include <istream>
#include <memory>
#include <optional>
#include <span>
#include <streambuf>
#include <string>
#include <vector>

namespace zel::msreader {

/// What is to be done to the values of some attributes.
struct AttributeFilter
{
    /// How the attribute's name ends, with the "=".
    std::string nameEnd;
    /// Called with the value, without its quotes. It may change the bytes, but not their number.
    std::function<void(std::span<char> value)> filter;
};

/// The bytes of an XML file as a stream buffer, read in blocks and from any place, with the values
/// of some attributes handed to a filter first. All positions stay those of the file.
///
/// The file ends with an exception, std::runtime_error, where a tag holds another one: libpwiz,
/// which looks for the missing quote up to the end of the file, takes minutes for some megabytes.
class FilteredFileBuffer : public std::streambuf
{
public:
    /// \param file  open for reading
    FilteredFileBuffer(std::unique_ptr<QFile> file, AttributeFilter filter);
    ~FilteredFileBuffer() override;

protected:
    int_type underflow() override;
    pos_type seekoff(off_type offset,
                     std::ios_base::seekdir direction,
                     std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

private:
    bool load(qint64 position);
    qint64 checkTags(qint64 position, std::span<char> bytes);
    void filterBlock(std::span<char> bytes) const;

    std::unique_ptr<QFile> m_file;
    qint64 m_size;
    AttributeFilter m_filter;
    std::vector<char> m_bytes;
    qint64 m_start = 0; ///< position in the file of the first byte of the get area
    XmlTags m_tags;
    qint64 m_tagsEnd = 0;                      ///< up to where m_tags has followed the file
    std::optional<qint64> m_nestedTagPosition; ///< where a tag begins inside another one
};

/// The same as a stream, of the kind that libpwiz reads. It lets the buffer's exception through.
class FilteredFileStream : public std::istream
{
public:
    FilteredFileStream(std::unique_ptr<QFile> file, AttributeFilter filter)
        : std::istream(nullptr)
        , m_buffer(std::move(file), std::move(filter))
    {
        rdbuf(&m_buffer);
        exceptions(std::ios::badbit);
    }

private:
    FilteredFileBuffer m_buffer;
};

} // namespace zel::msreader
