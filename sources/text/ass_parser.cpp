#include "sources/text/ass_parser.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <iterator>

#include "sources/base/limits.h"
#include "sources/text/subtitle_time.h"
#include "sources/text/text_decoder.h"

namespace subtitles {

namespace {

constexpr const char* kLineEnd = "\r\n";
constexpr const char* kDefaultFormat =
    "Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text";
constexpr const char* kAssFields = "Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text";
constexpr size_t kMaxFormatBytes = size_t{64} * 1024;
constexpr std::string_view kMarked = "Marked=";
// Their names; the first has another one in SSA, the third in old scripts.
constexpr std::string_view kBlockFieldNames[][2] = {{"layer", "marked"}, {"style", ""},   {"name", "actor"},
                                                    {"marginl", ""},     {"marginr", ""}, {"marginv", ""},
                                                    {"effect", ""},      {"text", ""}};
constexpr size_t kTextField = std::size(kBlockFieldNames) - 1;
// Scripts have ten. Each event is looked at field by field.
constexpr size_t kMaxFields = 64;
constexpr size_t kNoField = SIZE_MAX;

std::string Lower(std::string_view text) {
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return static_cast<char>(std::tolower(static_cast<unsigned char>(c))); });
    return lower;
}

// What follows "Dialogue:" in such a line.
std::optional<std::string_view> ContentOf(std::string_view line, std::string_view kind) {
    const size_t colon = line.find(':');
    const bool matches = colon != std::string_view::npos && Lower(Trimmed(line.substr(0, colon))) == kind;
    return matches ? std::optional(line.substr(colon + 1)) : std::nullopt;
}

// At most so many parts; the last one keeps its commas.
std::vector<std::string_view> SplitAtCommas(std::string_view text, size_t most) {
    std::vector<std::string_view> parts;
    while (parts.size() + 1 < most) {
        const size_t comma = text.find(',');
        if (comma == std::string_view::npos) {
            break;
        }
        parts.push_back(text.substr(0, comma));
        text.remove_prefix(comma + 1);
    }
    parts.push_back(text);
    return parts;
}

// Where in the list the field is; kNoField when it is not.
size_t IndexOf(const std::vector<std::string>& fields, std::string_view field) {
    const auto found = std::find(fields.begin(), fields.end(), field);
    return found == fields.end() || field.empty() ? kNoField : static_cast<size_t>(found - fields.begin());
}

std::string_view ValueAt(const std::vector<std::string_view>& values, size_t field) {
    return field < values.size() ? values[field] : std::string_view();
}

} // namespace

std::optional<SubtitleFile> AssParser::Parse(std::string_view text) {
    m_file.format = Format::Ass;
    LineReader lines(text);
    while (const std::optional<std::string_view> line = lines.Next()) {
        if (Trimmed(*line).starts_with("[")) {
            TakeSection(Trimmed(*line));
        }
        if (m_isInEvents) {
            TakeEventLine(*line);
        } else {
            AppendToHeader(m_file.header, *line);
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

void AssParser::AppendToHeader(std::string& part, std::string_view line) {
    const size_t bytes = line.size() + std::string_view(kLineEnd).size();
    if (bytes > source::kMaxPrivateBytes - m_headerBytes) {
        m_file.isDamaged = true;
        return;
    }
    m_headerBytes += bytes;
    part += line;
    part += kLineEnd;
}

void AssParser::TakeSection(std::string_view line) {
    const std::string section = Lower(line);
    m_isInEvents = section == "[events]";
    m_hasEvents = m_hasEvents || m_isInEvents;
    if (section == "[v4 styles]") {
        m_file.format = Format::Ssa;
    }
}

void AssParser::TakeEventLine(std::string_view line) {
    if (const auto fields = ContentOf(line, "format")) {
        m_formatLine = line.size() <= kMaxFormatBytes ? line : std::string_view();
        TakeFormat(*fields);
    } else if (const auto content = ContentOf(line, "dialogue")) {
        TakeDialogue(*content);
    } else if (ContentOf(line, "comment")) {
        AppendToHeader(m_comments, line); // a block would show it
    }
}

// Without a field that could be read when there are too many: no event has them.
void AssParser::TakeFormat(std::string_view text) {
    std::vector<std::string> fields;
    for (const std::string_view field : SplitAtCommas(text, kMaxFields + 1)) {
        fields.push_back(Lower(Trimmed(field)));
    }
    m_fieldCount = fields.size();
    if (fields.size() > kMaxFields) {
        m_file.isDamaged = true;
        fields.clear();
    }
    m_startField = IndexOf(fields, "start");
    m_endField = IndexOf(fields, "end");
    for (size_t i = 0; i < kBlockFields; ++i) {
        m_blockFields[i] = {IndexOf(fields, kBlockFieldNames[i][0]), IndexOf(fields, kBlockFieldNames[i][1])};
    }
}

void AssParser::TakeDialogue(std::string_view content) {
    static_assert(std::size(kBlockFieldNames) == kBlockFields);
    if (m_fieldCount == 0) {
        TakeFormat(kAssFields);
    }
    const std::vector<std::string_view> values = SplitAtCommas(content, m_fieldCount);
    const auto start = ParseTime(ValueAt(values, m_startField));
    const auto stop = ParseTime(ValueAt(values, m_endField));
    if (values.size() != m_fieldCount || !start || !stop) {
        m_file.isDamaged = true;
        return;
    }
    SubtitleEvent event{*start, std::max(*start, *stop), std::to_string(m_readOrder++)};
    for (size_t i = 0; i < kBlockFields; ++i) {
        std::string_view value = ValueAt(values, m_blockFields[i][0]);
        value = value.empty() ? ValueAt(values, m_blockFields[i][1]) : value;
        value = i == kTextField ? value : Trimmed(value);
        event.text += ',';
        event.text += value.starts_with(kMarked) ? value.substr(kMarked.size()) : value;
    }
    m_file.Add(std::move(event));
}

std::optional<SubtitleFile> ParseAss(std::string_view text) {
    return AssParser().Parse(text);
}

} // namespace subtitles
