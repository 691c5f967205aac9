// What a block's data begin with: track, offset from the cluster's time, flags.
#pragma once

#include "mkv/element_bytes.h"

namespace mkv {

inline constexpr BYTE kKeyframeFlag = 0x80; // of simple blocks; all other flags stay clear: visible, kept, not laced
inline constexpr size_t kOffsetBytes = 2;
inline constexpr UINT16 kFirstTwoByteTrack = 0x80;

[[nodiscard]] inline size_t TrackBytes(UINT16 track) {
    return track < kFirstTwoByteTrack ? 1 : 2;
}

// With the frame behind it.
[[nodiscard]] inline UINT64 BlockDataBytes(UINT16 track, size_t frameBytes) {
    return TrackBytes(track) + kOffsetBytes + 1 + frameBytes;
}

// The offset and the flags are its last three bytes.
inline void AddBlockHead(CElementBytes& bytes, UINT16 track, INT16 offset, BYTE flags) {
    constexpr UINT16 kOneByteTrackMark = 0x80;
    constexpr UINT16 kTwoByteTrackMark = 0x4000;
    const UINT16 mark = track < kFirstTwoByteTrack ? kOneByteTrackMark : kTwoByteTrackMark;
    bytes.addBigEndian(static_cast<UINT64>(track | mark), TrackBytes(track));
    bytes.addBigEndian(static_cast<UINT16>(offset), kOffsetBytes);
    bytes.addBigEndian(flags, 1);
}

} // namespace mkv
