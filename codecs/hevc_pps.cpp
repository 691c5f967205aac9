#include "codecs/hevc_pps.h"

#include <vector>

#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"

namespace codecs {

std::optional<HevcPpsHead> ParseHevcPpsHead(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    BitstreamReader reader(payload);
    HevcPpsHead pps;
    pps.id = reader.ReadUE(kHevcMaxPpsId);
    pps.spsId = reader.ReadUE(kHevcMaxSpsId);
    reader.ReadFlag(); // dependent_slice_segments_enabled_flag
    pps.outputFlagPresent = reader.ReadFlag();
    pps.extraSliceHeaderBits = reader.ReadBits(3);
    return reader.IsValid() ? std::optional(pps) : std::nullopt;
}

} // namespace codecs
