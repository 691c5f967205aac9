#include "codecs/sequence_header.h"

#include <algorithm>

#include "codecs/annexb_units.h"
#include "codecs/big_endian.h"
#include "codecs/unit_lengths.h"

namespace codecs {

namespace {

using Units = std::vector<ByteView>;

std::optional<Units> FindUnitsByLength(ByteView header) {
    Units units;
    while (header.size() >= kParameterSetLengthSizeBytes) {
        const auto length = static_cast<size_t>(ReadBigEndian(header.first(kParameterSetLengthSizeBytes)));
        if (length == 0) {
            break;
        }
        header = header.subspan(kParameterSetLengthSizeBytes);
        if (length > header.size()) {
            return std::nullopt;
        }
        units.push_back(header.first(length));
        header = header.subspan(length);
    }
    return units;
}

} // namespace

std::optional<Units> FindHeaderUnits(ByteView header) {
    return BeginsWithStartCode(header) ? FindAnnexBUnits(header) : FindUnitsByLength(header);
}

void AddUnit(Units& units, ByteView unit, size_t most) {
    const auto isSame = [unit](ByteView other) { return std::ranges::equal(unit, other); };
    if (!unit.empty() && unit.size() <= kMaxRecordUnitBytes && units.size() < most &&
        std::ranges::none_of(units, isSame)) {
        units.push_back(unit);
    }
}

uint8_t LengthSizeMinusOne(const SequenceFacts& facts) {
    const bool isAllowed = facts.lengthBytes == 1 || facts.lengthBytes == 2;
    return static_cast<uint8_t>((isAllowed ? facts.lengthBytes : kSampleLengthSizeBytes) - 1);
}

} // namespace codecs
