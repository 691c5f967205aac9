#include "tests/native/shared_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <map>
#include <mutex>

#include "tests/native/file_system.h"

namespace native {

namespace {

struct ShareTable {
    std::recursive_mutex mutex;
    std::multimap<FileIdentity, const SharedFile*> files;
};

ShareTable& Shares() {
    // Never destroyed: the program's globals close their files after the last of main.
    static ShareTable* const table = std::make_unique<ShareTable>().release();
    return *table;
}

// The share bit that each kind of access needs from the others.
DWORD ShareBitsOf(DWORD access) {
    constexpr DWORD kReads = GENERIC_READ | GENERIC_ALL | FILE_READ_DATA;
    constexpr DWORD kWrites = GENERIC_WRITE | GENERIC_ALL | FILE_WRITE_DATA | FILE_APPEND_DATA;
    return ((access & kReads) != 0 ? FILE_SHARE_READ : 0U) | ((access & kWrites) != 0 ? FILE_SHARE_WRITE : 0U) |
           ((access & (DELETE | GENERIC_ALL)) != 0 ? FILE_SHARE_DELETE : 0U);
}

} // namespace

bool MayShare(FileIdentity identity, DWORD access, DWORD share) {
    const auto [first, last] = Shares().files.equal_range(identity);
    for (auto entry = first; entry != last; ++entry) {
        const SharedFile& other = *entry->second;
        if ((access & ~other.m_share) != 0 || (other.m_access & ~share) != 0) {
            return false;
        }
    }
    return true;
}

bool MayDelete(FileIdentity identity) {
    constexpr DWORD kEverything = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const std::lock_guard lock(Shares().mutex);
    return MayShare(identity, FILE_SHARE_DELETE, kEverything);
}

std::shared_ptr<SharedFile> SharedFile::Share(int descriptor, DWORD access, DWORD share) {
    struct stat status {};
    if (fstat(descriptor, &status) != 0) {
        FailFromErrno();
        close(descriptor);
        return nullptr;
    }
    const FileIdentity identity{status.st_dev, status.st_ino};
    const DWORD needed = ShareBitsOf(access);
    const std::lock_guard lock(Shares().mutex);
    // A device has no share modes.
    if (S_ISDIR(status.st_mode) || (S_ISREG(status.st_mode) && !MayShare(identity, needed, share))) {
        SetLastError(S_ISDIR(status.st_mode) ? ERROR_ACCESS_DENIED : ERROR_SHARING_VIOLATION);
        close(descriptor);
        return nullptr;
    }
    return std::make_shared<SharedFile>(descriptor, needed, share, identity);
}

SharedFile::SharedFile(int descriptor, DWORD access, DWORD share, FileIdentity identity)
    : m_descriptor(descriptor), m_access(access), m_share(share), m_identity(identity) {
    const std::lock_guard lock(Shares().mutex);
    Shares().files.emplace(identity, this);
}

SharedFile::~SharedFile() {
    const std::lock_guard lock(Shares().mutex);
    const auto [first, last] = Shares().files.equal_range(m_identity);
    for (auto entry = first; entry != last; ++entry) {
        if (entry->second == this) {
            Shares().files.erase(entry);
            break;
        }
    }
    close(m_descriptor);
}

} // namespace native
