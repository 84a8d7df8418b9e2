#pragma once

#include "common/stable/Export.h"

namespace zel {

/// Memory figures of this process.
class ZEL_EXPORT MemoryInfo
{
public:
    /// The greatest resident set size so far, in bytes; 0 where the platform does not say.
    unsigned long long peakProcessWorkingSet() const;
};

} // namespace zel
