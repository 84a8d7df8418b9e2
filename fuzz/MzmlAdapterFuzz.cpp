// Any bytes as an mzML file on its way to libpwiz: the adapter changes values, but neither the
// number of bytes nor, where it is read from the start again, what it said before.

#include "fuzz/FuzzFile.h"
#include "tools/sources/mzml/AccessionAdapter.h"
#include "tools/sources/mzml/FilteredFileBuffer.h"

#include <exception>
#include <istream>
#include <memory>
#include <string>

namespace {

/// The whole text, read from the place where the stream stands.
std::string rest(std::istream& stream)
{
    std::string text;
    for (char byte = 0; stream.get(byte);) {
        text += byte;
    }
    return text;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const FuzzFile input(data, size);
    auto file = std::make_unique<QFile>(input.path());
    if (!file->open(QIODevice::ReadOnly)) {
        std::abort();
    }
    zel::msreader::FilteredFileStream stream(std::move(file), zel::msreader::accessionFilter());
    try {
        const std::string text = rest(stream);
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(size / 2));
        const std::string half = rest(stream);
        stream.clear();
        stream.seekg(0);
        if (text.size() != size || half.size() != size - size / 2 || rest(stream) != text) {
            std::abort();
        }
    } catch (const std::exception&) { // a tag inside a tag
    }
    return 0;
}
