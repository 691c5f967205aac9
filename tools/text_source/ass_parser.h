// AssParser: takes an SSA or ASS script apart, line by line.
//
// Errors: an event that lacks a field or whose times are none is left out, and the file is marked as damaged.
#pragma once

#include "tools/text_source/subtitle_file.h"

namespace subtitles {

class AssParser {
  public:
    [[nodiscard]] std::optional<SubtitleFile> Parse(const std::string& text);

  private:
    void TakeSection(const std::string& line);
    void TakeEventLine(const std::string& line);
    void TakeFormat(const std::string& fields);
    void TakeDialogue(const std::string& content);

    SubtitleFile m_file;
    bool m_isInEvents = false;
    bool m_hasEvents = false;
    std::string m_formatLine;
    std::string m_comments;
    std::vector<std::string> m_fields; // of an event, in their order
    unsigned m_readOrder = 0;
};

} // namespace subtitles
