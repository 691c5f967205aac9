// CacheLineGap: a member that keeps what one thread writes off the cache line of what another one reads.
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
