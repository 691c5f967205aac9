// The samples of MEDIATYPE_Text, which say nothing of their characters: what is valid UTF-8 is taken for that, and
// anything else for Windows-1252, on every system alike.
//
// Owner: views of the caller's bytes.
#pragma once

#include <vector>

#include "media/format_block.h"

namespace media {

// Without the zeros that end the text in memory.
[[nodiscard]] ByteView WithoutEnd(ByteView text);

// Without overlong forms, surrogates and what lies beyond U+10FFFF.
[[nodiscard]] bool IsUtf8(ByteView text);

// The text without its end.
[[nodiscard]] std::vector<BYTE> Utf8Of(ByteView text);

} // namespace media
