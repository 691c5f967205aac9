// Options: what the command line asks for.
#pragma once

#include <string>
#include <variant>
#include <vector>

namespace mkvmux {

enum class ProgressMode { Auto, Always, Never };

// One input file; what is said about its tracks alone will stand here too.
struct InputOptions {
    std::wstring path;
};

struct Options {
    std::wstring output;
    bool overwrite = false;
    bool webm = false;
    bool identify = false;
    bool noRegister = false; // load the module from beside the program
    bool quiet = false;
    ProgressMode progress = ProgressMode::Auto;
    std::vector<InputOptions> inputs;
};

// The command line that was asked for help or the version, or that cannot be followed.
struct EarlyExit {
    int status = 0;
    std::string output; // for standard output when status is 0, else the line for standard error
};

// The arguments are UTF-8 and come without the program's name. The file name of the output may turn webm on.
[[nodiscard]] std::variant<Options, EarlyExit> ParseOptions(std::vector<std::string> arguments,
                                                            const std::string& version);

} // namespace mkvmux
