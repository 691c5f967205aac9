// HugeChunks: AVI files that would have the system's splitter take gigabytes for a single chunk.
#pragma once

#include <string>

#include "sources/base/byte_source.h"

namespace mkvmux {

// Whether the bytes are an AVI file with a chunk of media that is, or claims to be, larger than any packet that is
// accepted, or with more chunks than any recording has. A splitter makes room for a chunk before it looks at it; our
// own reader tells the damage and goes on. Only the heads of the chunks are looked at, but of all: a file of many large
// chunks costs a read for each.
[[nodiscard]] bool HasHugeChunk(const source::ByteSource& bytes);
// False for a file that cannot be opened, too.
[[nodiscard]] bool HasHugeChunk(const std::wstring& path);

} // namespace mkvmux
