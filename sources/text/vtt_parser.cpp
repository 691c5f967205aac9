#include "sources/text/vtt_parser.h"

#include <algorithm>
#include <array>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "codecs/webvtt_cue.h"
#include "dshow/ref_time.h"
#include "sources/base/limits.h"
#include "sources/text/subtitle_time.h"
#include "sources/text/text_decoder.h"

namespace subtitles {

namespace {

constexpr std::string_view kSignature = "WEBVTT";
constexpr std::string_view kComment = "NOTE";
constexpr size_t kMaxOtherBytes = source::kMiB; // of a header, and of the comments in front of a cue

// "01:02.500" or "00:01:02.500".
std::optional<REFERENCE_TIME> ParseVttTime(std::string_view text) {
    const bool hasHours = std::ranges::count(text, ':') > 1;
    return hasHours ? ParseTime(text) : ParseTime("0:" + std::string(Trimmed(text)));
}

struct CueTiming {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
    std::string_view settings;
};

std::optional<CueTiming> ParseCueTiming(std::string_view line) {
    const size_t arrow = line.find(kTimingArrow);
    const std::string_view behind = Trimmed(line.substr(arrow + kTimingArrow.size()));
    const size_t end = std::min(behind.find_first_of(" \t"), behind.size());
    const auto start = ParseVttTime(line.substr(0, arrow));
    const auto stop = ParseVttTime(behind.substr(0, end));
    return start && stop ? std::optional(CueTiming{*start, std::max(*start, *stop), Trimmed(behind.substr(end))})
                         : std::nullopt;
}

std::string Joined(LineReader lines) {
    std::string text;
    bool isFirst = true;
    while (const auto line = lines.Next()) {
        text += isFirst ? "" : "\n";
        text += *line;
        isFirst = false;
    }
    return text;
}

std::string VttTime(REFERENCE_TIME time) {
    constexpr REFERENCE_TIME kMsInSecond = 1000;
    constexpr REFERENCE_TIME kSecondsInMinute = 60;
    constexpr REFERENCE_TIME kMinutesInHour = 60;
    const REFERENCE_TIME ms = time / kReferenceTimesPerMs;
    const REFERENCE_TIME seconds = ms / kMsInSecond;
    const REFERENCE_TIME minutes = seconds / kSecondsInMinute;
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%03" PRId64,
                  static_cast<int64_t>(minutes / kMinutesInHour), static_cast<int64_t>(minutes % kMinutesInHour),
                  static_cast<int64_t>(seconds % kSecondsInMinute), static_cast<int64_t>(ms % kMsInSecond));
    return text.data();
}

// "<00:00:01.700>": when that part of the text is due.
std::string WithTimesFrom(REFERENCE_TIME start, const std::string& text) {
    std::string result;
    size_t done = 0;
    for (size_t open = text.find('<'); open != std::string::npos; open = text.find('<', open + 1)) {
        const size_t close = text.find_first_of("<>\n", open + 1);
        if (close == std::string::npos || text[close] != '>') {
            continue;
        }
        if (const auto time = ParseVttTime(std::string_view(text).substr(open + 1, close - open - 1))) {
            result.append(text, done, open + 1 - done);
            result += VttTime(std::max<REFERENCE_TIME>(*time - start, 0));
            done = close;
        }
    }
    return result.append(text, done);
}

bool HasArrow(std::string_view line) {
    return line.find(kTimingArrow) != std::string_view::npos;
}

// Takes the parts of the file that empty lines part.
class VttBuilder {
  public:
    VttBuilder() { m_file.format = Format::WebVtt; }
    void Take(std::string_view block) {
        LineReader lines(block);
        const std::string_view first = lines.Next().value_or(std::string_view());
        if (HasArrow(first)) {
            TakeCue({}, first, lines);
            return;
        }
        LineReader behind = lines;
        const std::string_view second = behind.Next().value_or(std::string_view());
        if (HasArrow(second)) {
            TakeCue(first, second, behind);
        } else {
            TakeOther(block);
        }
    }
    [[nodiscard]] SubtitleFile Finish() {
        SortByStart(m_file.events);
        return std::move(m_file);
    }

  private:
    void TakeCue(std::string_view identifier, std::string_view timingLine, LineReader text) {
        const std::optional<CueTiming> timing = ParseCueTiming(timingLine);
        if (!timing) {
            m_file.isDamaged = true;
            return;
        }
        codecs::WebVttCue cue;
        cue.identifier = identifier;
        cue.settings = timing->settings;
        cue.comments = std::exchange(m_comments, {});
        cue.text = WithTimesFrom(timing->start, Joined(text));
        if (cue.text.empty()) {
            return; // shows nothing, and a block cannot be empty
        }
        const std::vector<BYTE> boxes = codecs::BoxesOfCue(cue);
        m_file.Add({timing->start, timing->stop, std::string(boxes.begin(), boxes.end())});
        m_hasCue = true;
    }

    // Styles, regions and comments in front of the first cue are the file's; behind it, comments are the next one's.
    void TakeOther(std::string_view block) {
        const bool isComment = block.starts_with(kComment);
        std::string& text = m_hasCue ? m_comments : m_file.header;
        if ((m_hasCue && !isComment) || block.size() > kMaxOtherBytes - std::min(text.size(), kMaxOtherBytes)) {
            m_file.isDamaged = true;
            return;
        }
        text += text.empty() ? "" : m_hasCue ? "\n" : "\n\n";
        text += Joined(LineReader(block));
    }

    SubtitleFile m_file;
    std::string m_comments; // for the next cue
    bool m_hasCue = false;
};

// From behind the empty line before it up to the one behind it.
void TakeBlock(const char* begin, const char* end, VttBuilder& builder) {
    std::string_view block(begin, static_cast<size_t>(end - begin));
    block.remove_prefix(std::min(block.find_first_not_of("\r\n"), block.size()));
    block = block.substr(0, block.find_last_not_of("\r\n") + 1);
    if (!block.empty()) {
        builder.Take(block);
    }
}

bool HasSignature(std::string_view text) {
    return text.starts_with(kSignature) &&
           (text.size() == kSignature.size() ||
            std::string_view(" \t\r\n").find(text[kSignature.size()]) != std::string_view::npos);
}

} // namespace

std::optional<SubtitleFile> ParseVtt(std::string_view text) {
    if (!HasSignature(text)) {
        return {};
    }
    VttBuilder builder;
    LineReader lines(text);
    const char* begin = text.data();
    for (auto line = lines.Next(); line; line = lines.Next()) {
        if (!line->empty()) {
            continue;
        }
        TakeBlock(begin, line->data(), builder);
        begin = line->data();
    }
    TakeBlock(begin, text.data() + text.size(), builder);
    SubtitleFile file = builder.Finish();
    return file.events.empty() ? std::nullopt : std::optional(std::move(file));
}

} // namespace subtitles
