#pragma once

#include <QFile>

#include <functional>
#include <istream>
#include <memory>
#include <span>
#include <streambuf>
#include <vector>

namespace zel::msreader {

/// The bytes of an XML file as a stream buffer, read in blocks and from any place, with each
/// `accession` and `unitAccession` attribute handed to a filter first.
///
/// The filter may change the bytes of the attribute's value but not their number, so all positions
/// stay those of the file.
class FilteredFileBuffer : public std::streambuf
{
public:
    /// Called with the value of an attribute, without its quotes.
    using Filter = std::function<void(std::span<char> accession)>;

    /// \param file  open for reading
    FilteredFileBuffer(std::unique_ptr<QFile> file, Filter filter);
    ~FilteredFileBuffer() override;

protected:
    int_type underflow() override;
    pos_type seekoff(off_type offset,
                     std::ios_base::seekdir direction,
                     std::ios_base::openmode mode) override;
    pos_type seekpos(pos_type position, std::ios_base::openmode mode) override;

private:
    bool load(qint64 position);
    void filterBlock(std::span<char> bytes) const;

    std::unique_ptr<QFile> m_file;
    qint64 m_size;
    Filter m_filter;
    std::vector<char> m_bytes;
    qint64 m_start = 0; ///< position in the file of the first byte of the get area
};

/// The same as a stream, of the kind that libpwiz reads.
class FilteredFileStream : public std::istream
{
public:
    FilteredFileStream(std::unique_ptr<QFile> file, FilteredFileBuffer::Filter filter)
        : std::istream(nullptr)
        , m_buffer(std::move(file), std::move(filter))
    {
        rdbuf(&m_buffer);
    }

private:
    FilteredFileBuffer m_buffer;
};

} // namespace zel::msreader
