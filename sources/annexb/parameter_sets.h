// What the sources need of parameter sets (ITU-T H.264, 7.3.2; H.265, 7.3.2).
//
// Units: pixels, bits. Errors: none for a set that is damaged.
#pragma once

#include <optional>
#include <vector>

#include "sources/annexb/raw_payload.h"

namespace annexb {

struct PictureShape {
    LONG width = 0; // of the visible part
    LONG height = 0;
    DWORD aspectX = 0; // of the whole picture
    DWORD aspectY = 0;
};

struct AvcSps {
    UINT32 id = 0;
    BYTE profile = 0;
    BYTE level = 0;
    bool separateColourPlanes = false;
    bool isMonochrome = false;
    unsigned frameNumBits = 4;
    UINT32 pocType = 0;
    unsigned pocLsbBits = 4;
    bool deltaPicOrderAlwaysZero = false;
    INT32 offsetForNonRefPic = 0;
    INT32 offsetForTopToBottomField = 0;
    std::vector<INT32> offsetsForRefFrame;
    bool frameMbsOnly = true;
    PictureShape shape;
};

struct AvcPps {
    UINT32 id = 0;
    UINT32 spsId = 0;
    bool bottomFieldPicOrderPresent = false;
    UINT32 refIdxDefault[2] = {1, 1}; // entries of the reference lists
    bool weightedPrediction = false;
    UINT32 weightedBiprediction = 0;
    bool redundantPicCntPresent = false;
};

struct HevcSpsHead {
    UINT32 id = 0;
    bool separateColourPlanes = false;
    unsigned pocLsbBits = 4;
    PictureShape shape;
};

struct HevcPpsHead {
    UINT32 id = 0;
    UINT32 spsId = 0;
    bool outputFlagPresent = false;
    unsigned extraSliceHeaderBits = 0;
};

// unit: the whole NAL unit.
[[nodiscard]] std::optional<AvcSps> ParseAvcSps(Bytes unit);
[[nodiscard]] std::optional<AvcPps> ParseAvcPps(Bytes unit);
[[nodiscard]] std::optional<HevcSpsHead> ParseHevcSpsHead(Bytes unit);
[[nodiscard]] std::optional<HevcPpsHead> ParseHevcPpsHead(Bytes unit);

} // namespace annexb
