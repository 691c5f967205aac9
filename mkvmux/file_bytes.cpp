#include "mkvmux/file_bytes.h"

#include <algorithm>

#include "mkvmux/failure.h"
#include "mkvmux/file_checks.h"
#include "mkvmux/text.h"
#include "win/handle.h"

namespace mkvmux {

namespace {

constexpr UINT64 kReadStepBytes = UINT64{16} << 20;

[[noreturn]] void FailWithLastError(const std::wstring& path, const char* what) {
    const DWORD error = GetLastError();
    throw Failure(Utf8FromWide(path) + what + DescribeFileError(path, HRESULT_FROM_WIN32(error)));
}

} // namespace

std::string ReadWholeFile(const std::wstring& path, UINT64 maxBytes) {
    const win::FileHandle file(CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                           FILE_ATTRIBUTE_NORMAL, nullptr));
    LARGE_INTEGER size{};
    if (!file || GetFileSizeEx(file.Get(), &size) == FALSE) {
        FailWithLastError(path, ": cannot be opened: ");
    }
    if (static_cast<UINT64>(size.QuadPart) > maxBytes) {
        throw Failure(Utf8FromWide(path) + ": is too large (" + std::to_string(size.QuadPart) + " bytes; at most " +
                      std::to_string(maxBytes) + ")");
    }
    std::string bytes(static_cast<size_t>(size.QuadPart), '\0');
    for (UINT64 done = 0; done < bytes.size();) {
        const DWORD wanted = static_cast<DWORD>(std::min(kReadStepBytes, bytes.size() - done));
        DWORD got = 0;
        if (ReadFile(file.Get(), bytes.data() + done, wanted, &got, nullptr) == FALSE) {
            FailWithLastError(path, ": cannot be read: ");
        }
        if (got == 0) {
            throw Failure(Utf8FromWide(path) + ": became shorter while it was read");
        }
        done += got;
    }
    return bytes;
}

} // namespace mkvmux
