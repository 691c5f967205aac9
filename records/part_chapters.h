// PartChapters: which chapters of a recording are in one of its files, and when, as players of that file alone see
// them.
//
// Units: 100 ns. Threads: any. Errors: std::bad_alloc.
#pragma once

#include <optional>
#include <vector>

#include "records/chapter.h"

namespace records {

struct PartTimes {
    INT64 start = 0;          // of the recording's times
    std::optional<INT64> end; // none: the rest of it
    INT64 origin = 0;         // where the file's own times begin
};

// One that began before the file and goes on in it begins with the file; one that goes on behind it ends with it. With
// a chapter that is elsewhere go those that are parts of it, and its further titles.
[[nodiscard]] std::vector<Chapter> ChaptersOfPart(std::vector<Chapter> all, const PartTimes& part);

} // namespace records
