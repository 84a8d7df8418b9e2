// Any bytes as a pepXML file: an error, or none.

#include "tools/identifications/PepXmlCheck.h"

#include <QBuffer>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    QBuffer buffer;
    buffer.setData(QByteArray(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size)));
    buffer.open(QIODevice::ReadOnly);
    static_cast<void>(zel::identifications::checkPepXml(&buffer).hasError());
    return 0;
}
