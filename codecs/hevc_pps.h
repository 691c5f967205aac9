// What is taken from an H.265 picture parameter set (ITU-T H.265, 7.3.2.3): its head, as far as slice heads depend on
// it, and how its pictures can be decoded in parallel.
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

struct HevcPpsParallelism {
    bool hasTiles = false;
    bool hasWavefronts = false;
};

// unit: the whole NAL unit, header included and with its emulation prevention bytes. None for one that is damaged up to
// there.
[[nodiscard]] std::optional<HevcPpsHead> ParseHevcPpsHead(ByteView unit);
[[nodiscard]] std::optional<HevcPpsParallelism> ParseHevcPpsParallelism(ByteView unit);

} // namespace codecs
