#include "tools/sources/mzml/FilteredFileBuffer.h"

#include <QTemporaryDir>
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>

namespace zel::msreader {

TEST(FilteredFileBufferTest, ReadsTheSameAgainOnceItHasMetTheEnd)
{
    std::string text = "<a accession=\"MS:1\"/>";
    text += std::string(70000, ' ') + "<b accession='MS:2'/>"; // two blocks
    const QTemporaryDir folder;
    auto file = std::make_unique<QFile>(folder.filePath(QStringLiteral("run.mzML")));
    ASSERT_TRUE(file->open(QIODevice::ReadWrite));
    file->write(text.data(), static_cast<qint64>(text.size()));
    file->flush();
    FilteredFileStream stream(std::move(file), {"accession=", [](std::span<char> value) {
                                                    std::ranges::fill(value, 'x');
                                                }});
    std::string filtered = text;
    filtered.replace(filtered.find("MS:1"), 4, "xxxx").replace(filtered.find("MS:2"), 4, "xxxx");
    for (const std::size_t start : {std::size_t(0), std::size_t(66000), std::size_t(0)}) {
        stream.clear();
        stream.seekg(static_cast<std::streamoff>(start));
        EXPECT_TRUE(std::string(std::istreambuf_iterator<char>(stream), {}) ==
                    filtered.substr(start))
            << "from byte " << start;
    }
}

} // namespace zel::msreader
