#include "common/stable/LargePages.h"

#ifdef __linux__
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#endif

namespace zel {

void adviseLargePages([[maybe_unused]] void* data, [[maybe_unused]] std::size_t byteCount)
{
#ifdef __linux__
    // The system takes whole pages; those at the ends may hold something else.
    const auto pageSize = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    const auto address = reinterpret_cast<std::uintptr_t>(data);
    const std::uintptr_t start = (address + pageSize - 1) / pageSize * pageSize;
    const std::uintptr_t end = (address + byteCount) / pageSize * pageSize;
    if (start < end) {
        madvise(reinterpret_cast<void*>(start), end - start, MADV_HUGEPAGE);
    }
#endif
}

} // namespace zel
