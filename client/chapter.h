// Chapter: a chapter of the output, as MuxChapter has it.
//
// Units: 100 ns. Owner: a value.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/wide_string.h"

namespace client {

struct Chapter {
    INT32 level = MuxLevel_Top;
    INT64 start = 0;
    INT64 end = MuxChapterTime_None;
    UINT64 uid = 0; // 0: the muxer makes one
    bool hidden = false;
    bool disabled = false;
    WideString title;
    WideString language;

    bool operator==(const Chapter&) const = default;
};

} // namespace client
