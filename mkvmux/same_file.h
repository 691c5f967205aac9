// SameFile: whether two names lead to one file.
#pragma once

#include <string>

namespace mkvmux {

// Neither file needs to exist. Small and capital letters are the same, as the system sees names; links are followed
// where they lead to something.
[[nodiscard]] bool IsSameFile(const std::wstring& a, const std::wstring& b);

} // namespace mkvmux
