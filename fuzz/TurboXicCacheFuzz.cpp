// Any bytes as a cache file: an error, or an index that can be used.

#include "turbo/index/TurboXic.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    zel::TurboXicSettings settings;
    settings.granularity = 100;
    settings.maxMz = 600;
    settings.maxIonCount = 20;
    zel::TurboXic index(settings);
    const auto bytes =
        QByteArray::fromRawData(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    if (index.load(bytes).hasError()) {
        return index.isInitialized() ? std::abort(), 0 : 0;
    }
    if (index.isValid()) {
        const auto xic = index.retrieveXic(
            zel::XicDimensions({0.0, 1e9}, zel::math::ClosedMultiInterval<double, 6>::unbounded()));
        if (!xic.isOk() || xic.value().size() != index.scanCount()) {
            std::abort();
        }
    }
    for (int scan = 0; scan < index.scanCount(); ++scan) {
        if (!index.retrieveScanData(scan).isOk()) {
            std::abort();
        }
    }
    return 0;
}
