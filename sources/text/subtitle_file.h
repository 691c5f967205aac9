// SubtitleFile: the events of a text subtitle file as plain values.
//
// Units: times in 100 ns, as the file has them: they may be below zero. Texts are UTF-8.
#pragma once

#include <string>
#include <vector>

#include "win/platform.h"

namespace subtitles {

enum class Format { Srt, Ssa, Ass, WebVtt };

struct SubtitleEvent {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    std::string text; // as a Matroska block holds it; of WebVTT, boxes with all of the cue
};

struct SubtitleFile {
    Format format = Format::Srt;
    std::string header;                // the codec private data
    std::vector<SubtitleEvent> events; // by their start
    bool isDamaged = false;            // something was passed over

    // Keeps the event, unless there are more than anybody would show.
    void Add(SubtitleEvent event);
};

void SortByStart(std::vector<SubtitleEvent>& events);

} // namespace subtitles
