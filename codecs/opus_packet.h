// How long an Opus packet lasts, by its first two bytes (RFC 6716, section 3). Units: samples at 48 kHz.
#pragma once

#include <cstdint>

#include "codecs/byte_view.h"

namespace codecs {

inline constexpr uint32_t kOpusSamplesPerSecond = 48000;

// 0 for what is no packet.
[[nodiscard]] uint32_t OpusPacketSamples(ByteView packet);

} // namespace codecs
