// TrackOptions: what the command line says about a track, from the text of the option to the muxer's row.
//
// Errors: Failure, one line that names the option.
#pragma once

#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include <qrx_mkvmuxer.h>

#include "client/track_row.h"

namespace CLI {
class App;
}

namespace mkvmux {

// What is not said stays as the input or the configuration has it.
struct TrackFlagOptions {
    std::optional<bool> forced;
    std::optional<bool> hearingImpaired;
    std::optional<bool> visualImpaired;
    std::optional<bool> original;
    std::optional<bool> commentary;

    bool operator==(const TrackFlagOptions&) const = default;

    void ApplyTo(MuxTrackFlags& record) const;
};

// The rest stays as the input or the configuration has it.
struct TrackOptions {
    std::optional<std::wstring> name;
    std::optional<std::wstring> language; // as the language list spells it
    std::optional<bool> isDefault;
    bool disable = false;
    TrackFlagOptions flags = {};

    bool operator==(const TrackOptions&) const = default;

    // Of the row all but the flags, which have a record of their own.
    void ApplyTo(client::TrackRow& row) const;
    [[nodiscard]] bool ChangesRow() const;
};

// An option of the command line for each of the flags.
struct TrackFlagOption {
    const char* name;  // "--forced"
    const char* names; // with those that other programs have for it, as the parser takes them
    const char* help;
    std::optional<bool> TrackFlagOptions::*flag;
    BYTE MuxTrackFlags::*field;
};
[[nodiscard]] const std::array<TrackFlagOption, 5>& TrackFlagOptionTable();

// The options "T:TEXT", "T:0" and "T" among those of the program. Owner: stays until the arguments are parsed.
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
    std::vector<std::string> m_defaults;  // T or T:0 or T:1, as the flags
    std::vector<std::string> m_disabled;  // T
    std::array<std::vector<std::string>, 5> m_flags;
};

} // namespace mkvmux
