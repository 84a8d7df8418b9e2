// Any bytes, gzip included, as a table of windows: an error, or targets with names and windows.

#include "fuzz/FuzzFile.h"
#include "tools/zel/xic/XicWindows.h"

#include <algorithm>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const FuzzFile file(data, size);
    const auto targets = zel::tool::readXicWindows(file.path());
    if (!targets.isOk()) {
        return 0;
    }
    for (const zel::tool::XicTarget& target : targets.value()) {
        if (target.name.isEmpty() || target.members.isEmpty()) {
            std::abort();
        }
    }
    return 0;
}
