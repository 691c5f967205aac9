// ChapterOptions: what the command line says of chapters and of tags of the whole file.
//
// Errors: Failure, one line that names the option.
#pragma once

#include <optional>
#include <string>

namespace CLI {
class App;
}

namespace mkvmux {

struct ChapterOptions {
    std::wstring chapters;           // the file; empty: those of the inputs
    std::wstring language;           // of titles that do not say
    std::optional<unsigned> charset; // the code page of simple chapters; none: found out
    bool carryChapters = true;       // from the inputs
    std::wstring globalTags;         // the file; empty: those of the inputs
    bool carryGlobalTags = true;
};

// "--chapters" and its kin among the options of the program. Owner: stays until the arguments are parsed.
class ChapterOptionParser {
  public:
    explicit ChapterOptionParser(CLI::App& app);
    ChapterOptionParser(const ChapterOptionParser&) = delete;
    ChapterOptionParser& operator=(const ChapterOptionParser&) = delete;

    [[nodiscard]] ChapterOptions Read() const;

  private:
    // As the parser stores them.
    std::string m_chapters;
    std::string m_language;
    std::string m_charset;
    std::string m_globalTags;
    bool m_noChapters = false;
    bool m_noGlobalTags = false;
};

} // namespace mkvmux
