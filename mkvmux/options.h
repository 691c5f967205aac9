// Options: what the command line asks for.
#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "mkvmux/attachment_options.h"
#include "mkvmux/chapter_options.h"
#include "mkvmux/split_options.h"
#include "mkvmux/standard_output.h"
#include "mkvmux/track_options.h"
#include "sources/annexb/frame_rate.h"

namespace mkvmux {

enum class ProgressMode { Auto, Always, Never };

struct InputOptions {
    std::wstring path;
};

struct Options {
    std::wstring output; // a file, or kStandardOutput
    std::wstring repair; // the recording to finish, and nothing else; empty: none
    std::wstring report; // the page to write about the one input, and nothing else; empty: none
    bool overwrite = false;
    bool webm = false;
    bool strict = false;               // the profile of the file
    bool isProfileGiven = false;       // else that of a loaded configuration counts
    std::optional<std::wstring> title; // none: that of the inputs
    std::optional<UINT64> seed;        // where identifiers and dates come from; none: the system
    bool trackStatistics = true;
    std::optional<bool> cuesInFront;  // none: as a loaded configuration says, or at the end
    std::optional<UINT64> indexBytes; // for cues in front; none: estimated
    bool identify = false;
    bool json = false;       // the identification as JSON
    bool noRegister = false; // load the module from beside the program
    bool showProperties = false;
    bool quiet = false;
    bool verbose = false; // what is going on, and a table of it at the end
    ProgressMode progress = ProgressMode::Auto;
    std::vector<InputOptions> inputs;
    annexb::FrameRate frameRate;           // of inputs that do not say
    std::map<size_t, TrackOptions> tracks; // by the number of the track
    std::vector<AttachmentOptions> attachments;
    ChapterOptions chapters;
    SplitOptions split;
    std::wstring logDirectory;              // empty: no trace log
    std::wstring saveConfig;                // empty: not saved
    std::wstring loadConfig;                // empty: not loaded
    std::vector<std::wstring> optionsFiles; // that arguments came from

    [[nodiscard]] bool IsToStandardOutput() const { return output == kStandardOutput; }
    // For messages.
    [[nodiscard]] std::string OutputName() const;
};

// The command line that was asked for help, the version or the languages, or that cannot be followed.
struct EarlyExit {
    int status = 0;
    std::string output; // for standard output when status is 0, else the line for standard error
};

// The arguments are UTF-8, may name option files ("@FILE"), and come without the name of the program. The name of the
// output may turn webm on.
[[nodiscard]] std::variant<Options, EarlyExit> ParseOptions(const std::vector<std::string>& arguments,
                                                            const std::string& version);

} // namespace mkvmux
