// Opening, reading, writing and positioning files.
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "tests/native/file_system.h"
#include "tests/native/shared_file.h"
#include "tests/support/system_code.h"

namespace {

using native::FailFromErrno;
using native::Kernel;
using native::SharedFile;

constexpr mode_t kFileMode = 0666;
constexpr int kLowBits = 32;

int OpenMode(DWORD access) {
    const bool reads = (access & (GENERIC_READ | GENERIC_ALL | FILE_READ_DATA)) != 0;
    const bool writes = (access & (GENERIC_WRITE | GENERIC_ALL | FILE_WRITE_DATA | FILE_APPEND_DATA)) != 0;
    return (writes ? (reads ? O_RDWR : O_WRONLY) : O_RDONLY) | O_CLOEXEC;
}

bool IsDisposition(DWORD value) {
    return value >= CREATE_NEW && value <= TRUNCATE_EXISTING;
}

// The descriptor, or -1 with errno; `existed` tells whether the file was there before.
int OpenDescriptor(const std::string& path, DWORD access, DWORD disposition, bool& existed) {
    const int mode = OpenMode(access);
    existed = false;
    if (disposition != CREATE_NEW) {
        const int descriptor = open(path.c_str(), mode);
        existed = descriptor >= 0;
        if (existed || errno != ENOENT || disposition == OPEN_EXISTING || disposition == TRUNCATE_EXISTING) {
            return descriptor;
        }
    }
    return open(path.c_str(), mode | O_CREAT | O_EXCL, kFileMode);
}

LONGLONG Seek(const SharedFile& file, LONGLONG distance, DWORD method) {
    constexpr int kWhence[] = {SEEK_SET, SEEK_CUR, SEEK_END}; // FILE_BEGIN, FILE_CURRENT, FILE_END
    if (method > FILE_END) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return -1;
    }
    const off_t position = lseek(file.Descriptor(), distance, kWhence[method]);
    if (position < 0) {
        SetLastError(errno == EINVAL ? ERROR_NEGATIVE_SEEK : ERROR_INVALID_FUNCTION);
    }
    return position;
}

} // namespace

HANDLE WINAPI CreateFileW(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES, DWORD disposition, DWORD,
                          HANDLE) {
    const test_support::SystemCode notTheProduct;
    const auto name = native::ToLinuxPath(path);
    if (!name || !IsDisposition(disposition)) {
        if (name) {
            SetLastError(ERROR_INVALID_PARAMETER);
        }
        return INVALID_HANDLE_VALUE;
    }
    bool existed = false;
    const int descriptor = OpenDescriptor(*name, access, disposition, existed);
    if (descriptor < 0) {
        FailFromErrno(*name);
        return INVALID_HANDLE_VALUE;
    }
    const auto file = SharedFile::Share(descriptor, access, share);
    if (!file) {
        return INVALID_HANDLE_VALUE;
    }
    const bool empties = existed && (disposition == CREATE_ALWAYS || disposition == TRUNCATE_EXISTING);
    if (empties && ftruncate(descriptor, 0) != 0) {
        FailFromErrno(*name);
        return INVALID_HANDLE_VALUE;
    }
    const bool tells = existed && (disposition == CREATE_ALWAYS || disposition == OPEN_ALWAYS);
    SetLastError(tells ? ERROR_ALREADY_EXISTS : ERROR_SUCCESS);
    return Kernel::Instance().Add(file);
}

BOOL WINAPI WriteFile(HANDLE handle, LPCVOID data, DWORD size, LPDWORD written, LPOVERLAPPED) {
    if (written != nullptr) {
        *written = 0;
    }
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    if (!file) {
        return FALSE;
    }
    DWORD done = 0;
    while (done < size) {
        const ssize_t bytes = write(file->Descriptor(), static_cast<const BYTE*>(data) + done, size - done);
        if (bytes < 0 && errno != EINTR) {
            return FailFromErrno();
        }
        done += bytes < 0 ? 0U : static_cast<DWORD>(bytes);
    }
    if (written != nullptr) {
        *written = done;
    }
    return TRUE;
}

BOOL WINAPI ReadFile(HANDLE handle, LPVOID data, DWORD size, LPDWORD read, LPOVERLAPPED) {
    if (read != nullptr) {
        *read = 0;
    }
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    if (!file) {
        return FALSE;
    }
    ssize_t bytes = 0;
    do {
        bytes = ::read(file->Descriptor(), data, size);
    } while (bytes < 0 && errno == EINTR);
    if (bytes < 0) {
        return FailFromErrno();
    }
    if (read != nullptr) {
        *read = static_cast<DWORD>(bytes);
    }
    return TRUE;
}

BOOL WINAPI SetFilePointerEx(HANDLE handle, LARGE_INTEGER distance, LARGE_INTEGER* position, DWORD method) {
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    const LONGLONG result = file ? Seek(*file, distance.QuadPart, method) : -1;
    if (result >= 0 && position != nullptr) {
        position->QuadPart = result;
    }
    return result >= 0 ? TRUE : FALSE;
}

DWORD WINAPI SetFilePointer(HANDLE handle, LONG low, LONG* high, DWORD method) {
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    if (!file) {
        return INVALID_SET_FILE_POINTER;
    }
    const LONGLONG distance =
        high == nullptr ? low
                        : static_cast<LONGLONG>(*high) << kLowBits | static_cast<LONGLONG>(static_cast<DWORD>(low));
    const LONGLONG result = Seek(*file, distance, method);
    if (result < 0) {
        return INVALID_SET_FILE_POINTER;
    }
    if (high != nullptr) {
        *high = static_cast<LONG>(result >> kLowBits);
    }
    SetLastError(NO_ERROR); // all ones is also a possible low half
    return static_cast<DWORD>(result);
}

BOOL WINAPI GetFileSizeEx(HANDLE handle, LARGE_INTEGER* size) {
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    if (!file) {
        return FALSE;
    }
    const off_t position = lseek(file->Descriptor(), 0, SEEK_CUR);
    const off_t end = lseek(file->Descriptor(), 0, SEEK_END);
    if (position < 0 || end < 0 || lseek(file->Descriptor(), position, SEEK_SET) < 0) {
        return FailFromErrno();
    }
    size->QuadPart = end;
    return TRUE;
}

BOOL WINAPI SetEndOfFile(HANDLE handle) {
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    if (!file) {
        return FALSE;
    }
    const off_t position = lseek(file->Descriptor(), 0, SEEK_CUR);
    return position >= 0 && ftruncate(file->Descriptor(), position) == 0 ? TRUE : FailFromErrno();
}

BOOL WINAPI FlushFileBuffers(HANDLE handle) {
    const auto file = Kernel::Instance().FindAs<SharedFile>(handle);
    return file && fsync(file->Descriptor()) == 0 ? TRUE : (file ? FailFromErrno() : FALSE);
}
