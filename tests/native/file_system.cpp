// Paths, directories, deletion and attributes.
#include "tests/native/file_system.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

#include "tests/native/code_page.h"
#include "tests/native/shared_file.h"
#include "tests/support/system_code.h"

namespace native {

namespace {

constexpr mode_t kDirectoryMode = 0777;

bool ParentExists(const std::string& path) {
    const auto slash = path.find_last_of('/');
    if (slash == std::string::npos || slash == 0) {
        return true;
    }
    struct stat status {};
    return stat(path.substr(0, slash).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

DWORD ErrorFromErrno(int error, const std::string& path) {
    switch (error) {
    case ENOENT:
        return ParentExists(path) ? ERROR_FILE_NOT_FOUND : ERROR_PATH_NOT_FOUND;
    case ENOTDIR:
        return ERROR_PATH_NOT_FOUND;
    case EEXIST:
        return ERROR_FILE_EXISTS;
    case ENOSPC:
    case EDQUOT:
        return ERROR_DISK_FULL;
    case EMFILE:
    case ENFILE:
        return ERROR_TOO_MANY_OPEN_FILES;
    case ENOTEMPTY:
        return ERROR_DIR_NOT_EMPTY;
    case ENAMETOOLONG:
        return ERROR_FILENAME_EXCED_RANGE;
    case EINVAL:
        return ERROR_INVALID_PARAMETER;
    default:
        return ERROR_ACCESS_DENIED;
    }
}

} // namespace

std::optional<std::string> ToLinuxPath(LPCWSTR path) {
    std::basic_string_view<WCHAR> rest = path == nullptr ? std::basic_string_view<WCHAR>() : path;
    const bool drive = rest.size() >= 2 && rest[1] == ':';
    if (rest.empty() || (drive && rest[0] != 'Z' && rest[0] != 'z')) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return std::nullopt;
    }
    rest.remove_prefix(drive ? 2 : 0);
    constexpr std::string_view kForbidden = "<>:\"|?*";
    const auto forbidden = [&](WCHAR unit) {
        return unit < ' ' || (unit < 0x80 && kForbidden.find(static_cast<char>(unit)) != std::string_view::npos);
    };
    if (std::any_of(rest.begin(), rest.end(), forbidden)) {
        SetLastError(ERROR_INVALID_NAME);
        return std::nullopt;
    }
    std::string result;
    bool valid = true;
    while (!rest.empty()) {
        AppendUtf8(result, TakeUtf16(rest, valid));
    }
    std::replace(result.begin(), result.end(), '\\', '/');
    return result.empty() ? "/" : result;
}

BOOL FailFromErrno(const std::string& path) {
    SetLastError(ErrorFromErrno(errno, path));
    return FALSE;
}

} // namespace native

using native::FailFromErrno;
using native::ToLinuxPath;

BOOL WINAPI CreateDirectoryW(LPCWSTR path, LPSECURITY_ATTRIBUTES) {
    const test_support::SystemCode notTheProduct;
    const auto name = ToLinuxPath(path);
    if (!name) {
        return FALSE;
    }
    if (mkdir(name->c_str(), native::kDirectoryMode) == 0) {
        return TRUE;
    }
    if (errno == EEXIST) {
        SetLastError(ERROR_ALREADY_EXISTS);
        return FALSE;
    }
    if (errno == ENOENT) {
        SetLastError(ERROR_PATH_NOT_FOUND);
        return FALSE;
    }
    return FailFromErrno(*name);
}

BOOL WINAPI RemoveDirectoryW(LPCWSTR path) {
    const auto name = ToLinuxPath(path);
    return name && rmdir(name->c_str()) == 0 ? TRUE : (name ? FailFromErrno(*name) : FALSE);
}

BOOL WINAPI DeleteFileW(LPCWSTR path) {
    const auto name = ToLinuxPath(path);
    if (!name) {
        return FALSE;
    }
    struct stat status {};
    if (stat(name->c_str(), &status) != 0) {
        return FailFromErrno(*name);
    }
    if (!native::MayDelete(native::FileIdentity{status.st_dev, status.st_ino})) {
        SetLastError(ERROR_SHARING_VIOLATION);
        return FALSE;
    }
    return !S_ISDIR(status.st_mode) && unlink(name->c_str()) == 0 ? TRUE : FailFromErrno(*name);
}

DWORD WINAPI GetFileAttributesW(LPCWSTR path) {
    const auto name = ToLinuxPath(path);
    struct stat status {};
    if (!name || stat(name->c_str(), &status) != 0) {
        if (name) {
            FailFromErrno(*name);
        }
        return INVALID_FILE_ATTRIBUTES;
    }
    return S_ISDIR(status.st_mode) ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_ARCHIVE;
}

DWORD WINAPI GetTempPathW(DWORD capacity, LPWSTR buffer) {
    const char* const chosen = std::getenv("TMPDIR");
    std::string path = chosen != nullptr && *chosen != '\0' ? chosen : "/tmp";
    path += path.back() == '/' ? "" : "/";
    const int length = MultiByteToWideChar(CP_UTF8, 0, path.c_str(), static_cast<int>(path.size()), nullptr, 0);
    if (static_cast<DWORD>(length) >= capacity) {
        return static_cast<DWORD>(length) + 1; // with the terminator, as the caller must allocate
    }
    MultiByteToWideChar(CP_UTF8, 0, path.c_str(), static_cast<int>(path.size()), buffer, length);
    buffer[length] = 0;
    return static_cast<DWORD>(length);
}
