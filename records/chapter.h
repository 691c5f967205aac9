// Chapter: a MuxChapter record that owns its texts. Whether one may be set is asked before it is.
//
// Units: 100 ns; text in UTF-16 code units. Owner: a value. Threads: as a value. Errors: std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/wide_string.h"

namespace records {

struct Chapter {
    INT32 level = MuxLevel_Top;
    INT64 start = 0;
    INT64 end = MuxChapterTime_None;
    UINT64 uid = 0; // 0: none
    bool hidden = false;
    bool disabled = false;
    bool isMark = false; // of one file alone
    WideString title;
    WideString language;

    bool operator==(const Chapter&) const = default;

    [[nodiscard]] bool IsTop() const { return level == MuxLevel_Top; }
    [[nodiscard]] bool NeedsOneBefore() const { return level == MuxLevel_FurtherTitle; }
    [[nodiscard]] size_t TextLength() const { return title.size() + language.size(); }
};

[[nodiscard]] Chapter ChapterOf(const MuxChapter& record);
// Replaces all but the index of the caller's record, whose old strings are freed; the new ones are the caller's.
void CopyTo(const Chapter& chapter, MuxChapter& record);

// Whether level, times and texts can be; the language is looked at by its length alone.
[[nodiscard]] bool IsChapter(const Chapter& chapter);
// Before the strings are read.
[[nodiscard]] bool HasChapterFlags(const MuxChapter& record);

} // namespace records
