#include "tools/io/OutputStream.h"

#include <boost/iostreams/categories.hpp>
#include <boost/iostreams/filter/gzip.hpp>

namespace zel::io {

namespace {

/// The end of the chain. Failures wait in the file for its `commit`.
struct FileSink
{
    using char_type = char;
    using category = boost::iostreams::sink_tag;

    std::streamsize write(const char* bytes, std::streamsize count)
    {
        file->write(bytes, count);
        return count;
    }

    OutputFile* file;
};

} // namespace

OutputStream::OutputStream(OutputFile* file, bool isGzip)
    : std::ostream(nullptr)
    , m_buffer(file, isGzip)
{
    rdbuf(&m_buffer);
}

void OutputStream::finish()
{
    m_buffer.finish();
}

OutputStream::Buffer::Buffer(OutputFile* file, bool isGzip)
{
    if (isGzip) {
        m_chain.push(boost::iostreams::gzip_compressor(boost::iostreams::gzip::best_speed));
    }
    m_chain.push(FileSink{file});
}

void OutputStream::Buffer::finish()
{
    m_chain.reset();
}

OutputStream::Buffer::int_type OutputStream::Buffer::overflow(int_type byte)
{
    if (traits_type::eq_int_type(byte, traits_type::eof())) {
        return traits_type::not_eof(byte);
    }
    const char single = traits_type::to_char_type(byte);
    return xsputn(&single, 1) == 1 ? byte : traits_type::eof();
}

std::streamsize OutputStream::Buffer::xsputn(const char* bytes, std::streamsize count)
{
    const std::streamsize put = m_chain.sputn(bytes, count);
    m_count += put;
    return put;
}

OutputStream::Buffer::pos_type OutputStream::Buffer::seekoff(off_type offset,
                                                             std::ios_base::seekdir direction,
                                                             std::ios_base::openmode)
{
    const bool isTell = offset == 0 && direction == std::ios_base::cur;
    return isTell ? pos_type(m_count) : pos_type(off_type(-1));
}

} // namespace zel::io
