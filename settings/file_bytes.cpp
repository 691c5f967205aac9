#include "settings/file_bytes.h"

#include <algorithm>

#include "win/handle.h"
#include "win/platform.h"

namespace {

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
constexpr std::size_t kChunkBytes = std::size_t{1024} * 1024;

win::FileHandle OpenExisting(const std::wstring& path, DWORD access) {
    return win::FileHandle(
        CreateFileW(path.c_str(), access, kShareAll, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

// The operating system takes a name with a zero inside for a shorter one.
bool IsFileName(const std::wstring& path) {
    return !path.empty() && path.find(L'\0') == std::wstring::npos;
}

bool FolderExists(const std::wstring& path) {
    const std::size_t separator = path.find_last_of(L"\\/");
    const std::wstring folder = separator == std::wstring::npos ? L"." : path.substr(0, separator + 1);
    const DWORD attributes = GetFileAttributesW(folder.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// Some users may write even to such a file, but its owner does not want it.
bool IsReadOnly(const std::wstring& path) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY) != 0;
}

// Of this thread alone, so that two savers never write the same one.
std::wstring TemporaryPath(const std::wstring& path) {
    return path + L"." + std::to_wstring(GetCurrentProcessId()) + L"-" + std::to_wstring(GetCurrentThreadId()) +
           L".tmp";
}

bool WriteAll(HANDLE file, const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
        const auto chunk = static_cast<DWORD>(std::min(kChunkBytes, bytes.size() - done));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data() + done, chunk, &written, nullptr) || written == 0) {
            return false;
        }
        done += written;
    }
    return FlushFileBuffers(file) != FALSE;
}

bool WriteNewFile(const std::wstring& path, const std::string& bytes) {
    const win::FileHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    return file && WriteAll(file.Get(), bytes);
}

} // namespace

ReadStatus ReadFileBytes(const std::wstring& path, std::size_t limit, std::string& bytes) {
    if (!IsFileName(path)) {
        return ReadStatus::Unreadable;
    }
    const win::FileHandle file = OpenExisting(path, GENERIC_READ);
    if (!file) {
        const DWORD error = GetLastError();
        const bool missing = error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND;
        return missing ? ReadStatus::Missing : ReadStatus::Unreadable;
    }
    LARGE_INTEGER size{};
    if (!GetFileSizeEx(file.Get(), &size) || size.QuadPart > static_cast<LONGLONG>(limit)) {
        return ReadStatus::Unreadable;
    }
    bytes.resize(static_cast<std::size_t>(size.QuadPart));
    std::size_t done = 0;
    DWORD got = 0;
    while (done < bytes.size() &&
           ReadFile(file.Get(), bytes.data() + done, static_cast<DWORD>(std::min(kChunkBytes, bytes.size() - done)),
                    &got, nullptr) &&
           got > 0) {
        done += got;
    }
    return done == bytes.size() ? ReadStatus::Read : ReadStatus::Unreadable;
}

bool IsReplaceable(const std::wstring& path) {
    if (!IsFileName(path) || IsReadOnly(path)) {
        return false;
    }
    if (OpenExisting(path, GENERIC_WRITE)) {
        return true;
    }
    return GetLastError() == ERROR_FILE_NOT_FOUND && FolderExists(path);
}

bool ReplaceFileBytes(const std::wstring& path, const std::string& bytes) {
    const std::wstring temporary = TemporaryPath(path);
    if (IsReplaceable(path) && WriteNewFile(temporary, bytes) &&
        MoveFileExW(temporary.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return true;
    }
    DeleteFileW(temporary.c_str());
    return false;
}
