#include "codecs/hevc_sei.h"

#include <algorithm>
#include <array>
#include <vector>

#include "codecs/nal_unit.h"
#include "codecs/sei_message.h"

namespace codecs {

namespace {

constexpr std::array<uint32_t, 11> kDeclarativeTypes{
    4,   // registered user data
    5,   // unregistered user data: encoders tell their settings so
    45,  // frame packing
    47,  // display orientation
    129, // active parameter sets
    137, // mastering display
    144, // content light level
    147, // alternative transfer characteristics
    148, // ambient viewing environment
    149, // content colour volume
    150, // equirectangular projection
};
constexpr uint8_t kEndOfMessages = 0x80;

bool IsDeclarative(const SeiMessage& message) {
    return std::ranges::find(kDeclarativeTypes, message.type) != kDeclarativeTypes.end();
}

} // namespace

bool IsDeclarativeHevcSei(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    ByteView rest = payload;
    std::optional<SeiMessage> message = TakeSeiMessage(rest);
    while (message && IsDeclarative(*message) && rest.size() > 1) {
        message = TakeSeiMessage(rest);
    }
    return message && IsDeclarative(*message) && rest.size() == 1 && rest.front() == kEndOfMessages;
}

} // namespace codecs
