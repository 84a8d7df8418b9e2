#include "common/stable/WideRegisters_p.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace zel {

#if defined(__x86_64__)

namespace {

[[gnu::target("avx")]] void zeroUpperHalves()
{
    _mm256_zeroupper();
}

} // namespace

void releaseWideRegisters()
{
    static const bool hasWideRegisters = __builtin_cpu_supports("avx");
    if (hasWideRegisters) {
        zeroUpperHalves();
    }
}

#else

void releaseWideRegisters() {}

#endif

} // namespace zel
