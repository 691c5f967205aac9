// ContentKind: what a file holds, by its first bytes, whatever its name says.
//
// Errors: none; what is not recognised for sure, or cannot be read, is unknown.
#pragma once

#include <span>
#include <string>

#include "win/platform.h"

namespace mkvmux {

enum class ContentKind {
    Unknown,
    Matroska,
    Avc,  // H.264 with start codes
    Hevc, // H.265 with start codes
    SubRip,
    Ass,
    Adts, // AAC
    MpegAudio,
    Flac,
    Ivf,
    Av1, // units with their sizes
};

[[nodiscard]] ContentKind KindOfBytes(std::span<const BYTE> head);
// A tag before the sound is skipped.
[[nodiscard]] ContentKind KindOfFile(const std::wstring& path);

} // namespace mkvmux
