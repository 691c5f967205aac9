// MediaTypeFacts: what a media type says of its stream, read with care: nothing outside the format block.
#pragma once

#include <optional>
#include <string>

#include "win/platform.h"

namespace mkvmux {

struct PictureFacts {
    long width = 0;             // pixels
    long height = 0;            // pixels; negative for a picture stored top down
    double framesPerSecond = 0; // 0: unknown
};

struct SoundFacts {
    unsigned long samplesPerSecond = 0;
    unsigned channels = 0;
    unsigned bitsPerSample = 0; // 0: compressed
};

struct MediaTypeFacts {
    std::string kind;    // "video", "audio", "text", "subtitle", or the major type's identifier
    std::string subtype; // "'cvid'", "wave tag 0x0001", or the identifier
    std::optional<PictureFacts> picture;
    std::optional<SoundFacts> sound;
};

[[nodiscard]] MediaTypeFacts FactsOf(const AM_MEDIA_TYPE& type);

} // namespace mkvmux
