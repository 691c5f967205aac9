// Condition variables over critical sections. The variable itself holds a count of wake-ups; every waiter of the
// process sleeps on one condition and looks whether its own variable's count has moved.
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "tests/native/kernel_object.h"

namespace {

using native::Count;
using native::KernelCall;

struct Sleepers {
    std::mutex mutex; // guards the counts in all variables
    std::condition_variable woken;
};

Sleepers& AllSleepers() {
    static Sleepers sleepers;
    return sleepers;
}

std::uintptr_t WakeUps(const CONDITION_VARIABLE* variable) {
    return reinterpret_cast<std::uintptr_t>(variable->Ptr);
}

} // namespace

void WINAPI InitializeConditionVariable(CONDITION_VARIABLE* variable) {
    variable->Ptr = nullptr;
}

BOOL WINAPI SleepConditionVariableCS(CONDITION_VARIABLE* variable, CRITICAL_SECTION* section, DWORD milliseconds) {
    Count(KernelCall::Wait);
    Sleepers& sleepers = AllSleepers();
    bool woken = true;
    {
        std::unique_lock lock(sleepers.mutex);
        const std::uintptr_t before = WakeUps(variable);
        // A wake-up from here on moves the count, which nobody does before this thread sleeps: they need the mutex.
        LeaveCriticalSection(section);
        const auto moved = [&] { return WakeUps(variable) != before; };
        if (milliseconds == INFINITE) {
            sleepers.woken.wait(lock, moved);
        } else {
            const auto deadline = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
            woken = sleepers.woken.wait_until(lock, deadline, moved);
        }
    }
    EnterCriticalSection(section);
    if (!woken) {
        SetLastError(ERROR_TIMEOUT);
    }
    return woken ? TRUE : FALSE;
}

void WINAPI WakeAllConditionVariable(CONDITION_VARIABLE* variable) {
    Count(KernelCall::Set);
    {
        const std::lock_guard lock(AllSleepers().mutex);
        variable->Ptr = reinterpret_cast<void*>(WakeUps(variable) + 1);
    }
    AllSleepers().woken.notify_all();
}

// Waking more than one is allowed: every waiter expects to be woken for nothing.
void WINAPI WakeConditionVariable(CONDITION_VARIABLE* variable) {
    WakeAllConditionVariable(variable);
}
