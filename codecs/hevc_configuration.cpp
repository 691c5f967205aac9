#include "codecs/hevc_configuration.h"

#include <algorithm>

#include "codecs/annexb_converter.h"
#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"

namespace mkv {

namespace {

constexpr size_t kReservedSizeBytes = 1024;
// Both are one or two bytes of the record.
constexpr size_t kMaxArrays = 255;
constexpr size_t kMaxUnitLengthBytes = 65535;

constexpr BYTE kNalTypeSps = 33;
constexpr BYTE kArrayCompleteness = 0x80;

// Deliberately 0 and not 1.
constexpr BYTE kConfigurationVersion = 0;
constexpr BYTE kUnknownParallelism = 0xfc;
constexpr BYTE kLengthSizeMinusOne = 3;
// Deliberately no more of the 48 flags.
constexpr unsigned kWrittenConstraintFlags = 14;
constexpr unsigned kConstraintFlags = 48;

using Record = std::vector<BYTE>;

void AppendBytes(Record& record, UINT32 value, unsigned bytes) {
    while (bytes-- > 0) {
        record.push_back(static_cast<BYTE>(value >> (bytes * 8)));
    }
}

std::vector<NALUnit> FindUnits(std::span<const BYTE> byteStream) {
    std::vector<NALUnit> units;
    NALUnitScanner scanner(byteStream, kStartCodeLengthBytes);
    while (const std::optional<NALUnit> unit = scanner.Next()) {
        if (unit->Length() <= kMaxUnitLengthBytes && units.size() < kMaxArrays) {
            units.push_back(*unit);
        }
    }
    return units;
}

HevcSps FindSps(const std::vector<NALUnit>& units) {
    const auto found =
        std::find_if(units.begin(), units.end(), [](const NALUnit& unit) { return unit.HevcType() == kNalTypeSps; });
    return found == units.end() ? HevcSps() : ParseHevcSps(found->Payload());
}

BYTE ConstantFrameRate(const HevcSps& sps) {
    const auto begin = sps.fixedPicRateGeneral.begin();
    const auto end = begin + sps.maxSubLayersMinus1 + 1;
    if (std::find(begin, end, false) == end) {
        return 2;
    }
    return std::find(begin, end, true) == end ? BYTE{0} : BYTE{1};
}

UINT32 ConstraintFlagBytes(const HevcSps& sps) {
    const auto flags = static_cast<UINT32>(sps.generalConstraintFlags >> (kConstraintFlags - kWrittenConstraintFlags));
    return flags << (16 - kWrittenConstraintFlags);
}

void AppendProfile(Record& record, const HevcSps& sps) {
    record.push_back(
        static_cast<BYTE>(sps.generalProfileSpace << 6 | sps.generalTierFlag << 5 | sps.generalProfileIdc));
    AppendBytes(record, sps.generalProfileCompatibilityFlags, 4);
    AppendBytes(record, ConstraintFlagBytes(sps), 2);
    AppendBytes(record, 0, 4);
    record.push_back(sps.generalLevelIdc);
}

void AppendHead(Record& record, const HevcSps& sps, size_t arrays) {
    record.push_back(kConfigurationVersion);
    AppendProfile(record, sps);
    AppendBytes(record, 0xf000U | sps.minSpatialSegmentationIdc, 2);
    record.push_back(kUnknownParallelism);
    AppendBytes(record, 0xfcU | sps.chromaFormatIdc, 1);
    AppendBytes(record, 0xf8U | sps.bitDepthLumaMinus8, 1);
    AppendBytes(record, 0xf8U | sps.bitDepthChromaMinus8, 1);
    AppendBytes(record, 0, 2); // average frame rate: not known
    // The one count that the three bits do not hold, 8, becomes 0: not known.
    const unsigned temporalLayers = (sps.maxSubLayersMinus1 + 1U) & 7U;
    AppendBytes(record,
                static_cast<UINT32>(ConstantFrameRate(sps) << 6) | temporalLayers << 3 |
                    (sps.temporalIdNesting ? 4U : 0U) | kLengthSizeMinusOne,
                1);
    AppendBytes(record, static_cast<UINT32>(arrays), 1);
}

// Deliberately one array for each unit, also for several of one type.
void AppendArray(Record& record, const NALUnit& unit) {
    record.push_back(kArrayCompleteness | unit.HevcType());
    AppendBytes(record, 1, 2);
    AppendBytes(record, static_cast<UINT32>(unit.Length()), 2);
    record.insert(record.end(), unit.Payload().begin(), unit.Payload().end());
}

} // namespace

std::vector<BYTE> BuildHevcConfiguration(std::span<const BYTE> byteStream) {
    const std::vector<NALUnit> units = FindUnits(byteStream);
    Record record;
    record.reserve(kReservedSizeBytes);
    AppendHead(record, FindSps(units), units.size());
    for (const NALUnit& unit : units) {
        AppendArray(record, unit);
    }
    return record;
}

} // namespace mkv
