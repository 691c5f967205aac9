#include "sources/annexb/parameter_sets.h"

#include "codecs/bitstream_reader.h"
#include "codecs/nal_unit.h"

namespace annexb {

namespace {

using codecs::BitstreamReader;

constexpr size_t kHeaderBytes = 2;
constexpr uint32_t kMaxSpsId = 15;
constexpr uint32_t kMaxPpsId = 63;
constexpr uint32_t kMaxPixelsOneWay = 1U << 16;
constexpr unsigned kMaxSubLayers = 8;
constexpr size_t kGeneralProfileBits = 88;
constexpr size_t kLevelBits = 8;

void SkipProfileTierLevel(BitstreamReader& reader, unsigned subLayersMinus1) {
    reader.SkipBits(kGeneralProfileBits + kLevelBits);
    size_t bits = 0;
    for (unsigned layer = 0; layer < subLayersMinus1; ++layer) {
        bits += reader.ReadFlag() ? kGeneralProfileBits : 0;
        bits += reader.ReadFlag() ? kLevelBits : 0;
    }
    if (subLayersMinus1 > 0) {
        bits += size_t{2} * (kMaxSubLayers - subLayersMinus1);
    }
    reader.SkipBits(bits);
}

} // namespace

std::optional<HevcSpsHead> ParseHevcSpsHead(codecs::ByteView unit) {
    const std::vector<uint8_t> payload = codecs::RawPayload(unit, kHeaderBytes);
    BitstreamReader reader(payload);
    HevcSpsHead sps;
    reader.ReadBits(4); // sps_video_parameter_set_id
    const unsigned subLayersMinus1 = reader.ReadBits(3);
    reader.ReadFlag(); // sps_temporal_id_nesting_flag
    SkipProfileTierLevel(reader, subLayersMinus1);
    sps.id = reader.ReadUE(kMaxSpsId);
    const uint32_t chroma = reader.ReadUE(3);
    sps.separateColourPlanes = chroma == 3 && reader.ReadFlag();
    uint32_t width = reader.ReadUE(kMaxPixelsOneWay);
    uint32_t height = reader.ReadUE(kMaxPixelsOneWay);
    if (reader.ReadFlag()) {
        const uint32_t unitX = chroma == 1 || chroma == 2 ? 2 : 1;
        const uint32_t unitY = chroma == 1 ? 2 : 1;
        const uint32_t horizontally = (reader.ReadUE(kMaxPixelsOneWay) + reader.ReadUE(kMaxPixelsOneWay)) * unitX;
        const uint32_t vertically = (reader.ReadUE(kMaxPixelsOneWay) + reader.ReadUE(kMaxPixelsOneWay)) * unitY;
        width = horizontally < width ? width - horizontally : width;
        height = vertically < height ? height - vertically : height;
    }
    reader.ReadUE(); // bit depths
    reader.ReadUE();
    sps.pocLsbBits = reader.ReadUE(12) + 4;
    if (!reader.IsValid() || width == 0 || height == 0) {
        return {};
    }
    sps.shape = {width, height, width, height};
    return sps;
}

std::optional<HevcPpsHead> ParseHevcPpsHead(codecs::ByteView unit) {
    const std::vector<uint8_t> payload = codecs::RawPayload(unit, kHeaderBytes);
    BitstreamReader reader(payload);
    HevcPpsHead pps;
    pps.id = reader.ReadUE(kMaxPpsId);
    pps.spsId = reader.ReadUE(kMaxSpsId);
    reader.ReadFlag(); // dependent_slice_segments_enabled_flag
    pps.outputFlagPresent = reader.ReadFlag();
    pps.extraSliceHeaderBits = reader.ReadBits(3);
    return reader.IsValid() ? std::optional(pps) : std::nullopt;
}

} // namespace annexb
