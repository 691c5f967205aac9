// Builders of media types with the format blocks that splitters offer.
//
// Units: durations in 100 ns. Errors: std::bad_alloc.
#pragma once

#include <optional>

#include "dshow/media_type.h"
#include "media/format_block.h"

namespace media {

struct Picture {
    LONG width = 0;
    LONG height = 0;
    DWORD aspectX = 0; // shape of the whole picture
    DWORD aspectY = 0;
    REFERENCE_TIME frameDuration = 0;
    DWORD interlaceFlags = 0; // of blocks that have them, as the next one
    DWORD controlFlags = 0;
};

// BITMAPINFOHEADER of a compressed picture.
[[nodiscard]] BITMAPINFOHEADER BitmapHeader(const Picture& picture, DWORD compression);

// Whether biCompression is one of the system's own values, not a FourCC.
[[nodiscard]] bool IsUncompressed(const BITMAPINFOHEADER& bitmap);
// What the picture is stored as: its FourCC, or the uncompressed kind of so many bits.
[[nodiscard]] GUID SubtypeOf(const BITMAPINFOHEADER& bitmap);

// MEDIATYPE_Video; the extra bytes follow the structure.
[[nodiscard]] CMediaType VideoInfoType(const GUID& subtype, const Picture& picture, const BITMAPINFOHEADER& bitmap,
                                       ByteView extra);
[[nodiscard]] CMediaType VideoInfo2Type(const GUID& subtype, const Picture& picture, const BITMAPINFOHEADER& bitmap,
                                        ByteView extra);
[[nodiscard]] CMediaType Mpeg1VideoType(const Picture& picture, ByteView sequenceHeader);

struct Mpeg2Details {
    DWORD profile = 0;
    DWORD level = 0;
    DWORD flags = 0; // of AVC1: the bytes of a length field
};
[[nodiscard]] CMediaType Mpeg2VideoType(const GUID& subtype, const Picture& picture, ByteView sequenceHeader,
                                        const Mpeg2Details& details = {});

// MEDIATYPE_Audio with FORMAT_WaveFormatEx; cbSize is set from the extra bytes.
[[nodiscard]] CMediaType WaveType(const GUID& subtype, WAVEFORMATEX wave, ByteView extra);

// MEDIATYPE_Audio of the tag in a whole WAVEFORMATEX, possibly of the oldest form without cbSize, which the type's
// block then gets. None for less than that.
[[nodiscard]] std::optional<CMediaType> WholeWaveType(ByteView format);

// MEDIATYPE_Subtitle with a SUBTITLEINFO block, and the codec's header behind it.
[[nodiscard]] CMediaType SubtitleType(const GUID& subtype, const char* language, ByteView header);

// A type with that format block.
[[nodiscard]] CMediaType TypeWithFormat(const GUID& major, const GUID& subtype, const GUID& format, ByteView block);

} // namespace media
