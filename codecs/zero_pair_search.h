// Looks for what start codes and emulation prevention have in common: two zeros. Everything else of a stream is passed
// over in words.
//
// Units: bytes. Owner: a view.
#pragma once

#include "codecs/byte_view.h"

namespace codecs {

// Where the next zero stands, from there on, that is followed by another one or is the last byte; the size of the bytes
// when there is none.
[[nodiscard]] size_t FindZeros(ByteView bytes, size_t from);

} // namespace codecs
