#include <algorithm>
#include <utility>

#include "tools/text_source/subtitle_file.h"
#include "tools/text_source/text_decoder.h"

namespace subtitles {

namespace {

constexpr const char* kArrow = "-->";

struct Timing {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
};

// "00:00:01,000 --> 00:00:02,500", with coordinates behind that nobody needs.
std::optional<Timing> ParseTiming(const std::string& line) {
    const size_t arrow = line.find(kArrow);
    if (arrow == std::string::npos) {
        return {};
    }
    std::string behind = Trimmed(line.substr(arrow + std::char_traits<char>::length(kArrow)));
    behind = behind.substr(0, behind.find_first_of(" \t"));
    const auto start = ParseTime(line.substr(0, arrow));
    const auto stop = ParseTime(behind);
    return start && stop ? std::optional(Timing{*start, std::max(*start, *stop)}) : std::nullopt;
}

bool ResemblesTime(const std::string& text) {
    const std::string time = Trimmed(text);
    return time.find_first_of("0123456789") == 0 && time.find(':') != std::string::npos;
}

// What was meant as a timing, whole or damaged: an arrow alone may be part of a text.
bool ResemblesTiming(const std::string& line) {
    const size_t arrow = line.find(kArrow);
    return arrow != std::string::npos && (ResemblesTime(line.substr(0, arrow)) ||
                                          ResemblesTime(line.substr(arrow + std::char_traits<char>::length(kArrow))));
}

bool IsNumber(const std::string& line) {
    const std::string text = Trimmed(line);
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

// The lines between two timings: the number in front of the second one and the empty lines belong to nobody.
std::string TextOf(std::vector<std::string> lines, bool isLast) {
    if (!isLast && !lines.empty() && IsNumber(lines.back())) {
        lines.pop_back();
    }
    while (!lines.empty() && Trimmed(lines.back()).empty()) {
        lines.pop_back();
    }
    std::string text;
    for (const std::string& line : lines) {
        text += (text.empty() ? "" : "\n") + line;
    }
    return text;
}

} // namespace

std::optional<SubtitleFile> ParseSrt(const std::string& text) {
    SubtitleFile file;
    std::optional<Timing> current;
    std::vector<std::string> lines;
    const auto finish = [&](bool isLast) {
        std::string content = TextOf(std::exchange(lines, {}), isLast);
        if (current && !content.empty()) {
            file.events.push_back({current->start, current->stop, std::move(content)});
        }
    };
    for (const std::string& line : SplitLines(text)) {
        const std::optional<Timing> timing = ParseTiming(line);
        if (!timing && !ResemblesTiming(line)) {
            lines.push_back(line);
            continue;
        }
        finish(false);
        current = timing; // none: what follows belongs to no event that could be written
        file.isDamaged = file.isDamaged || !timing;
    }
    finish(true);
    SortByStart(file.events);
    return file.events.empty() ? std::nullopt : std::optional(std::move(file));
}

} // namespace subtitles
