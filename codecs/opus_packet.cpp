#include "codecs/opus_packet.h"

#include <array>

namespace codecs {

namespace {

constexpr uint32_t kSamplesPerMs = kOpusSamplesPerSecond / 1000;
constexpr uint32_t kMaxPacketSamples = 120 * kSamplesPerMs;

// Of one frame, by the configuration in the first byte.
uint32_t FrameSamples(unsigned configuration) {
    constexpr unsigned kFirstHybrid = 12;
    constexpr unsigned kFirstCelt = 16;
    constexpr std::array<uint32_t, 4> kSilk{10 * kSamplesPerMs, 20 * kSamplesPerMs, 40 * kSamplesPerMs,
                                            60 * kSamplesPerMs};
    constexpr std::array<uint32_t, 4> kCelt{5 * kSamplesPerMs / 2, 5 * kSamplesPerMs, 10 * kSamplesPerMs,
                                            20 * kSamplesPerMs};
    if (configuration >= kFirstCelt) {
        return kCelt[configuration % kCelt.size()];
    }
    return configuration >= kFirstHybrid ? kSilk[configuration % 2] : kSilk[configuration % kSilk.size()];
}

} // namespace

uint32_t OpusPacketSamples(ByteView packet) {
    constexpr unsigned kConfigurationShift = 3;
    constexpr unsigned kCountMask = 0x03;
    constexpr unsigned kAnyCount = 3;
    constexpr unsigned kFramesMask = 0x3f;
    if (packet.empty()) {
        return 0;
    }
    const unsigned count = packet[0] & kCountMask;
    uint32_t frames = count == 0 ? 1 : 2;
    if (count == kAnyCount) {
        frames = packet.size() > 1 ? packet[1] & kFramesMask : 0;
    }
    const uint32_t samples = frames * FrameSamples(packet[0] >> kConfigurationShift);
    return samples <= kMaxPacketSamples ? samples : 0;
}

} // namespace codecs
