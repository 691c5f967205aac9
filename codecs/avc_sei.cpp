#include "codecs/avc_sei.h"

#include <vector>

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"
#include "codecs/sei_message.h"

namespace codecs {

namespace {

constexpr uint32_t kRecoveryPoint = 6;

} // namespace

bool IsExactRecoveryPoint(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kAvcHeaderBytes);
    ByteView rest = payload;
    while (const std::optional<SeiMessage> message = TakeSeiMessage(rest)) {
        if (message->type == kRecoveryPoint) {
            BitstreamReader reader(message->payload);
            return reader.ReadUE() == 0 && reader.IsValid();
        }
    }
    return false;
}

} // namespace codecs
