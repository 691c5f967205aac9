#include "sources/chapters/simple_chapters.h"

#include <algorithm>
#include <optional>

#include "sources/base/printable.h"
#include "sources/chapters/clock_time.h"
#include "sources/chapters/element_values.h"
#include "sources/chapters/text_error.h"

namespace chapters {

namespace {

constexpr std::string_view kChapter = "CHAPTER";
constexpr std::string_view kName = "NAME";
constexpr size_t kMaxTitleBytes = 32767;

struct Entry {
    std::string_view number; // digits as they stand
    bool isName = false;
    std::string_view value;
};

std::optional<Entry> EntryOf(std::string_view line) {
    const std::string_view text = Trimmed(line);
    const size_t equals = text.find('=');
    if (equals == std::string_view::npos || !text.starts_with(kChapter)) {
        return {};
    }
    std::string_view key = Trimmed(text.substr(0, equals));
    key.remove_prefix(kChapter.size());
    const bool isName = key.ends_with(kName);
    key.remove_suffix(isName ? kName.size() : 0);
    const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
    if (key.empty() || !std::all_of(key.begin(), key.end(), isDigit)) {
        return {};
    }
    return Entry{key, isName, Trimmed(text.substr(equals + 1))};
}

// Takes the lines one by one, and numbers them.
class Lines {
  public:
    explicit Lines(std::string_view text) : m_rest(text) {}

    // The next one that is not empty; none at the end.
    std::optional<std::string_view> Next() {
        while (!m_rest.empty()) {
            const size_t end = std::min(m_rest.find('\n'), m_rest.size());
            const std::string_view line = m_rest.substr(0, end);
            m_rest.remove_prefix(std::min(end + 1, m_rest.size()));
            ++m_number;
            if (!Trimmed(line).empty()) {
                return line;
            }
        }
        return {};
    }
    [[nodiscard]] size_t Number() const { return m_number; }

  private:
    std::string_view m_rest;
    size_t m_number = 0;
};

source::Chapter ChapterOf(const Entry& entry, size_t line) {
    source::Chapter chapter;
    const auto time = ParseClockTime(entry.value);
    if (!time) {
        throw TextError(line, "'" + source::Printable(entry.value) + "' is no time (HH:MM:SS.nnn)");
    }
    chapter.start = *time;
    return chapter;
}

void AddName(source::Chapter& chapter, std::string_view number, Lines& lines) {
    const auto line = lines.Next();
    const auto entry = line ? EntryOf(*line) : std::nullopt;
    if (!entry || !entry->isName || entry->number != number) {
        throw TextError(lines.Number(), "CHAPTER" + source::Printable(number) + "NAME=... is missing here");
    }
    if (entry->value.size() > kMaxTitleBytes) {
        throw TextError(lines.Number(), "the name has more than " + std::to_string(kMaxTitleBytes) + " bytes");
    }
    if (!entry->value.empty()) {
        chapter.titles.push_back({std::string(entry->value), {}});
    }
}

} // namespace

bool LooksLikeSimpleChapters(std::string_view text) {
    const auto line = Lines(text).Next();
    return line && EntryOf(*line).has_value();
}

std::vector<source::Chapter> ParseSimpleChapters(std::string_view text) {
    std::vector<source::Chapter> chapters;
    Lines lines(text);
    while (const auto line = lines.Next()) {
        const auto entry = EntryOf(*line);
        if (!entry || entry->isName) {
            throw TextError(lines.Number(), "'" + source::Printable(*line) + "' is no line CHAPTERnn=HH:MM:SS.nnn");
        }
        if (chapters.size() >= source::kMaxChapters) {
            throw TextError(lines.Number(), "it has more than " + std::to_string(source::kMaxChapters) + " chapters");
        }
        chapters.push_back(ChapterOf(*entry, lines.Number()));
        AddName(chapters.back(), entry->number, lines);
    }
    return chapters;
}

} // namespace chapters
