// Tag: a MuxTag record that owns its texts. Whether one may be set is asked before it is.
//
// Units: UTF-16 code units. Owner: a value. Threads: as a value. Errors: std::bad_alloc.
#pragma once

#include <qrx_mkvmuxer.h>

#include "win/wide_string.h"

namespace records {

struct Tag {
    static constexpr bool isMark = false;

    INT32 track = MuxTagTrack_All;
    INT32 level = MuxLevel_Top;
    UINT32 targetType = 0;
    WideString target;
    WideString name;
    WideString value;
    WideString language;

    bool operator==(const Tag&) const = default;

    [[nodiscard]] bool IsTop() const { return level == MuxLevel_Top; }
    [[nodiscard]] bool NeedsOneBefore() const { return level > MuxLevel_Top; }
    [[nodiscard]] size_t TextLength() const { return target.size() + name.size() + value.size() + language.size(); }
};

[[nodiscard]] Tag TagOf(const MuxTag& record);
// Replaces all but the index of the caller's record, whose old strings are freed; the new ones are the caller's.
void CopyTo(const Tag& tag, MuxTag& record);

// Whether track, level and texts can be; the language is looked at by its length alone.
[[nodiscard]] bool IsTag(const Tag& tag);

} // namespace records
