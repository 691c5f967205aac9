#include "codecs/hevc_slice.h"

#include <vector>

#include "codecs/nal_unit.h"

namespace codecs {

namespace {

constexpr uint8_t kFirstSegmentFlag = 0x80;

HevcSlice SliceOf(const NALUnit& unit) {
    HevcSlice slice;
    slice.type = unit.HevcType();
    slice.temporalId = unit.HevcTemporalId();
    return slice;
}

// Leaves the reader behind it.
uint32_t ReadPpsId(BitstreamReader& reader, const HevcSlice& slice) {
    reader.ReadFlag(); // first_slice_segment_in_pic_flag
    if (slice.IsIrap()) {
        reader.ReadFlag(); // no_output_of_prior_pics_flag
    }
    return reader.ReadUE(kHevcMaxPpsId);
}

} // namespace

bool HevcSlice::IsIrap() const {
    return type >= kHevcFirstIrap && type <= kHevcLastIrap;
}

bool HevcSlice::IsIdr() const {
    return type == kHevcFirstIdr || type == kHevcLastIdr;
}

bool IsFirstHevcSegment(ByteView unit) {
    return unit.size() > kHevcHeaderBytes && (unit[kHevcHeaderBytes] & kFirstSegmentFlag) != 0;
}

std::optional<uint32_t> HevcPpsIdOf(ByteView unit) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    BitstreamReader reader(payload);
    const uint32_t id = ReadPpsId(reader, SliceOf(NALUnit(unit)));
    return reader.IsValid() ? std::optional(id) : std::nullopt;
}

std::optional<HevcSlice> ParseHevcSlice(ByteView unit, const HevcSpsHead& sps, const HevcPpsHead& pps) {
    const std::vector<uint8_t> payload = RawPayload(unit, kHevcHeaderBytes);
    BitstreamReader reader(payload);
    HevcSlice slice = SliceOf(NALUnit(unit));
    (void)ReadPpsId(reader, slice);
    reader.SkipBits(pps.extraSliceHeaderBits);
    reader.ReadUE(); // slice_type
    if (pps.outputFlagPresent) {
        reader.ReadFlag();
    }
    if (sps.separateColourPlanes) {
        reader.ReadBits(2);
    }
    slice.pocLsbBits = sps.pocLsbBits;
    slice.pocLsb = slice.IsIdr() ? 0 : reader.ReadBits(slice.pocLsbBits);
    return reader.IsValid() ? std::optional(slice) : std::nullopt;
}

} // namespace codecs
