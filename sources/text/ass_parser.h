// AssParser: takes an SSA or ASS script apart, line by line.
//
// Errors: an event that lacks a field or whose times are none is left out, and so is what a script has too much of; the
// file is marked as damaged.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "sources/text/subtitle_file.h"

namespace subtitles {

class AssParser {
  public:
    [[nodiscard]] std::optional<SubtitleFile> Parse(std::string_view text);

  private:
    // What a block holds behind the number of the event.
    static constexpr size_t kBlockFields = 8;

    void TakeSection(std::string_view line);
    void TakeEventLine(std::string_view line);
    void TakeFormat(std::string_view fields);
    void TakeDialogue(std::string_view content);
    void AppendToHeader(std::string& part, std::string_view line);

    SubtitleFile m_file;
    bool m_isInEvents = false;
    bool m_hasEvents = false;
    std::string m_formatLine;
    std::string m_comments;
    size_t m_headerBytes = 0; // with the comments
    // Where an event has its fields.
    size_t m_fieldCount = 0;
    size_t m_startField = 0;
    size_t m_endField = 0;
    std::array<std::array<size_t, 2>, kBlockFields> m_blockFields{};
    unsigned m_readOrder = 0;
};

// SSA or ASS, whichever the sections say. None for a text without the section of events.
[[nodiscard]] std::optional<SubtitleFile> ParseAss(std::string_view text);

} // namespace subtitles
