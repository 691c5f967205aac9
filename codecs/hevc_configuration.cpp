#include "codecs/hevc_configuration.h"

#include <algorithm>

#include "codecs/annexb_converter.h"
#include "codecs/big_endian.h"
#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr size_t kReservedSizeBytes = 1024;
// Both are one or two bytes of the record.
constexpr size_t kMaxArrays = 255;
constexpr size_t kMaxUnitLengthBytes = 65535;

constexpr uint8_t kArrayCompleteness = 0x80;

// The oddities below are deliberate: who keeps recordings compares their records byte for byte, and these bytes must
// stay those of the files that exist.

// 0 and not 1.
constexpr uint8_t kHevcConfigurationVersion = 0;
constexpr uint8_t kUnknownParallelism = 0xfc;
// No more of the 48 flags.
constexpr unsigned kWrittenConstraintFlags = 14;
constexpr unsigned kConstraintFlags = 48;

using Record = std::vector<uint8_t>;

std::vector<NALUnit> FindUnits(ByteView byteStream) {
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
        std::find_if(units.begin(), units.end(), [](const NALUnit& unit) { return unit.HevcType() == kHevcSpsUnit; });
    return found == units.end() ? HevcSps() : ParseHevcSps(found->Payload());
}

uint8_t ConstantFrameRate(const HevcSps& sps) {
    const auto begin = sps.fixedPicRateGeneral.begin();
    const auto end = begin + sps.maxSubLayersMinus1 + 1;
    if (std::find(begin, end, false) == end) {
        return 2;
    }
    return std::find(begin, end, true) == end ? uint8_t{0} : uint8_t{1};
}

uint32_t ConstraintFlagBytes(const HevcSps& sps) {
    const auto flags =
        static_cast<uint32_t>(sps.generalConstraintFlags >> (kConstraintFlags - kWrittenConstraintFlags));
    return flags << (16 - kWrittenConstraintFlags);
}

void AppendProfile(Record& record, const HevcSps& sps) {
    record.push_back(
        static_cast<uint8_t>(sps.generalProfileSpace << 6 | sps.generalTierFlag << 5 | sps.generalProfileIdc));
    AppendBigEndian(record, sps.generalProfileCompatibilityFlags, 4);
    AppendBigEndian(record, ConstraintFlagBytes(sps), 2);
    AppendBigEndian(record, 0, 4);
    record.push_back(sps.generalLevelIdc);
}

void AppendHead(Record& record, const HevcSps& sps, size_t arrays) {
    record.push_back(kHevcConfigurationVersion);
    AppendProfile(record, sps);
    AppendBigEndian(record, 0xf000U | sps.minSpatialSegmentationIdc, 2);
    record.push_back(kUnknownParallelism);
    AppendBigEndian(record, 0xfcU | sps.chromaFormatIdc, 1);
    AppendBigEndian(record, 0xf8U | sps.bitDepthLumaMinus8, 1);
    AppendBigEndian(record, 0xf8U | sps.bitDepthChromaMinus8, 1);
    AppendBigEndian(record, 0, 2); // average frame rate: not known
    // The one count that the three bits do not hold, 8, becomes 0: not known.
    const unsigned temporalLayers = (sps.maxSubLayersMinus1 + 1U) & 7U;
    AppendBigEndian(record,
                    static_cast<uint32_t>(ConstantFrameRate(sps) << 6) | temporalLayers << 3 |
                        (sps.temporalIdNesting ? 4U : 0U) | (kSampleLengthSizeBytes - 1),
                    1);
    AppendBigEndian(record, arrays, 1);
}

// One array for each unit, also for several of one type.
void AppendArray(Record& record, const NALUnit& unit) {
    record.push_back(kArrayCompleteness | unit.HevcType());
    AppendBigEndian(record, 1, 2);
    AppendBigEndian(record, unit.Length(), 2);
    record.insert(record.end(), unit.Payload().begin(), unit.Payload().end());
}

} // namespace

std::vector<uint8_t> BuildHevcConfiguration(ByteView byteStream) {
    const std::vector<NALUnit> units = FindUnits(byteStream);
    Record record;
    record.reserve(kReservedSizeBytes);
    AppendHead(record, FindSps(units), units.size());
    for (const NALUnit& unit : units) {
        AppendArray(record, unit);
    }
    return record;
}

} // namespace codecs
