#include "sources/annexb/parameter_sets.h"

namespace annexb {

namespace {

using codecs::BitstreamReader;

constexpr size_t kHeaderBytes = 2;
constexpr UINT32 kMaxSpsId = 15;
constexpr UINT32 kMaxPpsId = 63;
constexpr UINT32 kMaxPixelsOneWay = 1U << 16;
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

std::optional<HevcSpsHead> ParseHevcSpsHead(Bytes unit) {
    const std::vector<BYTE> payload = RawPayload(unit, kHeaderBytes);
    BitstreamReader reader(payload);
    HevcSpsHead sps;
    reader.ReadBits(4); // sps_video_parameter_set_id
    const unsigned subLayersMinus1 = reader.ReadBits(3);
    reader.ReadFlag(); // sps_temporal_id_nesting_flag
    SkipProfileTierLevel(reader, subLayersMinus1);
    sps.id = reader.ReadUE(kMaxSpsId);
    const UINT32 chroma = reader.ReadUE(3);
    sps.separateColourPlanes = chroma == 3 && reader.ReadFlag();
    UINT32 width = reader.ReadUE(kMaxPixelsOneWay);
    UINT32 height = reader.ReadUE(kMaxPixelsOneWay);
    if (reader.ReadFlag()) {
        const UINT32 unitX = chroma == 1 || chroma == 2 ? 2 : 1;
        const UINT32 unitY = chroma == 1 ? 2 : 1;
        const UINT32 horizontally = (reader.ReadUE(kMaxPixelsOneWay) + reader.ReadUE(kMaxPixelsOneWay)) * unitX;
        const UINT32 vertically = (reader.ReadUE(kMaxPixelsOneWay) + reader.ReadUE(kMaxPixelsOneWay)) * unitY;
        width = horizontally < width ? width - horizontally : width;
        height = vertically < height ? height - vertically : height;
    }
    reader.ReadUE(); // bit depths
    reader.ReadUE();
    sps.pocLsbBits = reader.ReadUE(12) + 4;
    if (!reader.IsValid() || width == 0 || height == 0) {
        return {};
    }
    sps.shape = {static_cast<LONG>(width), static_cast<LONG>(height), width, height};
    return sps;
}

std::optional<HevcPpsHead> ParseHevcPpsHead(Bytes unit) {
    const std::vector<BYTE> payload = RawPayload(unit, kHeaderBytes);
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
