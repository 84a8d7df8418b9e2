// Any bytes as settings: what can be read is written back as the same bytes.

#include "common/ms_types/TurboXicSettings.h"

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    QDataStream in(bytes);
    zel::TurboXicSettings settings;
    in >> settings;
    if (in.status() != QDataStream::Ok) {
        return settings == zel::TurboXicSettings() ? 0 : (std::abort(), 0);
    }
    QByteArray written;
    QDataStream out(&written, QIODevice::WriteOnly);
    out << settings;
    QDataStream again(written);
    zel::TurboXicSettings read;
    again >> read;
    if (!(read == settings) || written.size() != in.device()->pos()) {
        std::abort();
    }
    return 0;
}
