#include "codecs/hevc_pps.h"

#include <vector>

#include "codecs/hevc_sps.h"
#include "codecs/nal_unit.h"

namespace codecs {

namespace {

HevcPpsHead ReadPpsHead(BitstreamReader& reader) {
    HevcPpsHead pps;
    pps.id = reader.ReadUE(kHevcMaxPpsId);
    pps.spsId = reader.ReadUE(kHevcMaxSpsId);
    reader.ReadFlag(); // dependent_slice_segments_enabled_flag
    pps.outputFlagPresent = reader.ReadFlag();
    pps.extraSliceHeaderBits = reader.ReadBits(3);
    return pps;
}

} // namespace

std::optional<HevcPpsHead> ParseHevcPpsHead(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    BitstreamReader reader(payload);
    const HevcPpsHead pps = ReadPpsHead(reader);
    return reader.IsValid() ? std::optional(pps) : std::nullopt;
}

std::optional<HevcPpsParallelism> ParseHevcPpsParallelism(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    BitstreamReader reader(payload);
    (void)ReadPpsHead(reader);
    reader.SkipBits(2); // sign_data_hiding_enabled_flag, cabac_init_present_flag
    reader.ReadUE();    // entries of the reference lists
    reader.ReadUE();
    reader.SkipSE();    // init_qp_minus26
    reader.SkipBits(2); // constrained_intra_pred_flag, transform_skip_enabled_flag
    if (reader.ReadFlag()) {
        reader.ReadUE(); // diff_cu_qp_delta_depth
    }
    reader.SkipSE(); // chroma quantisers
    reader.SkipSE();
    reader.SkipBits(4); // of slices and weights, transquant_bypass_enabled_flag
    HevcPpsParallelism parallelism;
    parallelism.hasTiles = reader.ReadFlag();
    parallelism.hasWavefronts = reader.ReadFlag();
    return reader.IsValid() ? std::optional(parallelism) : std::nullopt;
}

} // namespace codecs
