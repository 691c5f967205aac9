#include "sources/text/subtitle_file.h"

#include <algorithm>
#include <utility>

namespace subtitles {

void SubtitleFile::Add(SubtitleEvent event) {
    constexpr size_t kMaxEvents = size_t{1024} * 1024; // a script of 64 MiB has half as many
    if (events.size() < kMaxEvents) {
        events.push_back(std::move(event));
    } else {
        isDamaged = true;
    }
}

void SortByStart(std::vector<SubtitleEvent>& events) {
    std::stable_sort(events.begin(), events.end(),
                     [](const SubtitleEvent& a, const SubtitleEvent& b) { return a.start < b.start; });
}

} // namespace subtitles
