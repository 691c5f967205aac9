// The temporal units of AV1 as containers have them: without the units that say nothing there (the AV1 mappings of
// Matroska and of the ISO base media file format), and each with its size.
//
// Units: bytes. Owner: what is returned is the caller's. Errors: bytes that are no units stay as they are.
#pragma once

#include <optional>
#include <span>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

// Without temporal delimiters, padding, tile lists and copies of frame headers. Empty when nothing is left.
[[nodiscard]] std::vector<uint8_t> CleanAv1Units(ByteView units);
// The same in place: what is left of the units. None when a unit needs more room than it has; nothing is changed then.
[[nodiscard]] std::optional<std::span<uint8_t>> CleanAv1UnitsInPlace(std::span<uint8_t> units);

enum class Av1RandomAccess {
    No,
    WithoutHeader, // begins with a key frame, but the sequence header must come from elsewhere
    Yes,
};

// Whether decoding can begin with a temporal unit: its first frame is a key frame that is shown, behind a sequence
// header. None for what has no frame header that can be read.
[[nodiscard]] std::optional<Av1RandomAccess> RandomAccessOfAv1(ByteView units);

} // namespace codecs
