#include "common/stable/MemoryInfo.h"

#include <QtGlobal>

#if defined(Q_OS_UNIX)
#include <sys/resource.h>
#endif

namespace zel {

unsigned long long MemoryInfo::peakProcessWorkingSet() const
{
#if defined(Q_OS_UNIX)
    rusage usage = {};
    if (getrusage(RUSAGE_SELF, &usage) != 0) {
        return 0;
    }
    // Linux and the BSDs count in kibibytes, macOS in bytes.
    constexpr unsigned long long unitBytes =
#if defined(Q_OS_DARWIN)
        1;
#else
        1024;
#endif
    return static_cast<unsigned long long>(usage.ru_maxrss) * unitBytes;
#else
    return 0;
#endif
}

} // namespace zel
