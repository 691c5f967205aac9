// TrackOptions: what the command line says about a track, from the text of the option to the muxer's row.
//
// Errors: Failure, one line that names the option.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "client/track_row.h"

namespace CLI {
class App;
}

namespace mkvmux {

// The rest stays as the input or the configuration has it.
struct TrackOptions {
    std::optional<std::wstring> name;
    std::optional<std::wstring> language; // as the language list spells it
    bool makeDefault = false;
    bool disable = false;

    bool operator==(const TrackOptions&) const = default;

    void ApplyTo(client::TrackRow& row) const;
};

// The options "T:TEXT" and "T" among those of the program. Owner: stays until the arguments are parsed.
class TrackOptionParser {
  public:
    explicit TrackOptionParser(CLI::App& app);
    TrackOptionParser(const TrackOptionParser&) = delete;
    TrackOptionParser& operator=(const TrackOptionParser&) = delete;

    // By the number of the track, counted over all inputs from 0. For a track that is named twice the later option
    // counts.
    [[nodiscard]] std::map<size_t, TrackOptions> Read() const;

  private:
    // As the parser stores them.
    std::vector<std::string> m_names;     // T:NAME
    std::vector<std::string> m_languages; // T:NAME or T:CODE
    std::vector<std::string> m_defaults;  // T
    std::vector<std::string> m_disabled;  // T
};

} // namespace mkvmux
