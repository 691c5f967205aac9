// The head of the first slice segment of an H.265 picture (ITU-T H.265, 7.3.6.1), as far as it orders pictures.
//
// unit: the whole NAL unit, or as much of it as its head may fill, header included and with its emulation prevention
// bytes. Errors: none for a head that is damaged.
#pragma once

#include <optional>

#include "codecs/hevc_pps.h"
#include "codecs/hevc_sps.h"

namespace codecs {

struct HevcSlice {
    uint8_t type = 0; // of the unit
    uint8_t temporalId = 0;
    uint32_t pocLsb = 0;
    unsigned pocLsbBits = 0;

    // A picture at which decoding may begin, and one that resets the counting, too.
    [[nodiscard]] bool IsIrap() const;
    [[nodiscard]] bool IsIdr() const;
};

// Whether the unit, which is a slice segment, is the first one of its picture.
[[nodiscard]] bool IsFirstHevcSegment(ByteView unit);
// The identifier of the picture parameter set, which the rest cannot be read without.
[[nodiscard]] std::optional<uint32_t> HevcPpsIdOf(ByteView unit);
[[nodiscard]] std::optional<HevcSlice> ParseHevcSlice(ByteView unit, const HevcSpsHead& sps, const HevcPpsHead& pps);

} // namespace codecs
