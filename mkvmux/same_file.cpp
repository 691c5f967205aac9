#include "mkvmux/same_file.h"

#include <filesystem>

#include "win/platform.h"

namespace mkvmux {

namespace {

std::wstring FullName(const std::wstring& name) {
    std::error_code error;
    return std::filesystem::absolute(name, error).lexically_normal().make_preferred().native();
}

} // namespace

bool IsSameFile(const std::wstring& a, const std::wstring& b) {
    std::error_code error;
    return std::filesystem::equivalent(a, b, error) ||
           CompareStringOrdinal(FullName(a).c_str(), -1, FullName(b).c_str(), -1, TRUE) == CSTR_EQUAL;
}

} // namespace mkvmux
