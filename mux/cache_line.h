// For two threads that hand things over: CacheLineGap, a member that keeps what one of them writes off the cache line
// of what the other one reads, and FetchCacheLine.
//
// A gap and no alignment: the Linux lane's compiler mislays over-aligned objects on the stack around calls that follow
// Windows' convention.
#pragma once

#include <array>
#include <cstddef>

#if defined(_MSC_VER)
#include <xmmintrin.h>
#endif

struct CacheLineGap {
    static constexpr size_t kBytes = 64;

    std::array<std::byte, kBytes> unused;
};

// Begins to fetch the line there, which this thread will read soon; any address will do.
inline void FetchCacheLine(const void* address) {
#if defined(_MSC_VER)
    _mm_prefetch(static_cast<const char*>(address), _MM_HINT_T0);
#else
    __builtin_prefetch(address);
#endif
}
