#include "codecs/sei_message.h"

namespace codecs {

namespace {

constexpr uint8_t kNumberContinues = 255;
constexpr size_t kLeastBytes = 3; // type, size, and the bits behind the last message

// A sum of bytes, off the payload's front.
uint32_t TakeNumber(ByteView& payload) {
    uint32_t number = 0;
    uint8_t byte = kNumberContinues;
    while (byte == kNumberContinues && !payload.empty()) {
        byte = payload.front();
        number += byte;
        payload = payload.subspan(1);
    }
    return number;
}

} // namespace

std::optional<SeiMessage> TakeSeiMessage(ByteView& rest) {
    if (rest.size() < kLeastBytes) {
        return std::nullopt;
    }
    const uint32_t type = TakeNumber(rest);
    const uint32_t size = TakeNumber(rest);
    if (size > rest.size()) {
        rest = {};
        return std::nullopt;
    }
    const SeiMessage message{type, rest.first(size)};
    rest = rest.subspan(size);
    return message;
}

} // namespace codecs
