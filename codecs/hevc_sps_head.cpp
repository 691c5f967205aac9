#include "codecs/hevc_sps_head.h"

#include <algorithm>
#include <vector>

#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint32_t kChromaFormat420 = 1;
constexpr uint32_t kChromaFormat422 = 2;
constexpr uint32_t kChromaFormat444 = 3;
constexpr uint32_t kMaxPixelsOneWay = 1U << 16;
constexpr uint32_t kMaxLog2PocLsbMinus4 = 12;
// 2 + 1 + 5 profile bits, 32 compatibility flags, 48 constraint flags.
constexpr size_t kSubLayerProfileBits = 88;
constexpr size_t kSubLayerLevelBits = 8;

void SkipSubLayers(BitstreamReader& reader, unsigned subLayersMinus1) {
    size_t bits = 0;
    for (unsigned layer = 0; layer < subLayersMinus1; ++layer) {
        bits += reader.ReadFlag() ? kSubLayerProfileBits : 0;
        bits += reader.ReadFlag() ? kSubLayerLevelBits : 0;
    }
    if (subLayersMinus1 > 0) {
        bits += 2 * (kHevcMaxSubLayers - subLayersMinus1); // reserved_zero_2bits for the absent ones
    }
    reader.SkipBits(bits);
}

void ReadProfileTierLevel(BitstreamReader& reader, HevcSpsHead& head) {
    head.generalProfileSpace = static_cast<uint8_t>(reader.ReadBits(2));
    head.generalTierFlag = static_cast<uint8_t>(reader.ReadBits(1));
    head.generalProfileIdc = static_cast<uint8_t>(reader.ReadBits(5));
    head.generalProfileCompatibilityFlags = reader.ReadBits(32);
    const uint64_t firstConstraintFlags = reader.ReadBits(16);
    head.generalConstraintFlags = firstConstraintFlags << 32 | reader.ReadBits(32);
    head.generalLevelIdc = static_cast<uint8_t>(reader.ReadBits(8));
    SkipSubLayers(reader, head.maxSubLayersMinus1);
}

void ReadPictureFormat(BitstreamReader& reader, HevcSpsHead& head) {
    head.chromaFormatIdc = reader.ReadUE();
    head.separateColourPlanes = head.chromaFormatIdc == kChromaFormat444 && reader.ReadFlag();
    head.codedWidth = reader.ReadUE();
    head.codedHeight = reader.ReadUE();
    if (reader.ReadFlag()) {
        for (uint32_t& side : head.conformanceWindow) {
            side = reader.ReadUE();
        }
    }
    head.bitDepthLumaMinus8 = reader.ReadUE();
    head.bitDepthChromaMinus8 = reader.ReadUE();
}

bool IsInRange(const HevcSpsHead& head) {
    const auto isSize = [](uint32_t pixels) { return pixels > 0 && pixels <= kMaxPixelsOneWay; };
    const auto isSide = [](uint32_t pixels) { return pixels <= kMaxPixelsOneWay; };
    return head.id <= kHevcMaxSpsId && head.chromaFormatIdc <= kChromaFormat444 && isSize(head.codedWidth) &&
           isSize(head.codedHeight) &&
           std::all_of(head.conformanceWindow.begin(), head.conformanceWindow.end(), isSide);
}

} // namespace

PictureShape HevcSpsHead::Shape() const {
    const uint32_t unitX = chromaFormatIdc == kChromaFormat420 || chromaFormatIdc == kChromaFormat422 ? 2 : 1;
    const uint32_t unitY = chromaFormatIdc == kChromaFormat420 ? 2 : 1;
    const uint32_t horizontally = (conformanceWindow[0] + conformanceWindow[1]) * unitX;
    const uint32_t vertically = (conformanceWindow[2] + conformanceWindow[3]) * unitY;
    const uint32_t width = horizontally < codedWidth ? codedWidth - horizontally : codedWidth;
    const uint32_t height = vertically < codedHeight ? codedHeight - vertically : codedHeight;
    return {width, height, width, height};
}

HevcSpsHead ReadHevcSpsHead(BitstreamReader& reader) {
    HevcSpsHead head;
    reader.SkipBits(4); // sps_video_parameter_set_id
    head.maxSubLayersMinus1 = static_cast<uint8_t>(reader.ReadBits(3));
    head.temporalIdNesting = reader.ReadFlag();
    ReadProfileTierLevel(reader, head);
    head.id = reader.ReadUE();
    ReadPictureFormat(reader, head);
    head.pocLsbBits = reader.ReadUE(kMaxLog2PocLsbMinus4) + 4;
    return head;
}

std::optional<HevcSpsHead> ParseHevcSpsHead(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    BitstreamReader reader(payload);
    const HevcSpsHead head = ReadHevcSpsHead(reader);
    return reader.IsValid() && IsInRange(head) ? std::optional(head) : std::nullopt;
}

} // namespace codecs
