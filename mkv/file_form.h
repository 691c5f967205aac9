// FileForm: the sizes and versions in which the profiles' files differ.
// Units: bytes.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/platform.h"

namespace mkv {

struct FileForm {
    UINT64 docTypeVersion;
    UINT64 docTypeReadVersion;
    int segmentSizeFieldBytes; // so that it can be overwritten in place
    UINT64 seekHeadPlaceBytes; // it lies at the beginning of the Segment's content

    // All ones in the size field mean an unknown size.
    [[nodiscard]] constexpr UINT64 maxSegmentDataBytes() const {
        return (UINT64{1} << (7 * segmentSizeFieldBytes)) - 2;
    }
    [[nodiscard]] constexpr bool fitsSegmentSizeField(UINT64 dataBytes) const {
        return dataBytes <= maxSegmentDataBytes();
    }
};

inline constexpr FileForm kCompatibleForm{2, 2, 5, 303};
// Tracks have elements of version 4, all that a reader cannot skip (SimpleBlock) is of version 2. Five entries of a
// seek head take 110 bytes; the rest is for those who add elements later.
inline constexpr FileForm kStrictForm{4, 2, 8, 256};

[[nodiscard]] constexpr const FileForm& FormOf(MuxProfile profile) {
    return profile == MuxProfile_Strict ? kStrictForm : kCompatibleForm;
}

} // namespace mkv
