// For two threads that hand things over: CacheLineGap, a member that keeps what one of them writes off the cache line
// of what the other one reads, and FetchCacheLine.
//
// A gap and no alignment: the Linux lane's compiler mislays over-aligned objects on the stack around calls that follow
// Windows' convention.
#pragma once

#include <array>
#include <cstddef>

struct CacheLineGap {
    static constexpr size_t kBytes = 64;

    std::array<std::byte, kBytes> unused;
};

// Begins to fetch the line there, which this thread will read soon; any address will do.
inline void FetchCacheLine(const void* address) {
    __builtin_prefetch(address);
}
