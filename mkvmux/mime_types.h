// MimeTypes: the MIME type of a file to attach, guessed from the extension of its name.
#pragma once

#include <string>
#include <string_view>

namespace mkvmux {

// Fonts get the names that players look for. What is not known is "application/octet-stream".
[[nodiscard]] std::string MimeTypeOf(std::wstring_view path);

} // namespace mkvmux
