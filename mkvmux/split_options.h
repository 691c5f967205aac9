// SplitOptions: where the command line asks for the next file of several, in the words of "--split".
//
// Units: 100 ns, bytes. Errors: Failure, one line that names the option.
#pragma once

#include <string>
#include <vector>

#include "win/platform.h"

namespace mkvmux {

struct SplitOptions {
    enum class Kind { None, Duration, Size, Timestamps };

    Kind kind = Kind::None;
    INT64 duration = 0;       // each file has at least that, but for the last one
    UINT64 bytes = 0;         // the same
    std::vector<INT64> times; // of the recording, each later than the one before

    [[nodiscard]] bool IsOn() const { return kind != Kind::None; }
};

// "duration:00:10:00", "size:700M", "timestamps:00:01:00,150s"; without a word a size or a duration. An empty text asks
// for nothing.
[[nodiscard]] SplitOptions ReadSplit(const std::string& text);

// The name of a part, counted from 1: the number takes the place of a "%d" or "%03d" of the file's name, or stands with
// three digits in front of its extension.
[[nodiscard]] std::wstring PartName(const std::wstring& output, UINT32 number);

} // namespace mkvmux
