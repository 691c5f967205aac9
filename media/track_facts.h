// TrackFacts: what a container says of a track, as far as media types are made of it. A plain value that any reader of
// files can fill.
//
// Units: pixels, hertz, bits, nanoseconds.
#pragma once

#include <string>
#include <vector>

#include "media/colour.h"
#include "win/platform.h"

namespace media {

struct VideoFacts {
    UINT64 pixelWidth = 0;
    UINT64 pixelHeight = 0;
    UINT64 cropWidth = 0; // left and right together
    UINT64 cropHeight = 0;
    UINT64 displayWidth = 0; // 0: as the pixels
    UINT64 displayHeight = 0;
    UINT64 flagInterlaced = 0; // Matroska's values
    UINT64 fieldOrder = 2;
    DWORD uncompressedFourCc = 0; // its first letter in the lowest byte; 0: not said
    Colour colour{};
};

// At first what holds for a track that does not say.
struct AudioFacts {
    double samplingFrequency = 8000;
    UINT64 channels = 1;
    UINT64 bitDepth = 0; // 0: not said
};

struct TrackFacts {
    UINT64 type = 0; // kTrackType…; no media type carries any other
    std::string codecId;
    std::vector<BYTE> codecPrivate;
    UINT64 defaultDurationNs = 0; // 0: not said
    std::string language;         // ISO 639-2 code
    VideoFacts video;
    AudioFacts audio;
};

} // namespace media
