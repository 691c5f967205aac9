#include "codecs/annexb_units.h"

#include <algorithm>
#include <cstdint>

#include "codecs/big_endian.h"
#include "codecs/nal_unit.h"
#include "codecs/unit_lengths.h"

namespace codecs {

namespace {

constexpr size_t kLeastZeros = 2; // of a start code
constexpr size_t kShortStartCodeBytes = kLeastZeros + 1;

// The first zero of a start code of four bytes is one behind the unit in front of it here.
ByteView WithoutZerosBehind(ByteView unit) {
    while (!unit.empty() && unit.back() == 0) {
        unit = unit.first(unit.size() - 1);
    }
    return unit;
}

} // namespace

bool BeginsWithStartCode(ByteView bytes) {
    const auto first = std::find_if(bytes.begin(), bytes.end(), [](uint8_t byte) { return byte != 0; });
    return first != bytes.end() && *first == 1 && static_cast<size_t>(first - bytes.begin()) >= kLeastZeros;
}

std::vector<ByteView> FindAnnexBUnits(ByteView byteStream) {
    std::vector<ByteView> units;
    NALUnitScanner scanner(byteStream, kShortStartCodeBytes);
    while (const std::optional<NALUnit> found = scanner.Next()) {
        if (const ByteView unit = WithoutZerosBehind(found->Payload()); !unit.empty()) {
            units.push_back(unit);
        }
    }
    return units;
}

std::vector<uint8_t> ConvertAnnexBUnits(ByteView byteStream) {
    std::vector<uint8_t> output;
    output.reserve(byteStream.size() + kSampleLengthSizeBytes);
    for (const ByteView unit : FindAnnexBUnits(byteStream)) {
        if (unit.size() <= UINT32_MAX) {
            AppendBigEndian(output, unit.size(), kSampleLengthSizeBytes);
            output.insert(output.end(), unit.begin(), unit.end());
        }
    }
    return output;
}

} // namespace codecs
