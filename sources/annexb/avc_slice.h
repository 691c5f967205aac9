// The head of an H.264 slice (ITU-T H.264, 7.3.3), as far as it tells pictures apart and orders them.
#pragma once

#include "sources/annexb/parameter_sets.h"

namespace annexb {

struct AvcSlice {
    bool isIdr = false;
    bool isReference = false;
    UINT32 ppsId = 0;
    UINT32 frameNum = 0;
    bool isField = false;
    bool isBottom = false;
    UINT32 idrPicId = 0;
    UINT32 pocLsb = 0;
    INT32 deltaPocBottom = 0;
    INT32 deltaPoc[2] = {0, 0};
    bool isRedundant = false;
    bool resetsOrder = false; // memory management control operation 5
};

// The identifier of the picture parameter set, which the rest cannot be read without.
[[nodiscard]] std::optional<UINT32> PpsIdOf(Bytes unit);
// None when the head is damaged.
[[nodiscard]] std::optional<AvcSlice> ParseAvcSlice(Bytes unit, const AvcSps& sps, const AvcPps& pps);

// Whether the second of two slices begins another picture (7.4.1.2.4).
[[nodiscard]] bool BeginsNewPicture(const AvcSlice& previous, const AvcSlice& next);
// Whether the second of two pictures is the other field of the first one's frame.
[[nodiscard]] bool AreFieldsOfOneFrame(const AvcSlice& first, const AvcSlice& second);

} // namespace annexb
