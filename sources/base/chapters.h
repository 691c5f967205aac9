// Chapter and Tag: what an input, or a file that is given beside the inputs, says of the whole.
//
// Units: 100 ns; texts are UTF-8; languages are tags of BCP 47 or codes of ISO 639-2. Lists are flat: what is one level
// deeper is a part of, or says more of, the one before it.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "win/platform.h"

namespace source {

struct ChapterTitle {
    std::string text;
    std::string language; // empty: not said

    bool operator==(const ChapterTitle&) const = default;
};

struct Chapter {
    INT32 level = 0;
    REFERENCE_TIME start = 0;
    std::optional<REFERENCE_TIME> end;
    UINT64 uid = 0; // 0: not said
    bool hidden = false;
    bool enabled = true;
    std::vector<ChapterTitle> titles; // the same one in several languages

    bool operator==(const Chapter&) const = default;
};

struct Tag {
    INT32 level = 0;
    UINT32 targetType = 0; // 0: not said
    std::string target;
    std::string name;
    std::string value;
    std::string language;

    bool operator==(const Tag&) const = default;
};

// More of either, deeper ones and longer texts come from damage, and are more than the muxer takes.
inline constexpr size_t kMaxChapters = 10000;
inline constexpr size_t kMaxTags = 10000;
inline constexpr INT32 kMaxDepth = 15;

} // namespace source
