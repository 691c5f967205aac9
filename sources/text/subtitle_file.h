// SubtitleFile: the events of a text subtitle file as plain values.
//
// Units: times in 100 ns, as the file has them: they may be below zero. Texts are UTF-8.
#pragma once

#include <optional>
#include <string>
#include <string_view>
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
    bool isDamaged = false;            // something was passed over

    // Keeps the event, unless there are more than anybody would show.
    void Add(SubtitleEvent event);
};

// None when there is no event.
[[nodiscard]] std::optional<SubtitleFile> ParseSrt(std::string_view text);
// SSA or ASS, whichever the sections say. None for a text without the section of events.
[[nodiscard]] std::optional<SubtitleFile> ParseAss(std::string_view text);

// "-1:02:03,45": the fraction has as many digits as the text gives it. None for another shape.
[[nodiscard]] std::optional<REFERENCE_TIME> ParseTime(std::string_view text);

void SortByStart(std::vector<SubtitleEvent>& events);

} // namespace subtitles
