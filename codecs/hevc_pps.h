// The head of an H.265 picture parameter set (ITU-T H.265, 7.3.2.3), as far as slice heads depend on it.
#pragma once

#include <optional>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr uint32_t kHevcMaxPpsId = 63;

struct HevcPpsHead {
    uint32_t id = 0;
    uint32_t spsId = 0;
    bool outputFlagPresent = false;
    unsigned extraSliceHeaderBits = 0;
};

// unit: the whole NAL unit, header included and with its emulation prevention bytes. None for a head that is damaged.
[[nodiscard]] std::optional<HevcPpsHead> ParseHevcPpsHead(ByteView unit);

} // namespace codecs
