// The AudioSpecificConfig of MPEG-4 audio (ISO/IEC 14496-3, 1.6.2.1), the codec private data of AAC.
//
// Units: hertz. Owner: what is returned is the caller's.
#pragma once

#include <optional>
#include <vector>

#include "codecs/byte_view.h"

namespace codecs {

struct AudioSpecificConfig {
    uint32_t objectType = 0; // of the core
    uint32_t rateHz = 0;     // of the core
    uint32_t channels = 0;   // 0: told elsewhere
    // With spectral band replication, what comes out of it.
    std::optional<uint32_t> outputRateHz{};
};

// None for one that is cut off, or that names no rate.
[[nodiscard]] std::optional<AudioSpecificConfig> ParseAudioSpecificConfig(ByteView bytes);

// Of the Low Complexity profile. None for channels that it has no number for.
[[nodiscard]] std::optional<std::vector<uint8_t>> MakeAudioSpecificConfig(uint32_t rateHz, uint32_t channels);

} // namespace codecs
