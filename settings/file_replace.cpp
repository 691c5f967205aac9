#include "settings/file_replace.h"

#include <algorithm>
#include <optional>

#include "settings/file_identity.h"
#include "settings/file_open.h"
#include "win/temporary_file.h"

namespace {

constexpr int kMaxFailures = 40;
constexpr int kMaxPauseMs = 50;
constexpr int kProbes = 5;
constexpr DWORD kKeptAttributes = FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE |
                                  FILE_ATTRIBUTE_NOT_CONTENT_INDEXED | FILE_ATTRIBUTE_ENCRYPTED;

bool HasAttribute(const std::wstring& path, DWORD attribute) {
    const DWORD attributes = GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

std::wstring NewTemporaryName() {
    return win::TemporaryFile::RandomName(L"settings");
}

bool WriteAll(HANDLE file, const std::string& bytes) {
    for (size_t done = 0; done < bytes.size();) {
        const auto chunk = static_cast<DWORD>(std::min(kChunkBytes, bytes.size() - done));
        DWORD written = 0;
        if (!WriteFile(file, bytes.data() + done, chunk, &written, nullptr) || written == 0) {
            return false;
        }
        done += written;
    }
    return FlushFileBuffers(file) != FALSE;
}

bool SetSize(HANDLE file, LONGLONG bytes) {
    LARGE_INTEGER end{};
    end.QuadPart = bytes;
    return SetFilePointerEx(file, end, nullptr, FILE_BEGIN) && SetEndOfFile(file);
}

// The room is taken first, so that a full disk leaves the old bytes as they are.
bool Overwrite(HANDLE file, const std::string& bytes) {
    const auto newBytes = static_cast<LONGLONG>(bytes.size());
    LARGE_INTEGER oldBytes{};
    if (!GetFileSizeEx(file, &oldBytes)) {
        return false;
    }
    if (newBytes > oldBytes.QuadPart && !SetSize(file, newBytes)) {
        SetSize(file, oldBytes.QuadPart);
        return false;
    }
    return SetFilePointerEx(file, {}, nullptr, FILE_BEGIN) && WriteAll(file, bytes) && SetSize(file, newBytes);
}

bool WriteInPlace(const std::wstring& path, const std::string& bytes) {
    win::FileHandle file(
        CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    const bool isNew = GetLastError() != ERROR_ALREADY_EXISTS;
    if (!file) {
        return false;
    }
    if (Overwrite(file.Get(), bytes)) {
        return true;
    }
    file.Reset();
    if (isNew) {
        DeleteFileW(path.c_str());
    }
    return false;
}

// It exists for a moment: only that tells whether the folder and the file system take the name.
bool CanBeMade(const std::wstring& path) {
    return static_cast<bool>(win::FileHandle(CreateFileW(path.c_str(), GENERIC_WRITE | DELETE, kShareAll, nullptr,
                                                         CREATE_NEW, FILE_FLAG_DELETE_ON_CLOSE, nullptr)));
}

// A file like the one that it will replace, still without content.
bool CreateBeside(win::TemporaryFile& temporary, const std::wstring& path,
                  const std::optional<FileIdentity>& identity) {
    const DWORD attributes = identity ? identity->attributes & kKeptAttributes : 0;
    return temporary.Create(win::FolderOf(path), GENERIC_WRITE | (identity ? WRITE_DAC : 0),
                            attributes == 0 ? FILE_ATTRIBUTE_NORMAL : attributes) &&
           (!identity || GiveRights(temporary.Get(), *identity));
}

} // namespace

bool PauseBriefly(int failures) {
    if (failures >= kMaxFailures) {
        return false;
    }
    Sleep(static_cast<DWORD>(failures < 6 ? 1 << failures : kMaxPauseMs));
    return true;
}

bool IsReplaceable(const std::wstring& path) {
    // Some users may write even to such a file, but its owner does not want it.
    if (!IsFileName(path) || HasAttribute(path, FILE_ATTRIBUTE_READONLY)) {
        return false;
    }
    // Another saver may make it, or take its own probe away, at the same time.
    for (int i = 0; i < kProbes; ++i) {
        if (OpenExisting(path, GENERIC_WRITE)) {
            return true;
        }
        if (GetLastError() == ERROR_FILE_NOT_FOUND && CanBeMade(path)) {
            return true;
        }
    }
    return false;
}

bool ReplaceFileBytes(const std::wstring& path, const std::string& bytes, const PauseBeforeTry& pause) {
    if (HasAttribute(path, FILE_ATTRIBUTE_READONLY)) {
        return false;
    }
    const std::optional<FileIdentity> identity = IdentityOf(path);
    const bool isUnknown = !identity && GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    const std::wstring& target = identity ? identity->path : path;
    win::TemporaryFile temporary(NewTemporaryName);
    if (isUnknown || !CreateBeside(temporary, target, identity)) {
        return WriteInPlace(path, bytes);
    }
    if (!WriteAll(temporary.Get(), bytes)) {
        return false;
    }
    for (int failures = 0; !temporary.MoveTo(target);) {
        if (!pause(++failures)) {
            return WriteInPlace(path, bytes);
        }
    }
    return true;
}
