// Builds small AVI files in memory, chunk by chunk.
#pragma once

#include <string>
#include <string_view>

#include "tests/sources/base/memory_source.h"
#include "win/platform.h"

namespace test_avi {

[[nodiscard]] std::string Dword(UINT32 value);
// With the pad byte that an odd size asks for.
[[nodiscard]] std::string Chunk(std::string_view id, std::string_view content);
[[nodiscard]] std::string List(std::string_view type, std::string_view content);
[[nodiscard]] std::string Riff(std::string_view type, std::string_view content);
// A 'strl' list: 25 pictures a second of Cinepak, 8x4.
[[nodiscard]] std::string VideoStream();
// A 'strl' list: 16-bit mono PCM, 8000 Hz.
[[nodiscard]] std::string AudioStream();
// An entry of 'idx1'.
[[nodiscard]] std::string IndexEntry(std::string_view id, UINT32 flags);
// Both streams, these movie chunks, and what follows them.
[[nodiscard]] std::string AviFileOf(std::string_view movie, std::string_view behind = {});

using test_source::MemorySource;

} // namespace test_avi
