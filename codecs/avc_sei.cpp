#include "codecs/avc_sei.h"

#include <vector>

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint32_t kRecoveryPoint = 6;
constexpr uint8_t kNumberContinues = 255;

// A sum of bytes, off the payload's front.
uint32_t TakeSeiNumber(ByteView& payload) {
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

bool IsExactRecoveryPoint(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kAvcHeaderBytes);
    ByteView rest = payload;
    while (rest.size() > 2) {
        const uint32_t type = TakeSeiNumber(rest);
        const uint32_t size = TakeSeiNumber(rest);
        if (size > rest.size()) {
            return false;
        }
        if (type == kRecoveryPoint) {
            BitstreamReader reader(rest.first(size));
            return reader.ReadUE() == 0 && reader.IsValid();
        }
        rest = rest.subspan(size);
    }
    return false;
}

} // namespace codecs
