// OptionKinds: the kinds of options that the program has beside those of the option parser.
#pragma once

#include <string>
#include <vector>

#include <CLI/CLI.hpp>

namespace mkvmux {

// Names a file: one that was forgotten makes the next option its name.
[[nodiscard]] CLI::Validator NoOption();

// As above, or "-" for standard output.
[[nodiscard]] CLI::Validator NoOptionButDash();

// A text may begin with anything, but is no option of the program.
[[nodiscard]] CLI::Validator NoOptionOf(const CLI::App& app);

// An option that can be given several times, with one value each time.
CLI::Option* AddRepeatable(CLI::App& app, const char* name, std::vector<std::string>& values, const char* help,
                           const char* type);

} // namespace mkvmux
