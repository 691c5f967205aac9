// What the strict description says of pictures and sound, whatever the codec: nothing that says nothing, and nothing
// that a track must not say.
#pragma once

#include <optional>

#include "media/codec_description.h"

namespace media {

// A rate of so many frames, or of 1000 for each 1001, a second is taken for exact: 333667 units are 33366667 ns. None
// for a duration that is no frame's.
[[nodiscard]] std::optional<UINT64> FrameDurationNs(REFERENCE_TIME frameDuration);

// In pixels, for the shape of the whole picture; none where the pixels are square, or the pair says nothing.
[[nodiscard]] std::optional<DisplaySize> DisplayInPixels(const DisplaySize& pixels, const DisplaySize& aspect);

// Fills size, display size, frame duration and fields from the head of the type's format block. False for a picture
// without a size.
[[nodiscard]] bool RefinePicture(const AM_MEDIA_TYPE& type, CodecDescription& description);

// False for sound without a rate or channels.
[[nodiscard]] bool RefineSound(CodecDescription& description);

} // namespace media
