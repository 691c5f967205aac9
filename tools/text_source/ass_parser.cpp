#include "tools/text_source/ass_parser.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "tools/text_source/text_decoder.h"

namespace subtitles {

namespace {

constexpr const char* kLineEnd = "\r\n";
constexpr const char* kDefaultFormat =
    "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text";
constexpr const char* kAssFields = "Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text";
constexpr const char* kMarked = "Marked=";
// What a block holds behind the number of the event; the first has another name in SSA, the third in old scripts.
constexpr const char* kBlockFields[][2] = {{"layer", "marked"}, {"style", ""},   {"name", "actor"}, {"marginl", ""},
                                           {"marginr", ""},     {"marginv", ""}, {"effect", ""},    {"text", ""}};

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return text;
}

// What follows "Dialogue:" in such a line.
std::optional<std::string> ContentOf(const std::string& line, const std::string& kind) {
    const size_t colon = line.find(':');
    const bool matches = colon != std::string::npos && Lower(Trimmed(line.substr(0, colon))) == kind;
    return matches ? std::optional(line.substr(colon + 1)) : std::nullopt;
}

// At most so many parts; the last one keeps its commas.
std::vector<std::string> SplitAtCommas(const std::string& text, size_t most) {
    std::vector<std::string> parts;
    size_t start = 0;
    while (parts.size() + 1 < most) {
        const size_t comma = text.find(',', start);
        if (comma == std::string::npos) {
            break;
        }
        parts.push_back(text.substr(start, comma - start));
        start = comma + 1;
    }
    parts.push_back(text.substr(start));
    return parts;
}

} // namespace

std::optional<SubtitleFile> AssParser::Parse(const std::string& text) {
    m_file.format = Format::Ass;
    for (const std::string& line : SplitLines(text)) {
        if (Trimmed(line).starts_with("[")) {
            TakeSection(Lower(Trimmed(line)));
        }
        if (m_isInEvents) {
            TakeEventLine(line);
        } else {
            m_file.header += line + kLineEnd;
        }
    }
    if (!m_hasEvents) {
        return {};
    }
    m_file.header += "[Events]";
    m_file.header += kLineEnd;
    m_file.header += m_formatLine.empty() ? kDefaultFormat : m_formatLine;
    m_file.header += kLineEnd;
    m_file.header += m_comments;
    SortByStart(m_file.events);
    return std::move(m_file);
}

void AssParser::TakeSection(const std::string& line) {
    m_isInEvents = line == "[events]";
    m_hasEvents = m_hasEvents || m_isInEvents;
    if (line == "[v4 styles]") {
        m_file.format = Format::Ssa;
    }
}

void AssParser::TakeEventLine(const std::string& line) {
    if (const auto fields = ContentOf(line, "format")) {
        m_formatLine = line;
        TakeFormat(*fields);
    } else if (const auto content = ContentOf(line, "dialogue")) {
        TakeDialogue(*content);
    } else if (ContentOf(line, "comment")) {
        m_comments += line; // a block would show it
        m_comments += kLineEnd;
    }
}

void AssParser::TakeFormat(const std::string& fields) {
    m_fields.clear();
    for (const std::string& field : SplitAtCommas(fields, SIZE_MAX)) {
        m_fields.push_back(Lower(Trimmed(field)));
    }
}

void AssParser::TakeDialogue(const std::string& content) {
    if (m_fields.empty()) {
        TakeFormat(kAssFields);
    }
    const std::vector<std::string> values = SplitAtCommas(content, m_fields.size());
    const auto valueOf = [&](const std::string& field) {
        const auto at = static_cast<size_t>(std::find(m_fields.begin(), m_fields.end(), field) - m_fields.begin());
        return at < values.size() ? values[at] : std::string();
    };
    const auto start = ParseTime(valueOf("start"));
    const auto stop = ParseTime(valueOf("end"));
    if (values.size() != m_fields.size() || !start || !stop) {
        m_file.isDamaged = true;
        return;
    }
    SubtitleEvent event{*start, std::max(*start, *stop), std::to_string(m_readOrder++)};
    for (const auto& names : kBlockFields) {
        std::string value = valueOf(names[0]);
        if (value.empty() && *names[1] != '\0') {
            value = valueOf(names[1]);
        }
        const bool isText = std::string(names[0]) == "text";
        value = isText ? value : Trimmed(value);
        event.text +=
            "," + (value.starts_with(kMarked) ? value.substr(std::char_traits<char>::length(kMarked)) : value);
    }
    m_file.events.push_back(std::move(event));
}

std::optional<SubtitleFile> ParseAss(const std::string& text) {
    return AssParser().Parse(text);
}

} // namespace subtitles
