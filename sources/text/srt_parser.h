// Takes a SubRip file apart, event by event.
#pragma once

#include <optional>
#include <string_view>

#include "sources/text/subtitle_file.h"

namespace subtitles {

// None when there is no event.
[[nodiscard]] std::optional<SubtitleFile> ParseSrt(std::string_view text);

} // namespace subtitles
