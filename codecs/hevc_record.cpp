#include "codecs/hevc_record.h"

#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr size_t kRecordHeadBytes = 23; // up to and with the count of arrays
constexpr size_t kCountBytes = 2;
constexpr size_t kLengthBytes = 2;
constexpr uint8_t kSoundVersion = 1;
constexpr uint8_t kMaxVersion = 1;
constexpr uint8_t kHevcLengthSizeMask = 0x03;
constexpr uint8_t kUnitTypeMask = 0x3f;

struct ReservedBits {
    size_t byte;
    uint8_t bits;
};
constexpr ReservedBits kReserved[] = {{13, 0xf0}, {15, 0xfc}, {16, 0xfc}, {17, 0xf8}, {18, 0xf8}};

bool HasReservedBits(ByteView record) {
    for (const ReservedBits& reserved : kReserved) {
        if ((record[reserved.byte] & reserved.bits) != reserved.bits) {
            return false;
        }
    }
    return true;
}

// A number off the front; none where it is cut off.
std::optional<size_t> TakeNumber(ByteView& rest, size_t bytes) {
    if (rest.size() < bytes) {
        return std::nullopt;
    }
    const auto number = static_cast<size_t>(ReadBigEndian(rest.first(bytes)));
    rest = rest.subspan(bytes);
    return number;
}

// Every unit has to be of the array's type.
bool TakeArray(ByteView& rest, std::vector<ByteView>& units) {
    const std::optional<size_t> head = TakeNumber(rest, 1);
    const std::optional<size_t> count = TakeNumber(rest, kCountBytes);
    if (!head || !count) {
        return false;
    }
    for (size_t i = 0; i < *count; ++i) {
        const std::optional<size_t> length = TakeNumber(rest, kLengthBytes);
        if (!length || *length > rest.size()) {
            return false;
        }
        const ByteView unit = rest.first(*length);
        if (NALUnit(unit).HevcType() != (*head & kUnitTypeMask)) {
            return false;
        }
        units.push_back(unit);
        rest = rest.subspan(*length);
    }
    return true;
}

} // namespace

std::optional<HevcRecord> ParseHevcRecord(ByteView record) {
    if (record.size() < kRecordHeadBytes || record[0] > kMaxVersion) {
        return std::nullopt;
    }
    HevcRecord parsed;
    parsed.isSound = record[0] == kSoundVersion && HasReservedBits(record);
    parsed.lengthBytes = static_cast<size_t>(record[kRecordHeadBytes - 2] & kHevcLengthSizeMask) + 1;
    ByteView rest = record.subspan(kRecordHeadBytes);
    for (size_t arrays = record[kRecordHeadBytes - 1]; arrays > 0; --arrays) {
        if (!TakeArray(rest, parsed.units)) {
            return std::nullopt;
        }
    }
    return rest.empty() ? std::optional(std::move(parsed)) : std::nullopt;
}

} // namespace codecs
