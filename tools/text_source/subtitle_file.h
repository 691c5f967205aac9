// SubtitleFile: the events of a text subtitle file as plain values.
//
// Units: times in 100 ns, as the file has them: they may be below zero. Texts are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "win/platform.h"

namespace subtitles {

enum class Format { Srt, Ssa, Ass };

struct SubtitleEvent {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    std::string text; // as a Matroska block holds it
};

struct SubtitleFile {
    Format format = Format::Srt;
    std::string header;                // the codec private data
    std::vector<SubtitleEvent> events; // by their start
    bool isDamaged = false;            // lines were passed over that look like events
};

// None when there is no event.
[[nodiscard]] std::optional<SubtitleFile> ParseSrt(const std::string& text);
// SSA or ASS, whichever the sections say. None for a text without the section of events.
[[nodiscard]] std::optional<SubtitleFile> ParseAss(const std::string& text);

// "-1:02:03,45": the fraction has as many digits as the text gives it. None for another shape.
[[nodiscard]] std::optional<REFERENCE_TIME> ParseTime(const std::string& text);

void SortByStart(std::vector<SubtitleEvent>& events);

} // namespace subtitles
