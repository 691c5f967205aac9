#include "settings/file_bytes.h"

#include <algorithm>

#include "settings/file_open.h"

ReadStatus ReadFileBytes(const std::wstring& path, size_t limit, std::string& bytes) {
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
    bytes.resize(static_cast<size_t>(size.QuadPart));
    size_t done = 0;
    DWORD got = 0;
    while (done < bytes.size() &&
           ReadFile(file.Get(), bytes.data() + done, static_cast<DWORD>(std::min(kChunkBytes, bytes.size() - done)),
                    &got, nullptr) &&
           got > 0) {
        done += got;
    }
    return done == bytes.size() ? ReadStatus::Read : ReadStatus::Unreadable;
}
