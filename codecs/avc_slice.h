// The head of an H.264 slice (ITU-T H.264, 7.3.3), as far as it tells pictures apart and orders them.
//
// unit: the whole NAL unit, or as much of it as its head may fill, header included and with its emulation prevention
// bytes. Errors: none for a head that is damaged.
#pragma once

#include "codecs/avc_parameter_sets.h"

namespace codecs {

struct AvcSlice {
    bool isIdr = false;
    bool isReference = false;
    uint32_t ppsId = 0;
    uint32_t frameNum = 0;
    bool isField = false;
    bool isBottom = false;
    uint32_t idrPicId = 0;
    uint32_t pocLsb = 0;
    int32_t deltaPocBottom = 0;
    int32_t deltaPoc[2] = {0, 0};
    bool isRedundant = false;
    bool resetsOrder = false; // memory management control operation 5
};

// The identifier of the picture parameter set, which the rest cannot be read without.
[[nodiscard]] std::optional<uint32_t> AvcPpsIdOf(ByteView unit);
[[nodiscard]] std::optional<AvcSlice> ParseAvcSlice(ByteView unit, const AvcSps& sps, const AvcPps& pps);

// Whether the second of two slices begins another picture (7.4.1.2.4).
[[nodiscard]] bool BeginsNewPicture(const AvcSlice& previous, const AvcSlice& next);
// Whether the second of two pictures is the other field of the first one's frame.
[[nodiscard]] bool AreFieldsOfOneFrame(const AvcSlice& first, const AvcSlice& second);

} // namespace codecs
