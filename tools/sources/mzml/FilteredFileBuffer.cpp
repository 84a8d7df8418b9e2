#include "tools/sources/mzml/FilteredFileBuffer.h"

#include <algorithm>
#include <stdexcept>

namespace zel::msreader {

namespace {

constexpr qint64 kBlockSize = 1 << 16;
/// What is read beyond a block on each side, so that an attribute across its edge is seen whole
/// from both blocks. Longer ones are left as they are.
constexpr qint64 kMargin = 1024;

} // namespace

FilteredFileBuffer::FilteredFileBuffer(std::unique_ptr<QFile> file, AttributeFilter filter)
    : m_file(std::move(file))
    , m_size(m_file->size())
    , m_filter(std::move(filter))
    , m_bytes(static_cast<std::size_t>(kBlockSize + 2 * kMargin))
{}

FilteredFileBuffer::~FilteredFileBuffer() = default;

FilteredFileBuffer::int_type FilteredFileBuffer::underflow()
{
    if (gptr() < egptr()) {
        return traits_type::to_int_type(*gptr());
    }
    const qint64 position = m_start + (egptr() - eback());
    if (position != m_nestedTagPosition && !load(position)) {
        return traits_type::eof();
    }
    if (position == m_nestedTagPosition) {
        throw std::runtime_error("a quote or a \">\" is missing before byte " +
                                 std::to_string(position) + " of the XML text");
    }
    return traits_type::to_int_type(*gptr());
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
        m_nestedTagPosition.reset();
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
        // What was read before the end lies over the block that was there.
        m_start = position;
        setg(m_bytes.data(), m_bytes.data(), m_bytes.data());
        return false;
    }
    const std::span<char> bytes = std::span(m_bytes).first(static_cast<std::size_t>(count));
    const qint64 blockSize = std::min(count - marginBefore, kBlockSize);
    const auto block =
        bytes.subspan(static_cast<std::size_t>(marginBefore), static_cast<std::size_t>(blockSize));
    const qint64 goodSize = checkTags(position, block);
    filterBlock(bytes);
    m_start = position;
    setg(block.data(), block.data(), block.data() + goodSize);
    return true;
}

/// Follows the tags of the bytes from `position` on. \return how many bytes there are before a tag
/// inside a tag
qint64 FilteredFileBuffer::checkTags(qint64 position, std::span<char> bytes)
{
    const auto size = static_cast<qint64>(bytes.size());
    if (position != m_tagsEnd) {
        m_tags = {};
    }
    m_tagsEnd = position + size;
    const qsizetype nested = m_tags.follow(bytes);
    m_nestedTagPosition.reset();
    if (nested < 0) {
        return size;
    }
    m_nestedTagPosition = position + nested;
    m_tagsEnd = -1;
    return nested;
}

void FilteredFileBuffer::filterBlock(std::span<char> bytes) const
{
    const std::string& name = m_filter.nameEnd;
    const std::boyer_moore_horspool_searcher attribute(name.begin(), name.end());
    auto next = bytes.begin();
    while ((next = std::search(next, bytes.end(), attribute)) != bytes.end()) {
        next += static_cast<std::ptrdiff_t>(name.size());
        if (next == bytes.end() || (*next != '"' && *next != '\'')) {
            continue;
        }
        const char quote = *next++;
        const auto end = std::find(next, bytes.end(), quote);
        if (end == bytes.end()) {
            return;
        }
        if (end - next < kMargin - static_cast<qint64>(name.size())) {
            m_filter.filter(std::span<char>(next, end));
        }
        next = end;
    }
}

} // namespace zel::msreader
