// Any text as peptides in JSON: an error, or peptides that are written and read back as the same.

#include "peptides/PeptidesList.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    zel::PeptidesList peptides;
    if (peptides.deserialize(text).hasError()) {
        return 0;
    }
    zel::PeptidesList again;
    if (again.deserialize(peptides.serialize()).hasError() || !(again == peptides)) {
        std::abort();
    }
    return 0;
}
