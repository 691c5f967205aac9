// Charset: the names that character sets have on the Internet, and the system's code pages for them.
//
// Threads: any. Errors: none for a name that is not known, and for a code page that the system lacks.
#pragma once

#include <optional>
#include <string_view>

namespace mkvmux {

// In any case: "UTF-8", "ISO-8859-15", "windows-1252", "CP437", "Shift_JIS".
[[nodiscard]] std::optional<unsigned> CodePageOf(std::string_view name);

} // namespace mkvmux
