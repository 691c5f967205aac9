#include "codecs/whole_hevc_configuration.h"

#include <algorithm>
#include <array>

#include "codecs/big_endian.h"
#include "codecs/hevc_pps.h"
#include "codecs/hevc_record.h"
#include "codecs/hevc_sei.h"
#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"
#include "codecs/unit_lengths.h"

namespace codecs {

namespace {

constexpr uint8_t kWholeHevcVersion = 1;
constexpr size_t kMaxUnitsOfAType = 255; // those of the parameter sets are fewer
constexpr uint32_t kMaxSpatialSegmentation = 4095;
constexpr uint32_t kMaxChromaFormat = 3;
constexpr uint32_t kMaxHevcBitDepthMinus8 = 7;
constexpr uint8_t kMaxTemporalLayers = 7;

// How pictures can be decoded in parallel; 0 is mixed, or not known.
constexpr uint8_t kBySlices = 1;
constexpr uint8_t kByTiles = 2;
constexpr uint8_t kByWavefronts = 3;

using Record = std::vector<uint8_t>;
using Units = std::vector<ByteView>;

// In the order in which the standard wants the arrays.
constexpr std::array kArrayTypes{kHevcVpsUnit, kHevcSpsUnit, kHevcPpsUnit, kHevcPrefixSei};
using Arrays = std::array<Units, kArrayTypes.size()>;
constexpr size_t kSpsArray = 1;
constexpr size_t kPpsArray = 2;

bool BelongsIntoRecord(ByteView unit) {
    const NALUnit nal(unit);
    return unit.size() >= kHevcHeaderBytes && nal.HevcLayerId() == 0 &&
           (nal.HevcType() != kHevcPrefixSei || IsDeclarativeHevcSei(unit));
}

Arrays SortOutArrays(const Units& units) {
    Arrays arrays;
    for (const ByteView unit : units) {
        const auto type = std::ranges::find(kArrayTypes, NALUnit(unit).HevcType());
        if (type != kArrayTypes.end() && BelongsIntoRecord(unit)) {
            AddUnit(arrays[static_cast<size_t>(type - kArrayTypes.begin())], unit, kMaxUnitsOfAType);
        }
    }
    return arrays;
}

HevcSps SpsOf(const Arrays& arrays, const SequenceFacts& facts) {
    if (!arrays[kSpsArray].empty()) {
        return ParseHevcSps(arrays[kSpsArray].front());
    }
    HevcSps sps;
    sps.generalProfileIdc = facts.profile & 0x1f;
    sps.generalLevelIdc = facts.level;
    sps.chromaFormatIdc = 1;
    return sps;
}

uint8_t ParallelismOf(const HevcPpsParallelism& pps) {
    if (pps.hasTiles && pps.hasWavefronts) {
        return 0;
    }
    if (pps.hasWavefronts) {
        return kByWavefronts;
    }
    return pps.hasTiles ? kByTiles : kBySlices;
}

// It tells what the spatial segments are that the sequence parameter set promises; without a promise there is nothing
// to tell.
uint8_t ParallelismOf(const Units& ppsUnits, uint32_t spatialSegmentation) {
    std::optional<uint8_t> common;
    for (const ByteView unit : ppsUnits) {
        const std::optional<HevcPpsParallelism> pps = ParseHevcPpsParallelism(unit);
        const uint8_t own = pps ? ParallelismOf(*pps) : uint8_t{0};
        common = common.value_or(own) == own ? own : uint8_t{0};
    }
    return spatialSegmentation == 0 ? uint8_t{0} : common.value_or(0);
}

// 0 for what no such field holds.
uint32_t Within(uint32_t value, uint32_t maximum) {
    return value <= maximum ? value : 0;
}

void AppendHead(Record& record, const HevcSps& sps, uint8_t parallelism, uint8_t lengthSizeMinusOne) {
    record.push_back(kWholeHevcVersion);
    record.push_back(
        static_cast<uint8_t>(sps.generalProfileSpace << 6 | sps.generalTierFlag << 5 | sps.generalProfileIdc));
    AppendBigEndian(record, sps.generalProfileCompatibilityFlags, 4);
    AppendBigEndian(record, sps.generalConstraintFlags, 6);
    record.push_back(sps.generalLevelIdc);
    AppendBigEndian(record, 0xf000U | Within(sps.minSpatialSegmentationIdc, kMaxSpatialSegmentation), 2);
    AppendBigEndian(record, 0xfcU | parallelism, 1);
    AppendBigEndian(record, 0xfcU | Within(sps.chromaFormatIdc, kMaxChromaFormat), 1);
    AppendBigEndian(record, 0xf8U | Within(sps.bitDepthLumaMinus8, kMaxHevcBitDepthMinus8), 1);
    AppendBigEndian(record, 0xf8U | Within(sps.bitDepthChromaMinus8, kMaxHevcBitDepthMinus8), 1);
    AppendBigEndian(record, 0, 2); // average frame rate: not told
    // The frame rate may be constant or not: not told either.
    const unsigned temporalLayers = std::min<unsigned>(sps.maxSubLayersMinus1 + 1U, kMaxTemporalLayers);
    AppendBigEndian(record, temporalLayers << 3 | (sps.temporalIdNesting ? 4U : 0U) | lengthSizeMinusOne, 1);
}

// Not said to be complete: the samples may bring parameter sets, too, and a byte stream usually does.
void AppendArray(Record& record, uint8_t type, const Units& units) {
    record.push_back(type);
    AppendBigEndian(record, units.size(), 2);
    for (const ByteView unit : units) {
        AppendBigEndian(record, unit.size(), kParameterSetLengthSizeBytes);
        record.insert(record.end(), unit.begin(), unit.end());
    }
}

Record BuildHevc(const Units& units, const SequenceFacts& facts) {
    const Arrays arrays = SortOutArrays(units);
    const HevcSps sps = SpsOf(arrays, facts);
    const uint32_t segmentation = Within(sps.minSpatialSegmentationIdc, kMaxSpatialSegmentation);
    Record record;
    AppendHead(record, sps, ParallelismOf(arrays[kPpsArray], segmentation), LengthSizeMinusOne(facts));
    record.push_back(
        static_cast<uint8_t>(std::ranges::count_if(arrays, [](const Units& array) { return !array.empty(); })));
    for (size_t i = 0; i < arrays.size(); ++i) {
        if (!arrays[i].empty()) {
            AppendArray(record, kArrayTypes[i], arrays[i]);
        }
    }
    return record;
}

} // namespace

std::optional<Record> BuildWholeHevcConfiguration(ByteView header, const SequenceFacts& facts) {
    if (const std::optional<HevcRecord> inside = ParseHevcRecord(header)) {
        return inside->isSound ? Record(header.begin(), header.end())
                               : BuildHevc(inside->units, {facts.profile, facts.level, inside->lengthBytes});
    }
    const std::optional<Units> units = FindHeaderUnits(header);
    return units ? std::optional(BuildHevc(*units, facts)) : std::nullopt;
}

} // namespace codecs
