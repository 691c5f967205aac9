// AttachmentOptions: the files that the command line attaches to the output.
//
// Errors: Failure, one line that names the option.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace mkvmux {

// What is not given follows from the file's name.
struct AttachmentOptions {
    std::wstring path;
    std::optional<std::string> mimeType;
    std::optional<std::wstring> name;
    std::wstring description;
};

// "--attach" among the options of the program, and what describes an attachment and stands before it. Owner: stays
// until the arguments are parsed.
class AttachmentOptionParser {
  public:
    explicit AttachmentOptionParser(CLI::App& app);
    AttachmentOptionParser(const AttachmentOptionParser&) = delete;
    AttachmentOptionParser& operator=(const AttachmentOptionParser&) = delete;

    [[nodiscard]] std::vector<AttachmentOptions> Read() const;

  private:
    const CLI::App& m_app; // not owned
    CLI::Option* m_attach;
    CLI::Option* m_mimeType;
    CLI::Option* m_name;
    CLI::Option* m_description;
    // As the parser stores them.
    std::vector<std::string> m_files;
    std::vector<std::string> m_mimeTypes;
    std::vector<std::string> m_names;
    std::vector<std::string> m_descriptions;
};

} // namespace mkvmux
