// Critical sections: recursive locks. Misuse that is undefined on Windows ends the program here. Uncontended, one costs
// about what it costs there: the benchmarks count it.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <mutex>

#include "tests/native/kernel_object.h"
#include "tests/native/native_hooks.h"
#include "tests/support/system_code.h"

namespace {

std::atomic<size_t> g_liveSections{0};

struct Section {
    std::mutex mutex;
    std::atomic<DWORD> owner{0}; // thread identifier; written by who holds the mutex
    int depth = 0;               // guarded by the mutex
};

[[noreturn]] void Misuse(const char* what) {
    std::fprintf(stderr, "critical section %s\n", what);
    std::abort();
}

// The lock itself lives on the heap, so that a section which is never deleted shows up as a leak.
Section& Of(CRITICAL_SECTION* section) {
    if (section->DebugInfo == nullptr) {
        Misuse("used before InitializeCriticalSection or after DeleteCriticalSection");
    }
    return *reinterpret_cast<Section*>(section->DebugInfo);
}

bool IsInside(const Section& lock) {
    return lock.owner.load(std::memory_order_relaxed) == GetCurrentThreadId();
}

void Entered(CRITICAL_SECTION* section, Section& lock) {
    if (lock.depth++ == 0) {
        lock.owner.store(GetCurrentThreadId(), std::memory_order_relaxed);
        section->OwningThread = ULongToHandle(GetCurrentThreadId());
    }
    section->RecursionCount = lock.depth;
}

} // namespace

namespace native {

size_t LiveCriticalSectionCount() {
    return g_liveSections;
}

} // namespace native

void WINAPI InitializeCriticalSection(CRITICAL_SECTION* section) {
    const test_support::SystemCode notTheProduct; // it never fails
    *section = {};
    // Freed by DeleteCriticalSection.
    section->DebugInfo = reinterpret_cast<PRTL_CRITICAL_SECTION_DEBUG>(std::make_unique<Section>().release());
    ++g_liveSections;
}

BOOL WINAPI InitializeCriticalSectionAndSpinCount(CRITICAL_SECTION* section, DWORD) {
    InitializeCriticalSection(section);
    return TRUE;
}

BOOL WINAPI InitializeCriticalSectionEx(CRITICAL_SECTION* section, DWORD, DWORD) {
    InitializeCriticalSection(section);
    return TRUE;
}

void WINAPI DeleteCriticalSection(CRITICAL_SECTION* section) {
    const std::unique_ptr<Section> lock(&Of(section));
    if (lock->depth != 0) {
        Misuse("deleted while a thread is inside");
    }
    *section = {};
    --g_liveSections;
}

void WINAPI EnterCriticalSection(CRITICAL_SECTION* section) {
    Section& lock = Of(section);
    if (!IsInside(lock) && !lock.mutex.try_lock()) {
        native::Count(native::KernelCall::Contended);
        lock.mutex.lock();
    }
    Entered(section, lock);
}

BOOL WINAPI TryEnterCriticalSection(CRITICAL_SECTION* section) {
    Section& lock = Of(section);
    if (!IsInside(lock) && !lock.mutex.try_lock()) {
        return FALSE;
    }
    Entered(section, lock);
    return TRUE;
}

void WINAPI LeaveCriticalSection(CRITICAL_SECTION* section) {
    Section& lock = Of(section);
    if (!IsInside(lock)) {
        Misuse(lock.owner == 0 ? "left more often than entered" : "left by a thread that is not inside");
    }
    --lock.depth;
    section->RecursionCount = lock.depth;
    if (lock.depth == 0) {
        lock.owner.store(0, std::memory_order_relaxed);
        section->OwningThread = nullptr;
        lock.mutex.unlock();
    }
}
