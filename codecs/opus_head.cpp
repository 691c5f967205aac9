#include "codecs/opus_head.h"

#include <algorithm>
#include <array>

namespace codecs {

namespace {

constexpr std::array<uint8_t, 8> kOpusMagic{'O', 'p', 'u', 's', 'H', 'e', 'a', 'd'};
constexpr uint8_t kOpusVersion = 1;
constexpr uint8_t kMajorVersionMask = 0xf0;
constexpr size_t kOpusVersionAt = 8;
constexpr size_t kChannelsAt = 9;
constexpr size_t kPreSkipAt = 10;
constexpr size_t kMappingFamilyAt = 18;
constexpr size_t kOpusHeadBytes = 19;
constexpr size_t kMappingHeadBytes = 2; // numbers of streams and of coupled ones, in front of the channels' bytes
constexpr uint8_t kMaxPlainChannels = 2;

size_t BytesOf(uint8_t channels, uint8_t mappingFamily) {
    return mappingFamily == 0 ? kOpusHeadBytes : kOpusHeadBytes + kMappingHeadBytes + channels;
}

} // namespace

std::optional<OpusHead> ParseOpusHead(ByteView bytes) {
    if (bytes.size() < kOpusHeadBytes || !std::equal(kOpusMagic.begin(), kOpusMagic.end(), bytes.begin()) ||
        (bytes[kOpusVersionAt] & kMajorVersionMask) != 0) {
        return std::nullopt;
    }
    const OpusHead head{bytes[kChannelsAt], static_cast<uint16_t>(bytes[kPreSkipAt] | bytes[kPreSkipAt + 1] << 8)};
    const uint8_t mappingFamily = bytes[kMappingFamilyAt];
    const bool isWhole = bytes.size() >= BytesOf(head.channels, mappingFamily);
    const bool isMapped = mappingFamily != 0 || head.channels <= kMaxPlainChannels;
    return head.channels > 0 && isMapped && isWhole ? std::optional(head) : std::nullopt;
}

std::optional<std::vector<uint8_t>> MakeOpusHead(uint32_t channels, uint32_t inputRateHz) {
    if (channels == 0 || channels > kMaxPlainChannels) {
        return std::nullopt;
    }
    std::vector<uint8_t> head(kOpusMagic.begin(), kOpusMagic.end());
    head.insert(head.end(), {kOpusVersion, static_cast<uint8_t>(channels), 0, 0});
    for (unsigned shift = 0; shift < 32; shift += 8) { // the least significant byte first
        head.push_back(static_cast<uint8_t>(inputRateHz >> shift));
    }
    head.insert(head.end(), {0, 0, 0}); // no gain, plain mapping
    return head;
}

} // namespace codecs
