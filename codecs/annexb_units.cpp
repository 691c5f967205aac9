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

std::optional<std::span<uint8_t>> ConvertAnnexBUnitsInPlace(std::span<uint8_t> byteStream) {
    const std::vector<ByteView> units = FindAnnexBUnits(byteStream);
    const auto placeOf = [&byteStream](ByteView unit) { return static_cast<size_t>(unit.data() - byteStream.data()); };
    const size_t first = units.empty() ? 0 : placeOf(units.front());
    const size_t begin = first - std::min(first, kSampleLengthSizeBytes);
    for (size_t to = begin; const ByteView unit : units) {
        to += kSampleLengthSizeBytes;
        if (to > placeOf(unit)) {
            return std::nullopt;
        }
        to += unit.size();
    }
    size_t end = begin;
    for (const ByteView unit : units) {
        WriteBigEndian(byteStream.subspan(end, kSampleLengthSizeBytes), unit.size());
        end += kSampleLengthSizeBytes;
        std::copy(unit.begin(), unit.end(), byteStream.begin() + static_cast<std::ptrdiff_t>(end));
        end += unit.size();
    }
    return byteStream.subspan(begin, end - begin);
}

} // namespace codecs
