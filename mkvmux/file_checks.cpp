#include "mkvmux/file_checks.h"

#include <algorithm>
#include <filesystem>

#include "mkvmux/failure.h"
#include "mkvmux/text.h"

namespace mkvmux {

namespace {

namespace fs = std::filesystem;

// Of one part of a path, on every file system that the system knows.
constexpr size_t kMaxNameChars = 255;
// Pipes and devices stand in no folder.
constexpr std::wstring_view kDevicePrefix = L"\\\\.\\";

bool HasTooLongName(std::wstring_view path) {
    const fs::path whole(path);
    return std::any_of(whole.begin(), whole.end(),
                       [](const fs::path& part) { return part.native().size() > kMaxNameChars; });
}

bool IsDirectory(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

[[noreturn]] void RefusePlace(const std::wstring& path, const std::string& why) {
    throw Failure(Utf8FromWide(path) + ": cannot be created: " + why);
}

} // namespace

void CheckInput(const std::wstring& path) {
    WIN32_FILE_ATTRIBUTE_DATA data{};
    if (GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data) == FALSE) {
        throw Failure(Utf8FromWide(path) + ": cannot be opened: " + DescribeFileError(path, LastResult()));
    }
    if ((data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        throw Failure(Utf8FromWide(path) + ": is a directory");
    }
    if (data.nFileSizeHigh == 0 && data.nFileSizeLow == 0) {
        throw Failure(Utf8FromWide(path) + ": is empty");
    }
}

void CheckPlace(const std::wstring& path) {
    if (path.empty() || path.starts_with(kDevicePrefix)) {
        return;
    }
    if (HasTooLongName(path)) {
        RefusePlace(path, DescribeFileError(path, HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE)));
    }
    if (IsDirectory(path)) {
        RefusePlace(path, "it is a directory");
    }
    const std::wstring folder = fs::path(path).parent_path().native();
    if (!folder.empty() && !IsDirectory(folder)) {
        RefusePlace(path, "there is no directory '" + Utf8FromWide(folder) + "'");
    }
}

std::string DescribeFileError(std::wstring_view path, HRESULT hr) {
    if (HasTooLongName(path)) {
        return "the name is too long (at most " + std::to_string(kMaxNameChars) + " characters)";
    }
    return DescribeResult(hr);
}

} // namespace mkvmux
