// Windows paths and errors on the Linux file system.
#pragma once

#include <optional>
#include <string>

#include "win/platform.h"

namespace native {

// Both separators, and a drive Z: that is the whole file system. No other drive exists; a path that cannot be one
// sets the last error and gives none.
std::optional<std::string> ToLinuxPath(LPCWSTR path);

// Sets the last error from errno; `path` tells a missing file from a missing directory. Always FALSE.
BOOL FailFromErrno(const std::string& path = {});

} // namespace native
