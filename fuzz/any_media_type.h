// A media type of which five bytes choose the kind, and the rest is the format block.
#pragma once

#include <cstddef>
#include <cstdint>

#include "dshow/media_type.h"

namespace fuzz {

inline constexpr size_t kChoiceBytes = 5;

// At least kChoiceBytes. Nothing stands behind the block: a read beyond it is seen.
[[nodiscard]] CMediaType AnyMediaType(const std::uint8_t* data, size_t size);

} // namespace fuzz
