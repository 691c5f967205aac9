// Builders of media types with each kind of format block that the muxer knows.
#pragma once

#include <array>
#include <span>
#include <vector>

#include "dshow/media_subtypes.h"
#include "tests/support/media_type_value.h"
#include "win/platform.h"

namespace test_support {

struct VideoShape {
    LONG width = 320;
    LONG height = 240;                           // negative for top-down pictures
    REFERENCE_TIME averageTimePerFrame = 400000; // 100 ns units
    DWORD aspectX = 4;
    DWORD aspectY = 3;
};

struct AudioShape {
    DWORD samplesPerSecond = 48000;
    WORD channels = 2;
    WORD bitsPerSample = 16;
    DWORD averageBytesPerSecond = 192000;
};

using Bytes = std::vector<BYTE>;

// MEDIATYPE_Video. `extra` follows the structure.
[[nodiscard]] MediaTypeValue VideoInfoType(const GUID& subtype, const VideoShape& shape = {}, const Bytes& extra = {});
[[nodiscard]] MediaTypeValue VideoInfo2Type(const GUID& subtype, const VideoShape& shape = {}, const Bytes& extra = {});
[[nodiscard]] MediaTypeValue Mpeg1VideoType(const VideoShape& shape, const Bytes& sequenceHeader);
// lengthFieldBytes goes to dwFlags, where 'AVC1' types keep the size of their length fields.
[[nodiscard]] MediaTypeValue Mpeg2VideoType(const GUID& subtype, const VideoShape& shape, const Bytes& sequenceHeader,
                                            DWORD profile = 0, DWORD level = 0, DWORD lengthFieldBytes = 0);

// MEDIATYPE_Audio with FORMAT_WaveFormatEx. `extra` follows the structure and is counted in cbSize.
[[nodiscard]] MediaTypeValue WaveType(const GUID& subtype, const AudioShape& shape = {}, const Bytes& extra = {});
// The Vorbis format block: channels, rate, bits, three header sizes, three headers.
[[nodiscard]] MediaTypeValue VorbisType(const AudioShape& shape, const std::array<Bytes, 3>& headers);

// MEDIATYPE_Text without a format block.
[[nodiscard]] MediaTypeValue TextType();
// MEDIATYPE_Subtitle with SUBTITLEINFO and the codec's header behind it.
[[nodiscard]] MediaTypeValue SubtitleType(const GUID& subtype, const Bytes& header = {});

// The SUBTITLEINFO structure, which the toolchain's headers lack.
struct SubtitleInfo {
    DWORD offset;         // bytes from the block's start to the codec's header
    char isoLanguage[4];  // ISO 639-2 code, zero-terminated
    WCHAR trackName[256]; // zero-terminated
};

} // namespace test_support
