// Any text as features in JSON: an error, or features that are written and read back as the same.

#include "feature_finder/records/ChargeFeatureList.h"

#include <QString>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const QString text =
        QString::fromUtf8(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size));
    zel::ChargeFeatureList features;
    if (features.deserialize(text).hasError()) {
        return 0;
    }
    zel::ChargeFeatureList again;
    // A list of more than nine comes back in another order.
    if (again.deserialize(features.serialize()).hasError() || again.size() != features.size() ||
        (features.size() < 10 && !(again == features))) {
        std::abort();
    }
    return 0;
}
