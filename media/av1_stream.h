// What strict files ask of an AV1 stream beyond its media type: where decoding can begin, and the private data that the
// type may lack.
//
// Threads: any. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <vector>

#include "media/format_block.h"
#include "win/platform.h"

namespace media {

[[nodiscard]] bool IsAv1(const AM_MEDIA_TYPE& type);

// Whether a frame of AV1 is a keyframe, as its units say; the sample's flag decides where they do not tell, or where
// the sequence header must come from elsewhere.
[[nodiscard]] bool IsAv1Keyframe(ByteView frame, bool isSyncPoint);

// Room for the CodecPrivate element of a type without private data, which its first keyframe then has; 0 for types that
// say all.
[[nodiscard]] UINT64 LatePrivateRoom(const AM_MEDIA_TYPE& type);
// None when the keyframe does not have it either.
[[nodiscard]] std::optional<std::vector<BYTE>> LatePrivateOf(ByteView keyframe);

} // namespace media
