#pragma once

#include "common/stable/Export.h"

#include <cstddef>

namespace zel {

/// Asks the system to back this memory, which has not been written to yet, by large pages. Filling
/// a big array then takes one page fault for 2 MiB instead of 512, and reading it across needs
/// fewer address translations. Only a hint: it never fails, and does nothing for memory that is
/// smaller than a large page, or where the system has none.
ZEL_EXPORT void adviseLargePages(void* data, std::size_t byteCount);

} // namespace zel
