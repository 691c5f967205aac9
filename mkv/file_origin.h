// FileOrigin: who wrote a file, and when. UTF-8; seconds since 1970, in UTC. Errors: std::bad_alloc.
#pragma once

#include <string>

#include "win/platform.h"

namespace mkv {

// The module's version text follows; a compatible file's name ends with the blank when there is none.
inline constexpr const char* kWritingAppPrefix = "Quorlex Matroska Muxer ";

struct FileOrigin {
    std::string muxingApp;  // the libraries, with their versions
    std::string writingApp; // without a blank at its end
    INT64 startedS = 0;
};

// With a seed other than 0 the time is always the same one, the epoch of Matroska's dates.
[[nodiscard]] FileOrigin OriginNow(UINT64 seed);

// "2026-11-22 15:14:43"
[[nodiscard]] std::string DateText(INT64 secondsSince1970);

} // namespace mkv
