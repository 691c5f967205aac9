// The heads of an IVF file and of its frames. All numbers are little-endian.
//
// Units: bytes, pixels; a time stamp counts ticks, each of them scale / rate seconds.
#pragma once

#include <optional>

#include "sources/base/byte_source.h"

namespace av1 {

inline constexpr UINT64 kIvfFrameHeadBytes = 12;

enum class IvfCodec { Av1, Vp8, Vp9 };

struct IvfHeader {
    IvfCodec codec = IvfCodec::Av1;
    UINT32 width = 0;
    UINT32 height = 0;
    UINT32 rate = 0;
    UINT32 scale = 0;
    UINT64 bytes = 0; // of the head: the first frame begins behind it

    // In 100 ns; later than source::kMaxTime for what no file has.
    [[nodiscard]] REFERENCE_TIME TimeOf(UINT64 ticks) const;
};

struct IvfFrame {
    UINT64 start = 0; // of its data
    UINT64 bytes = 0;
    UINT64 ticks = 0;

    [[nodiscard]] UINT64 End() const { return start + bytes; }
};

// None for what is no such file, or holds another codec.
[[nodiscard]] std::optional<IvfHeader> ReadIvfHeader(const source::ByteSource& file);
// The frame whose head stands there; none where the file ends before the frame does.
[[nodiscard]] std::optional<IvfFrame> ReadIvfFrame(const source::ByteSource& file, UINT64 position);

} // namespace av1
