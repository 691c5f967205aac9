// Tick counts, which a test can set, the performance counter, and Sleep.
#include <atomic>
#include <chrono>
#include <thread>

#include "tests/native/kernel_object.h"
#include "tests/native/native_hooks.h"

#include <mmsystem.h>

namespace {

using std::chrono::steady_clock;

std::atomic<bool> g_ticksFixed{false};
std::atomic<std::uint64_t> g_fixedTicks_ms{0};

std::uint64_t Ticks_ms() {
    if (g_ticksFixed) {
        return g_fixedTicks_ms;
    }
    const auto now = steady_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

} // namespace

namespace native {

ScopedTickCount::ScopedTickCount(std::uint64_t milliseconds) {
    g_fixedTicks_ms = milliseconds;
    g_ticksFixed = true;
}

ScopedTickCount::~ScopedTickCount() {
    g_ticksFixed = false;
}

void ScopedTickCount::Set(std::uint64_t milliseconds) {
    g_fixedTicks_ms = milliseconds;
}

void ScopedTickCount::Advance(std::uint64_t milliseconds) {
    g_fixedTicks_ms += milliseconds;
}

} // namespace native

DWORD WINAPI GetTickCount() {
    return static_cast<DWORD>(Ticks_ms()); // wraps after 49.7 days
}

ULONGLONG WINAPI GetTickCount64() {
    return Ticks_ms();
}

DWORD WINAPI timeGetTime() {
    return static_cast<DWORD>(Ticks_ms());
}

BOOL WINAPI QueryPerformanceCounter(LARGE_INTEGER* counter) {
    counter->QuadPart = std::chrono::nanoseconds(steady_clock::now().time_since_epoch()).count();
    return TRUE;
}

BOOL WINAPI QueryPerformanceFrequency(LARGE_INTEGER* perSecond) {
    constexpr LONGLONG kNanosecondsPerSecond = 1'000'000'000;
    perSecond->QuadPart = kNanosecondsPerSecond;
    return TRUE;
}

void WINAPI Sleep(DWORD milliseconds) {
    native::Count(native::KernelCall::Sleep);
    if (milliseconds == 0) {
        std::this_thread::yield();
        return;
    }
    while (milliseconds == INFINITE) {
        std::this_thread::sleep_for(std::chrono::hours(1));
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}
