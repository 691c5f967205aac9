// Tag: a tag of the output, as MuxTag has it.
//
// Owner: a value.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/wide_string.h"

namespace client {

struct Tag {
    INT32 track = MuxTagTrack_All;
    INT32 level = MuxLevel_Top;
    UINT32 targetType = 0;
    WideString target;
    WideString name;
    WideString value;
    WideString language;

    bool operator==(const Tag&) const = default;
};

} // namespace client
