// TrackOptionText: "T:TEXT", as the options that speak of one track have it.
//
// Errors: Failure, one line that names the option.
#pragma once

#include <map>
#include <string>
#include <vector>

#include "mkvmux/options.h"

namespace mkvmux {

// The options of tracks as the parser stores them.
struct RawTrackOptions {
    std::vector<std::string> names;     // T:NAME
    std::vector<std::string> languages; // T:NAME or T:CODE
    std::vector<std::string> defaults;  // T
    std::vector<std::string> disabled;  // T
};

// For a track that is named twice the later option counts.
[[nodiscard]] std::map<size_t, TrackOptions> ReadTrackOptions(const RawTrackOptions& raw);

} // namespace mkvmux
