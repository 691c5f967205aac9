// From a WebVTT file to its cues, each as the boxes of ISO/IEC 14496-30, with settings, identifier and comments.
#pragma once

#include <optional>
#include <string_view>

#include "sources/text/subtitle_file.h"

namespace subtitles {

// None without the signature or a cue. What stands in front of the first cue is the header; times inside a text count
// from the cue's start, as Matroska wants them.
[[nodiscard]] std::optional<SubtitleFile> ParseVtt(std::string_view text);

} // namespace subtitles
