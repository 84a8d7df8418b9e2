#pragma once

#include "tools/io/OutputFile.h"

#include <boost/iostreams/filtering_streambuf.hpp>

#include <ostream>
#include <streambuf>

namespace zel::io {

/// A text stream into an OutputFile, compressed on the way if asked to.
class OutputStream : public std::ostream
{
public:
    /// \param file    outlives the stream, and is committed by its owner
    /// \param isGzip  whether the file becomes a gzip file
    OutputStream(OutputFile* file, bool isGzip);

    /// Ends the compression; nothing may be written afterwards.
    void finish();

private:
    /// Counts the bytes, so that a writer can ask where it is, and hands them on.
    class Buffer : public std::streambuf
    {
    public:
        Buffer(OutputFile* file, bool isGzip);
        void finish();

    protected:
        int_type overflow(int_type byte) override;
        std::streamsize xsputn(const char* bytes, std::streamsize count) override;
        /// Tells the number of bytes put so far, before compression; goes nowhere else.
        pos_type seekoff(off_type offset,
                         std::ios_base::seekdir direction,
                         std::ios_base::openmode mode) override;

    private:
        boost::iostreams::filtering_ostreambuf m_chain;
        off_type m_count = 0;
    };

    Buffer m_buffer;
};

} // namespace zel::io
