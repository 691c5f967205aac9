// OptionsFile: arguments from a file, "@options.json", as mkvmerge takes them.
//
// The file is a JSON array of strings in UTF-8, with or without a byte order mark. Errors: Failure.
#pragma once

#include <string>
#include <vector>

namespace mkvmux {

// Each argument that begins with "@" is replaced by the strings of the file it names. Those are taken as they are:
// an "@" inside the file begins a plain argument.
[[nodiscard]] std::vector<std::string> ExpandOptionsFiles(const std::vector<std::string>& arguments);

// The files that these arguments name.
[[nodiscard]] std::vector<std::wstring> OptionsFilesOf(const std::vector<std::string>& arguments);

} // namespace mkvmux
