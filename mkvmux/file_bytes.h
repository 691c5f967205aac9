// FileBytes: a file of bounded size, read whole. Errors: Failure, with the path and the reason.
#pragma once

#include <string>

#include "win/platform.h"

namespace mkvmux {

// A file above maxBytes is refused before anything of it is read.
[[nodiscard]] std::string ReadWholeFile(const std::wstring& path, UINT64 maxBytes);

} // namespace mkvmux
