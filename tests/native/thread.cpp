// Threads and their identifiers.
#include <sys/syscall.h>
#include <unistd.h>

#include <system_error>
#include <thread>

#include "tests/native/kernel_object.h"
#include "tests/native/memory.h"
#include "tests/support/system_code.h"

namespace {

using native::Count;
using native::Kernel;
using native::KernelCall;
using native::KernelObject;

// A thread handle's object; signaled when the thread's procedure has returned.
class Thread : public KernelObject {
  public:
    ~Thread() override {
        // The running thread holds a reference: either it has ended, or this is its own last act.
        if (m_thread.joinable()) {
            if (m_thread.get_id() == std::this_thread::get_id()) {
                m_thread.detach();
            } else {
                m_thread.join();
            }
        }
    }

    [[nodiscard]] bool IsSignaled() const override { return m_ended; }
    [[nodiscard]] DWORD ExitCode() const { return m_exitCode; }
    [[nodiscard]] DWORD Id() const { return m_id; }

    // Returns once the thread runs, with its identifier known.
    static void Start(const std::shared_ptr<Thread>& self, LPTHREAD_START_ROUTINE procedure, void* argument) {
        std::unique_lock lock(Kernel::Instance().mutex);
        self->m_thread = std::thread([self, procedure, argument] { Run(self, procedure, argument); });
        Kernel::Instance().changed.wait(lock, [&] { return self->m_id != 0; });
    }

  private:
    static void Run(const std::shared_ptr<Thread>& self, LPTHREAD_START_ROUTINE procedure, void* argument) {
        Kernel& kernel = Kernel::Instance();
        {
            const std::lock_guard lock(kernel.mutex);
            self->m_id = GetCurrentThreadId();
        }
        kernel.changed.notify_all();
        const DWORD exitCode = procedure(argument);
        {
            const std::lock_guard lock(kernel.mutex);
            self->m_exitCode = exitCode;
            self->m_ended = true;
        }
        kernel.changed.notify_all();
    }

    std::thread m_thread;
    DWORD m_id = 0;
    DWORD m_exitCode = STILL_ACTIVE;
    bool m_ended = false;
};

} // namespace

HANDLE WINAPI CreateThread(LPSECURITY_ATTRIBUTES, SIZE_T, LPTHREAD_START_ROUTINE procedure, void* argument, DWORD flags,
                           DWORD* id) {
    Count(KernelCall::Create);
    constexpr DWORD kKnownFlags = STACK_SIZE_PARAM_IS_A_RESERVATION;
    if (procedure == nullptr || (flags & ~kKnownFlags) != 0) { // suspended threads are not part of the lane
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    if (!native::HasMemoryForObject()) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    const test_support::SystemCode notTheProduct;
    const auto thread = std::make_shared<Thread>();
    try {
        Thread::Start(thread, procedure, argument);
    } catch (const std::system_error&) {
        SetLastError(ERROR_NOT_ENOUGH_MEMORY);
        return nullptr;
    }
    if (id != nullptr) {
        *id = thread->Id();
    }
    return Kernel::Instance().Add(thread);
}

BOOL WINAPI GetExitCodeThread(HANDLE handle, DWORD* exitCode) {
    const auto thread = Kernel::Instance().FindAs<Thread>(handle);
    if (!thread) {
        return FALSE;
    }
    const std::lock_guard lock(Kernel::Instance().mutex);
    *exitCode = thread->ExitCode();
    return TRUE;
}

DWORD WINAPI GetThreadId(HANDLE handle) {
    const auto thread = Kernel::Instance().FindAs<Thread>(handle);
    return thread ? thread->Id() : 0;
}

DWORD WINAPI GetCurrentThreadId() {
    thread_local const auto t_id = static_cast<DWORD>(syscall(SYS_gettid));
    return t_id;
}

DWORD WINAPI GetCurrentProcessId() {
    return static_cast<DWORD>(getpid());
}

HANDLE WINAPI GetCurrentThread() {
    constexpr LONG_PTR kCurrentThread = -2; // the pseudo handle
    return reinterpret_cast<HANDLE>(kCurrentThread);
}

BOOL WINAPI SetThreadPriority(HANDLE, int) {
    return TRUE; // the lane's threads are all alike
}
