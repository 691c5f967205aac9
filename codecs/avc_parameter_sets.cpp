#include "codecs/avc_parameter_sets.h"

#include <algorithm>
#include <array>
#include <bit>

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint32_t kAvcMaxSpsId = 31;
constexpr uint32_t kAvcMaxChromaFormatIdc = 3;
constexpr uint32_t kMaxBitDepthMinus8 = 6;
constexpr uint32_t kMaxRefFramesInCycle = 255;
constexpr uint32_t kMaxSliceGroupsMinus1 = 7;
constexpr uint32_t kMaxMacroblocks = 1U << 20;
constexpr uint32_t kMaxMacroblocksOneWay = 1U << 12;
constexpr uint32_t kMacroblockPixels = 16;
constexpr uint32_t kMaxCrop = 1U << 16;
constexpr size_t kMaxHeadBytes = 64; // four of them numbers whose lengths are not fixed
constexpr uint32_t kExtendedAspectRatio = 255;
// Those whose parameter sets tell the chroma format (7.3.2.1.1).
constexpr std::array<uint8_t, 13> kHighProfiles{100, 110, 122, 244, 44, 83, 86, 118, 128, 138, 139, 134, 135};

struct SampleAspect {
    uint32_t x;
    uint32_t y;
};
// Table E-1.
constexpr SampleAspect kSampleAspects[] = {
    {1, 1},   {1, 1},   {12, 11}, {10, 11}, {16, 11},  {40, 33}, {24, 11}, {20, 11}, {32, 11},
    {80, 33}, {18, 11}, {15, 11}, {64, 33}, {160, 99}, {4, 3},   {3, 2},   {2, 1},
};

void SkipAvcScalingList(BitstreamReader& reader, int size) {
    int32_t last = 8;
    int32_t next = 8;
    for (int i = 0; i < size; ++i) {
        if (next != 0) {
            next = (last + reader.ReadSE() % 256 + 256) % 256;
        }
        last = next == 0 ? last : next;
    }
}

bool TellsChroma(const AvcSpsHead& head) {
    return std::find(kHighProfiles.begin(), kHighProfiles.end(), head.profile) != kHighProfiles.end();
}

AvcSpsHead ReadAvcHead(BitstreamReader& reader) {
    AvcSpsHead head;
    head.profile = static_cast<uint8_t>(reader.ReadBits(8));
    head.compatibility = static_cast<uint8_t>(reader.ReadBits(8));
    head.level = static_cast<uint8_t>(reader.ReadBits(8));
    head.id = reader.ReadUE(kAvcMaxSpsId);
    if (TellsChroma(head)) {
        head.chromaFormatIdc = reader.ReadUE(kAvcMaxChromaFormatIdc);
        head.separateColourPlanes = head.chromaFormatIdc == kAvcMaxChromaFormatIdc && reader.ReadFlag();
        head.bitDepthLumaMinus8 = reader.ReadUE();
        head.bitDepthChromaMinus8 = reader.ReadUE();
    }
    return head;
}

// How far the chroma format reaches: 0 for pictures without colours.
uint32_t ReadChroma(BitstreamReader& reader, AvcSps& sps) {
    const uint32_t chroma = sps.chromaFormatIdc;
    sps.isMonochrome = chroma == 0;
    reader.ReadFlag(); // qpprime_y_zero_transform_bypass_flag
    if (reader.ReadFlag()) {
        const int lists = chroma == kAvcMaxChromaFormatIdc ? 12 : 8;
        for (int i = 0; i < lists; ++i) {
            if (reader.ReadFlag()) {
                SkipAvcScalingList(reader, i < 6 ? 16 : 64);
            }
        }
    }
    return sps.separateColourPlanes ? 0 : chroma;
}

void ReadPictureOrder(BitstreamReader& reader, AvcSps& sps) {
    sps.frameNumBits = reader.ReadUE(12) + 4;
    sps.pocType = reader.ReadUE(2);
    if (sps.pocType == 0) {
        sps.pocLsbBits = reader.ReadUE(12) + 4;
    } else if (sps.pocType == 1) {
        sps.deltaPicOrderAlwaysZero = reader.ReadFlag();
        sps.offsetForNonRefPic = reader.ReadSE();
        sps.offsetForTopToBottomField = reader.ReadSE();
        const uint32_t count = reader.ReadUE(kMaxRefFramesInCycle);
        for (uint32_t i = 0; i < count; ++i) {
            sps.offsetsForRefFrame.push_back(reader.ReadSE());
        }
    }
}

SampleAspect ReadSampleAspect(BitstreamReader& reader) {
    const uint32_t index = reader.ReadBits(8);
    if (index == kExtendedAspectRatio) {
        const uint32_t x = reader.ReadBits(16);
        const uint32_t y = reader.ReadBits(16);
        return reader.IsValid() && x != 0 && y != 0 ? SampleAspect{x, y} : SampleAspect{1, 1};
    }
    return index < std::size(kSampleAspects) ? kSampleAspects[index] : SampleAspect{1, 1};
}

// What the VUI tells of the pictures; what lies behind that is of no interest.
SampleAspect ReadVui(BitstreamReader& reader, AvcSps& sps) {
    const SampleAspect aspect = reader.ReadFlag() ? ReadSampleAspect(reader) : SampleAspect{1, 1};
    sps.signal = ReadVideoSignal(reader);
    return aspect;
}

void ReadShape(BitstreamReader& reader, uint32_t chroma, AvcSps& sps) {
    uint32_t width = (reader.ReadUE(kMaxMacroblocksOneWay - 1) + 1) * kMacroblockPixels;
    const uint32_t mapUnits = reader.ReadUE(kMaxMacroblocksOneWay - 1) + 1;
    sps.frameMbsOnly = reader.ReadFlag();
    if (!sps.frameMbsOnly) {
        reader.ReadFlag(); // mb_adaptive_frame_field_flag
    }
    reader.ReadFlag(); // direct_8x8_inference_flag
    const uint32_t fieldFactor = sps.frameMbsOnly ? 1 : 2;
    if (mapUnits * fieldFactor > kMaxMacroblocksOneWay) {
        return; // no picture; and its height times an aspect ratio would not fit
    }
    uint32_t height = mapUnits * kMacroblockPixels * fieldFactor;
    if (reader.ReadFlag()) {
        const uint32_t unitX = chroma == 1 || chroma == 2 ? 2 : 1;
        const uint32_t unitY = (chroma == 1 ? 2 : 1) * fieldFactor;
        const uint32_t horizontally = reader.ReadUE(kMaxCrop) + reader.ReadUE(kMaxCrop);
        const uint32_t vertically = reader.ReadUE(kMaxCrop) + reader.ReadUE(kMaxCrop);
        width = horizontally * unitX < width ? width - horizontally * unitX : width;
        height = vertically * unitY < height ? height - vertically * unitY : height;
    }
    if (!reader.IsValid()) { // not so if only what follows is damaged
        return;
    }
    const SampleAspect aspect = reader.ReadFlag() ? ReadVui(reader, sps) : SampleAspect{1, 1};
    sps.shape = {width, height, width * aspect.x, height * aspect.y};
}

// The slices of a group are somewhere in the picture: only the length of the description matters.
void SkipSliceGroups(BitstreamReader& reader, uint32_t groupsMinus1) {
    const uint32_t mapType = reader.ReadUE(6);
    if (mapType == 0) {
        for (uint32_t i = 0; i <= groupsMinus1; ++i) {
            reader.ReadUE();
        }
    } else if (mapType == 2) {
        for (uint32_t i = 0; i < 2 * groupsMinus1; ++i) {
            reader.ReadUE();
        }
    } else if (mapType >= 3 && mapType <= 5) {
        reader.ReadFlag();
        reader.ReadUE();
    } else if (mapType == 6) {
        const uint32_t units = reader.ReadUE(kMaxMacroblocks) + 1;
        reader.SkipBits(static_cast<size_t>(units) * static_cast<size_t>(std::bit_width(groupsMinus1)));
    }
}

} // namespace

std::optional<AvcSpsHead> ParseAvcSpsHead(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit.first(std::min(unit.size(), kMaxHeadBytes)), kAvcHeaderBytes);
    BitstreamReader reader(payload);
    const AvcSpsHead head = ReadAvcHead(reader);
    const bool isSane = reader.IsValid() && head.bitDepthLumaMinus8 <= kMaxBitDepthMinus8 &&
                        head.bitDepthChromaMinus8 <= kMaxBitDepthMinus8;
    return isSane ? std::optional(head) : std::nullopt;
}

std::optional<AvcSps> ParseAvcSps(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kAvcHeaderBytes);
    BitstreamReader reader(payload);
    AvcSps sps;
    static_cast<AvcSpsHead&>(sps) = ReadAvcHead(reader);
    const uint32_t chroma = TellsChroma(sps) ? ReadChroma(reader, sps) : 1;
    ReadPictureOrder(reader, sps);
    reader.ReadUE();   // max_num_ref_frames
    reader.ReadFlag(); // gaps_in_frame_num_value_allowed_flag
    ReadShape(reader, chroma, sps);
    return sps.shape.width > 0 ? std::optional(sps) : std::nullopt;
}

std::optional<AvcPps> ParseAvcPps(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kAvcHeaderBytes);
    BitstreamReader reader(payload);
    AvcPps pps;
    pps.id = reader.ReadUE(kAvcMaxPpsId);
    pps.spsId = reader.ReadUE(kAvcMaxSpsId);
    reader.ReadFlag(); // entropy_coding_mode_flag
    pps.bottomFieldPicOrderPresent = reader.ReadFlag();
    if (const uint32_t groupsMinus1 = reader.ReadUE(kMaxSliceGroupsMinus1); groupsMinus1 > 0) {
        SkipSliceGroups(reader, groupsMinus1);
    }
    for (uint32_t& entries : pps.refIdxDefault) {
        entries = reader.ReadUE(kAvcMaxRefIdx) + 1;
    }
    pps.weightedPrediction = reader.ReadFlag();
    pps.weightedBiprediction = reader.ReadBits(2);
    reader.SkipSE(); // quantisers
    reader.SkipSE();
    reader.SkipSE();    // chroma_qp_index_offset
    reader.ReadBits(2); // deblocking_filter_control_present_flag, constrained_intra_pred_flag
    pps.redundantPicCntPresent = reader.ReadFlag();
    return reader.IsValid() ? std::optional(pps) : std::nullopt;
}

} // namespace codecs
