// The lane's kernel: a table of handles, one lock, and one condition that tells of every change of a signal.
//
// Owner: the table holds one reference an open handle; waits and running threads hold further ones.
// Threads: any; IsSignaled and OnWaitSatisfied run under the kernel's lock.
#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>

#include "win/platform.h"

namespace native {

class KernelObject {
  public:
    KernelObject() = default;
    virtual ~KernelObject() = default;
    KernelObject(const KernelObject&) = delete;
    KernelObject& operator=(const KernelObject&) = delete;

    [[nodiscard]] virtual bool IsSignaled() const = 0;
    // A wait ends because of this object.
    virtual void OnWaitSatisfied() {}
};

class Kernel {
  public:
    static Kernel& Instance();

    HANDLE Add(std::shared_ptr<KernelObject> object);
    // Null for a handle that is not open; the caller's last error says so then.
    std::shared_ptr<KernelObject> Find(HANDLE handle);
    bool Remove(HANDLE handle);
    size_t OpenCount();

    // The object behind the handle if it is of that class; otherwise null, and the last error says so.
    template <typename Object>
    std::shared_ptr<Object> FindAs(HANDLE handle) {
        auto object = std::dynamic_pointer_cast<Object>(Find(handle));
        if (!object) {
            SetLastError(ERROR_INVALID_HANDLE);
        }
        return object;
    }

    std::mutex mutex;                // guards the table and every object's signal
    std::condition_variable changed; // some object became signaled

  private:
    std::map<HANDLE, std::shared_ptr<KernelObject>> m_handles;
    std::uintptr_t m_next = 4; // handles are multiples of four and are never given twice
};

// A call that would have entered the kernel.
enum class KernelCall { Create, Set, Reset, Wait, Contended, Sleep };
void Count(KernelCall call);

} // namespace native
