#include "sources/text/srt_parser.h"

#include <algorithm>
#include <utility>

#include "sources/text/subtitle_time.h"
#include "sources/text/text_decoder.h"

namespace subtitles {

namespace {

struct Timing {
    REFERENCE_TIME start = 0;
    REFERENCE_TIME stop = 0;
};

// "00:00:01,000 --> 00:00:02,500", with coordinates behind that nobody needs.
std::optional<Timing> ParseTiming(std::string_view line) {
    const size_t arrow = line.find(kTimingArrow);
    if (arrow == std::string_view::npos) {
        return {};
    }
    std::string_view behind = Trimmed(line.substr(arrow + kTimingArrow.size()));
    behind = behind.substr(0, behind.find_first_of(" \t"));
    const auto start = ParseTime(line.substr(0, arrow));
    const auto stop = ParseTime(behind);
    return start && stop ? std::optional(Timing{*start, std::max(*start, *stop)}) : std::nullopt;
}

bool ResemblesTime(std::string_view text) {
    const std::string_view time = Trimmed(text);
    return time.find_first_of("0123456789") == 0 && time.find(':') != std::string_view::npos;
}

// What was meant as a timing, whole or damaged: an arrow alone may be part of a text.
bool ResemblesTiming(std::string_view line) {
    const size_t arrow = line.find(kTimingArrow);
    return arrow != std::string_view::npos &&
           (ResemblesTime(line.substr(0, arrow)) || ResemblesTime(line.substr(arrow + kTimingArrow.size())));
}

bool IsNumber(std::string_view line) {
    const std::string_view text = Trimmed(line);
    return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The lines between two timings: the number in front of the second one and the empty lines belong to nobody.
class TextCollector {
  public:
    void Add(std::string_view line) {
        Append();
        m_last = line;
    }
    // What was collected, and begins anew.
    [[nodiscard]] std::string Take(bool isLast) {
        if (m_last && !isLast && IsNumber(*m_last)) {
            m_last.reset();
        }
        Append();
        m_text.resize(m_shownBytes);
        m_shownBytes = 0;
        return std::exchange(m_text, {});
    }

  private:
    void Append() {
        if (!m_last) {
            return;
        }
        m_text += m_text.empty() ? "" : "\n";
        m_text += *m_last;
        m_shownBytes = Trimmed(*m_last).empty() ? m_shownBytes : m_text.size();
        m_last.reset();
    }

    std::string m_text;
    size_t m_shownBytes = 0;                // of the text, without the empty lines at its end
    std::optional<std::string_view> m_last; // the last line, which may be the next one's number
};

} // namespace

std::optional<SubtitleFile> ParseSrt(std::string_view text) {
    SubtitleFile file;
    std::optional<Timing> current;
    TextCollector collected;
    const auto finish = [&](bool isLast) {
        std::string content = collected.Take(isLast);
        if (current && !content.empty()) {
            file.Add({current->start, current->stop, std::move(content)});
        }
    };
    LineReader lines(text);
    while (const std::optional<std::string_view> line = lines.Next()) {
        const std::optional<Timing> timing = ParseTiming(*line);
        if (!timing && !ResemblesTiming(*line)) {
            collected.Add(*line);
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
