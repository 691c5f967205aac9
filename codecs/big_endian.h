// Numbers of the format, whose most significant byte comes first.
#pragma once

#include <span>

#include "win/platform.h"

namespace matroska {

inline constexpr unsigned kBitsInByte = 8;

// Of more than eight bytes the last eight count.
[[nodiscard]] inline UINT64 BigEndian(std::span<const BYTE> bytes) {
    UINT64 value = 0;
    for (const BYTE byte : bytes) {
        value = value << kBitsInByte | byte;
    }
    return value;
}

} // namespace matroska
