#include "tools/sources/mzml/FilteredFileBuffer.h"

#include <algorithm>
#include <functional>
#include <string_view>

namespace zel::msreader {

namespace {

constexpr qint64 kBlockSize = 1 << 16;
/// What is read beyond a block on each side, so that an attribute across its edge is seen whole
/// from both blocks. Longer attributes are no accessions.
constexpr qint64 kMargin = 64;
/// The common end of both attribute names.
constexpr std::string_view kAttribute = "ccession=";

} // namespace

FilteredFileBuffer::FilteredFileBuffer(std::unique_ptr<QFile> file, Filter filter)
    : m_file(std::move(file))
    , m_size(m_file->size())
    , m_filter(std::move(filter))
    , m_bytes(static_cast<std::size_t>(kBlockSize + 2 * kMargin))
{}

FilteredFileBuffer::~FilteredFileBuffer() = default;

FilteredFileBuffer::int_type FilteredFileBuffer::underflow()
{
    if (gptr() < egptr() || load(m_start + (egptr() - eback()))) {
        return traits_type::to_int_type(*gptr());
    }
    return traits_type::eof();
}

FilteredFileBuffer::pos_type FilteredFileBuffer::seekoff(off_type offset,
                                                         std::ios_base::seekdir direction,
                                                         std::ios_base::openmode mode)
{
    qint64 origin = 0;
    if (direction == std::ios_base::cur) {
        origin = m_start + (gptr() - eback());
    } else if (direction == std::ios_base::end) {
        origin = m_size;
    }
    return seekpos(origin + offset, mode);
}

FilteredFileBuffer::pos_type FilteredFileBuffer::seekpos(pos_type position, std::ios_base::openmode)
{
    const qint64 target = static_cast<off_type>(position);
    if (target < 0 || target > m_size) {
        return pos_type(off_type(-1));
    }
    if (target >= m_start && target <= m_start + (egptr() - eback())) {
        setg(eback(), eback() + (target - m_start), egptr());
    } else {
        m_start = target;
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data());
    }
    return position;
}

/// Makes the bytes from `position` on the get area. \return false at the end of the file
bool FilteredFileBuffer::load(qint64 position)
{
    const qint64 marginBefore = std::min(position, kMargin);
    if (!m_file->seek(position - marginBefore)) {
        return false;
    }
    const qint64 count = m_file->read(m_bytes.data(), marginBefore + kBlockSize + kMargin);
    if (count <= marginBefore) {
        return false;
    }
    filterBlock(std::span(m_bytes).first(static_cast<std::size_t>(count)));
    char* const first = m_bytes.data() + marginBefore;
    m_start = position;
    setg(first, first, first + std::min(count - marginBefore, kBlockSize));
    return true;
}

void FilteredFileBuffer::filterBlock(std::span<char> bytes) const
{
    static const std::boyer_moore_horspool_searcher attribute(kAttribute.begin(), kAttribute.end());
    auto next = bytes.begin();
    while ((next = std::search(next, bytes.end(), attribute)) != bytes.end()) {
        next += static_cast<std::ptrdiff_t>(kAttribute.size());
        if (next == bytes.end() || (*next != '"' && *next != '\'')) {
            continue;
        }
        const char quote = *next++;
        const auto end = std::find(next, bytes.end(), quote);
        if (end == bytes.end()) {
            return;
        }
        if (end - next < kMargin - static_cast<qint64>(kAttribute.size())) {
            m_filter(std::span<char>(next, end));
        }
        next = end;
    }
}

} // namespace zel::msreader
