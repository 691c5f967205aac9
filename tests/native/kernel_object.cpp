#include "tests/native/kernel_object.h"

#include <array>
#include <atomic>
#include <utility>

#include "tests/native/native_hooks.h"

namespace native {

namespace {

constexpr std::uintptr_t kHandleStep = 4;
constexpr size_t kCallKinds = 6;

std::atomic<size_t> g_badHandles{0};
std::array<std::atomic<std::uint64_t>, kCallKinds> g_calls{};

std::uint64_t Counted(KernelCall call) {
    return g_calls[static_cast<size_t>(call)].load(std::memory_order_relaxed);
}

} // namespace

Kernel& Kernel::Instance() {
    // Never destroyed: globals of the program close their handles after the last of main.
    static Kernel* const kernel = std::make_unique<Kernel>().release();
    return *kernel;
}

HANDLE Kernel::Add(std::shared_ptr<KernelObject> object) {
    const std::lock_guard lock(mutex);
    const auto handle = reinterpret_cast<HANDLE>(std::exchange(m_next, m_next + kHandleStep));
    m_handles.emplace(handle, std::move(object));
    return handle;
}

std::shared_ptr<KernelObject> Kernel::Find(HANDLE handle) {
    const std::lock_guard lock(mutex);
    const auto found = m_handles.find(handle);
    if (found == m_handles.end()) {
        ++g_badHandles;
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    return found->second;
}

bool Kernel::Remove(HANDLE handle) {
    const auto object = Find(handle);
    const std::lock_guard lock(mutex);
    // The object itself goes after the lock, when `object` does: it may be a thread that has to be joined.
    return object != nullptr && m_handles.erase(handle) == 1;
}

size_t Kernel::OpenCount() {
    const std::lock_guard lock(mutex);
    return m_handles.size();
}

void Count(KernelCall call) {
    g_calls[static_cast<size_t>(call)].fetch_add(1, std::memory_order_relaxed);
}

size_t OpenHandleCount() {
    return Kernel::Instance().OpenCount();
}

size_t BadHandleCount() {
    return g_badHandles;
}

KernelCalls CountedKernelCalls() {
    return {.creates = Counted(KernelCall::Create),
            .sets = Counted(KernelCall::Set),
            .resets = Counted(KernelCall::Reset),
            .waits = Counted(KernelCall::Wait),
            .contended = Counted(KernelCall::Contended),
            .sleeps = Counted(KernelCall::Sleep)};
}

KernelCalls operator-(const KernelCalls& later, const KernelCalls& earlier) {
    return {.creates = later.creates - earlier.creates,
            .sets = later.sets - earlier.sets,
            .resets = later.resets - earlier.resets,
            .waits = later.waits - earlier.waits,
            .contended = later.contended - earlier.contended,
            .sleeps = later.sleeps - earlier.sleeps};
}

} // namespace native

BOOL WINAPI CloseHandle(HANDLE handle) {
    return native::Kernel::Instance().Remove(handle) ? TRUE : FALSE;
}
