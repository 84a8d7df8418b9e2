#pragma once

#include <QSaveFile>

#include <zlib.h>

#include <streambuf>
#include <vector>

namespace zel::msreader {

/// A stream buffer that writes a file as a whole or not at all: the bytes go into a file beside it,
/// which takes its place on `commit`. Compresses on the way if asked to.
class SaveFileBuffer : public std::streambuf
{
public:
    /// \param isGzip  whether the file becomes a gzip file
    SaveFileBuffer(const QString& path, bool isGzip);
    ~SaveFileBuffer() override;
    SaveFileBuffer(const SaveFileBuffer&) = delete;
    SaveFileBuffer& operator=(const SaveFileBuffer&) = delete;

    /// Creates the file beside the wanted one.
    bool open();
    /// Writes what is left and puts the file in its place. Without it nothing is left behind.
    bool commit();
    /// Why one of the two, or a write, failed.
    QString errorString() const { return m_file.errorString(); }

protected:
    int_type overflow(int_type byte) override;
    int sync() override;
    /// Tells the number of bytes put so far, before compression; goes nowhere else.
    pos_type seekoff(off_type offset,
                     std::ios_base::seekdir direction,
                     std::ios_base::openmode mode) override;

private:
    bool putOut(int flush);

    QSaveFile m_file;
    bool m_isGzip;
    z_stream m_stream{};
    bool m_isCompressing = false;
    std::vector<char> m_bytes;
    std::vector<char> m_packed;
    off_type m_start = 0; ///< bytes put before those of the put area
};

} // namespace zel::msreader
