// Numbers whose most significant byte comes first: those of Matroska, of NAL unit lengths and of configuration records.
//
// Errors: none. A number is cut to the bytes it is given.
#pragma once

#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr unsigned kBitsInByte = 8;

// Of more than eight bytes the last eight count; no bytes are 0.
[[nodiscard]] inline uint64_t ReadBigEndian(ByteView bytes) {
    uint64_t value = 0;
    for (const uint8_t byte : bytes) {
        value = value << kBitsInByte | byte;
    }
    return value;
}

// The number's last bytes, as many as there is room for: at most eight.
inline void WriteBigEndian(std::span<uint8_t> room, uint64_t value) {
    for (size_t i = room.size(); i-- > 0;) {
        room[i] = static_cast<uint8_t>(value);
        value >>= kBitsInByte;
    }
}

// The number's last so many bytes: at most eight.
inline void AppendBigEndian(std::vector<uint8_t>& output, uint64_t value, size_t bytes) {
    output.resize(output.size() + bytes);
    WriteBigEndian(std::span(output).last(bytes), value);
}

} // namespace codecs
