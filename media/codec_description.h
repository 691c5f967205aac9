// CodecDescription: what a media type becomes in a Matroska track entry. A plain value without libmatroska.
//
// Units: times in nanoseconds, sizes in pixels unless said otherwise.
// Errors: a type without a mapping, or whose format block is too short for what it claims to hold, gets an empty
// codec identifier.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "media/colour.h"
#include "win/platform.h"

namespace media {

struct DisplaySize {
    UINT64 width = 0;
    UINT64 height = 0;
};

struct VideoDescription {
    UINT64 pixelWidth = 0;
    UINT64 pixelHeight = 0;
    // The picture aspect ratio pair itself for formats that carry one, for example 16 and 9.
    std::optional<DisplaySize> display{};
    std::optional<UINT64> flagInterlaced{}; // Matroska's values; the strict description alone tells both
    std::optional<UINT64> fieldOrder{};
    std::optional<DWORD> uncompressedFourCc{}; // its first letter in the lowest byte
    Colour colour{};                           // the strict description alone, as is what follows
    bool mayTellColourLater = false;           // with the first picture
};

struct AudioDescription {
    UINT32 samplingFrequencyHz = 0;
    UINT32 channels = 0;
    std::optional<UINT32> bitDepth;
    // What comes out of a codec that replicates the upper half of the spectrum; the strict description alone.
    std::optional<UINT32> outputSamplingFrequencyHz{};
};

struct CodecDescription {
    std::string codecId;
    std::optional<bool> lacing;
    std::optional<UINT64> defaultDurationNs;
    std::optional<VideoDescription> video;
    std::optional<AudioDescription> audio;
    // Present and empty differs from absent: the element is then written with no bytes.
    std::optional<std::vector<BYTE>> codecPrivate;
    // What a decoder drops at the start, and needs before a place to play from there; the strict description alone.
    UINT64 codecDelayNs = 0;
    UINT64 seekPreRollNs = 0;
    UINT64 maxBlockAdditionId = 0; // of what stands beside its blocks; 0: nothing does
};

[[nodiscard]] CodecDescription DescribeCodec(const AM_MEDIA_TYPE& type);

// As the standards ask, instead of as this muxer has always written: display sizes in pixels, whole decoder records,
// and nothing that says nothing. What is absent is not to be written; private data is never empty. No codec identifier
// as well for a picture without a size, sound without a rate or channels, and damaged decoder records.
[[nodiscard]] CodecDescription DescribeStrictCodec(const AM_MEDIA_TYPE& type);

// As one kind of track each. Every other major type is one without a mapping: the description then holds what all
// tracks of the kind have, and nothing else.
[[nodiscard]] CodecDescription DescribeVideoCodec(const AM_MEDIA_TYPE& type);
[[nodiscard]] CodecDescription DescribeAudioCodec(const AM_MEDIA_TYPE& type);
[[nodiscard]] CodecDescription DescribeSubtitleCodec(const AM_MEDIA_TYPE& type);

// The codec identifier that the stream would get, and in a strict file; empty for every type that cannot be written.
[[nodiscard]] std::string CodecIdOf(const AM_MEDIA_TYPE& type);
[[nodiscard]] std::string StrictCodecIdOf(const AM_MEDIA_TYPE& type);

} // namespace media
