#include "media/interlacing.h"

namespace media {

namespace {

// FlagInterlaced.
constexpr UINT64 kInterlaced = 1;
constexpr UINT64 kProgressive = 2;

// FieldOrder, and the flags of each. Fields are stored one behind the other, or line by line.
struct FieldOrder {
    UINT64 order;
    DWORD flags;
};
constexpr DWORD kOrderMask = AMINTERLACE_1FieldPerSample | AMINTERLACE_Field1First;
constexpr FieldOrder kFieldOrders[] = {
    {1, AMINTERLACE_1FieldPerSample | AMINTERLACE_Field1First},
    {6, AMINTERLACE_1FieldPerSample},
    {9, AMINTERLACE_Field1First},
    {14, 0},
};

bool IsIrregular(DWORD flags) {
    return (flags & AMINTERLACE_FieldPatternMask) == AMINTERLACE_FieldPatBothIrregular;
}

} // namespace

DWORD InterlaceFlagsOf(const VideoFacts& video) {
    if (video.flagInterlaced == kProgressive) {
        return AMINTERLACE_DisplayModeWeaveOnly;
    }
    if (video.flagInterlaced != kInterlaced) {
        return 0;
    }
    for (const FieldOrder& known : kFieldOrders) {
        if (video.fieldOrder == known.order) {
            return AMINTERLACE_IsInterlaced | known.flags;
        }
    }
    return AMINTERLACE_IsInterlaced | AMINTERLACE_FieldPatBothIrregular;
}

void DescribeFields(DWORD interlaceFlags, VideoDescription& video) {
    if ((interlaceFlags & AMINTERLACE_IsInterlaced) == 0) {
        if ((interlaceFlags & AMINTERLACE_DisplayModeMask) == AMINTERLACE_DisplayModeWeaveOnly) {
            video.flagInterlaced = kProgressive;
        }
        return;
    }
    video.flagInterlaced = kInterlaced;
    for (const FieldOrder& known : kFieldOrders) {
        if (!IsIrregular(interlaceFlags) && (interlaceFlags & kOrderMask) == known.flags) {
            video.fieldOrder = known.order;
        }
    }
}

} // namespace media
