// An open file behind a handle, and the share modes among the files that this process has open.
//
// Owner: the handle; the descriptor and the share mode end with the object.
// Threads: any; a file's own position is the descriptor's.
#pragma once

#include <sys/types.h>

#include <compare>
#include <memory>

#include "tests/native/kernel_object.h"

namespace native {

struct FileIdentity {
    dev_t device;
    ino_t node;
    auto operator<=>(const FileIdentity&) const = default;
};

class SharedFile : public KernelObject {
  public:
    // Takes the descriptor over. None, with the last error set, when another open file forbids it.
    static std::shared_ptr<SharedFile> Share(int descriptor, DWORD access, DWORD share);

    SharedFile(int descriptor, DWORD access, DWORD share, FileIdentity identity);
    ~SharedFile() override;

    [[nodiscard]] bool IsSignaled() const override { return true; }
    [[nodiscard]] int Descriptor() const { return m_descriptor; }

  private:
    const int m_descriptor;
    const DWORD m_access; // FILE_SHARE_… bits of what it does itself
    const DWORD m_share;  // FILE_SHARE_… bits of what it lets others do
    const FileIdentity m_identity;

    friend bool MayDelete(FileIdentity identity);
    friend bool MayShare(FileIdentity identity, DWORD access, DWORD share);
};

// Whether every open file of that identity lets others delete it.
bool MayDelete(FileIdentity identity);

} // namespace native
