// The head in front of a ProRes frame, its length and "icpf": QuickTime and DirectShow have it, Matroska leaves it out.
#pragma once

#include <cstdint>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr size_t kProResHeadBytes = 8;

[[nodiscard]] bool HasProResHead(ByteView frame);

// Of a frame that has none and is not empty; of any other, nothing is changed.
void AddProResHead(std::vector<std::uint8_t>& frame);

} // namespace codecs
