// StreamColour: what H.264 and H.265 streams tell of their colours, in their parameter sets and in the messages in
// front of their pictures.
//
// Units: bits for the depth. Errors: damaged units tell nothing; units of more than 65,535 bytes, and more than 64
// units in front of a picture, are not looked at.
#pragma once

#include <span>
#include <vector>

#include "codecs/light_metadata.h"
#include "codecs/video_signal.h"

namespace codecs {

struct StreamColour {
    bool hasParameters = false; // a sequence parameter set was there
    uint32_t bitDepth = 0;      // of luma, from it
    VideoSignal signal{};
    LightMetadata light{};
};

// Of units in the order of the stream, up to the first slice. The first sequence parameter set counts.
[[nodiscard]] StreamColour AvcColourOf(std::span<const ByteView> units);
[[nodiscard]] StreamColour HevcColourOf(std::span<const ByteView> units); // those of the base layer

// The first units of a sample whose units have lengths of so many bytes (1 to 4) in front of them; the last one may be
// cut off.
[[nodiscard]] std::vector<ByteView> FirstUnitsOf(ByteView sample, size_t lengthBytes);

} // namespace codecs
