// Events, waits and threads answer as documented. Built for both lanes: what holds under Wine holds here.
#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "win/handle.h"
#include "win/platform.h"

namespace {

using win::KernelHandle;

constexpr DWORD kLong_ms = 10'000; // no test waits that long unless it fails
constexpr DWORD kShort_ms = 30;

KernelHandle ManualEvent(bool signaled) {
    return KernelHandle(CreateEventW(nullptr, TRUE, signaled ? TRUE : FALSE, nullptr));
}

KernelHandle AutoEvent(bool signaled) {
    return KernelHandle(CreateEventW(nullptr, FALSE, signaled ? TRUE : FALSE, nullptr));
}

DWORD Poll(const KernelHandle& handle) {
    return WaitForSingleObject(handle.Get(), 0);
}

DWORD WINAPI CallFunction(void* argument) {
    return (*static_cast<std::function<DWORD()>*>(argument))();
}

// The function outlives the thread in every test: they all join.
KernelHandle StartThread(std::function<DWORD()>& function, DWORD* id = nullptr) {
    return KernelHandle(CreateThread(nullptr, 0, CallFunction, &function, 0, id));
}

TEST(Event, ManualResetStaysSignaledUntilReset) {
    const KernelHandle event = ManualEvent(false);
    EXPECT_EQ(Poll(event), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_TRUE(SetEvent(event.Get()));
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);
    EXPECT_TRUE(ResetEvent(event.Get()));
    EXPECT_EQ(Poll(event), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST(Event, AutoResetReleasesOneWait) {
    const KernelHandle event = AutoEvent(true);
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(event), static_cast<DWORD>(WAIT_TIMEOUT));
    SetEvent(event.Get());
    SetEvent(event.Get());
    EXPECT_EQ(Poll(event), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(event), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST(Wait, AnyGivesTheLowestSignaledIndexAndTakesOnlyThatSignal) {
    const KernelHandle first = AutoEvent(false);
    const KernelHandle second = AutoEvent(true);
    const KernelHandle third = AutoEvent(true);
    const HANDLE handles[] = {first.Get(), second.Get(), third.Get()};
    EXPECT_EQ(WaitForMultipleObjects(3, handles, FALSE, 0), WAIT_OBJECT_0 + 1);
    EXPECT_EQ(Poll(second), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(Poll(third), WAIT_OBJECT_0);
}

TEST(Wait, AllTakesNoSignalBeforeEveryOneIsThere) {
    const KernelHandle first = AutoEvent(true);
    const KernelHandle second = AutoEvent(false);
    const HANDLE handles[] = {first.Get(), second.Get()};
    EXPECT_EQ(WaitForMultipleObjects(2, handles, TRUE, kShort_ms), static_cast<DWORD>(WAIT_TIMEOUT));
    SetEvent(second.Get());
    EXPECT_EQ(WaitForMultipleObjects(2, handles, TRUE, 0), WAIT_OBJECT_0);
    EXPECT_EQ(Poll(first), static_cast<DWORD>(WAIT_TIMEOUT));
    EXPECT_EQ(Poll(second), static_cast<DWORD>(WAIT_TIMEOUT));
}

TEST(Wait, TimeoutIsKept) {
    const KernelHandle event = ManualEvent(false);
    const ULONGLONG before = GetTickCount64();
    EXPECT_EQ(WaitForSingleObject(event.Get(), kShort_ms), static_cast<DWORD>(WAIT_TIMEOUT));
    constexpr ULONGLONG kTickResolution_ms = 16; // of the tick count on Windows
    EXPECT_GE(GetTickCount64() - before + kTickResolution_ms, kShort_ms);
}

TEST(Wait, NoHandlesAndTooManyAreRefused) {
    const KernelHandle event = ManualEvent(true);
    HANDLE handles[MAXIMUM_WAIT_OBJECTS + 1];
    std::fill(std::begin(handles), std::end(handles), event.Get());
    EXPECT_EQ(WaitForMultipleObjects(MAXIMUM_WAIT_OBJECTS + 1, handles, FALSE, 0), WAIT_FAILED);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_PARAMETER));
    EXPECT_EQ(WaitForMultipleObjects(0, handles, FALSE, 0), WAIT_FAILED);
}

TEST(Handle, ClosedHandleIsInvalid) {
    KernelHandle event = ManualEvent(true);
    const HANDLE raw = event.Get();
    EXPECT_TRUE(CloseHandle(raw));
    SetLastError(ERROR_SUCCESS);
    EXPECT_FALSE(SetEvent(raw));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(WaitForSingleObject(raw, 0), WAIT_FAILED);
    event.Reset(nullptr); // fails quietly: closed already
}

TEST(Thread, EndIsASignalAndCarriesTheExitCode) {
    constexpr DWORD kExitCode = 0xfffffff3;
    DWORD startedId = 0;
    DWORD ownId = 0;
    std::function<DWORD()> body = [&] {
        ownId = GetCurrentThreadId();
        return kExitCode;
    };
    const KernelHandle thread = StartThread(body, &startedId);
    ASSERT_EQ(WaitForSingleObject(thread.Get(), kLong_ms), WAIT_OBJECT_0);
    DWORD exitCode = 0;
    EXPECT_TRUE(GetExitCodeThread(thread.Get(), &exitCode));
    EXPECT_EQ(exitCode, kExitCode);
    EXPECT_EQ(startedId, ownId);
    EXPECT_NE(ownId, GetCurrentThreadId());
    EXPECT_EQ(Poll(thread), WAIT_OBJECT_0);
}

TEST(Thread, RunningThreadIsStillActive) {
    const KernelHandle stop = ManualEvent(false);
    std::function<DWORD()> body = [&] { return WaitForSingleObject(stop.Get(), INFINITE); };
    const KernelHandle thread = StartThread(body);
    EXPECT_EQ(WaitForSingleObject(thread.Get(), kShort_ms), static_cast<DWORD>(WAIT_TIMEOUT));
    DWORD exitCode = 0;
    EXPECT_TRUE(GetExitCodeThread(thread.Get(), &exitCode));
    EXPECT_EQ(exitCode, static_cast<DWORD>(STILL_ACTIVE));
    SetEvent(stop.Get());
    EXPECT_EQ(WaitForSingleObject(thread.Get(), kLong_ms), WAIT_OBJECT_0);
}

TEST(Thread, RunsOnAfterItsHandleIsClosed) {
    const KernelHandle go = ManualEvent(false);
    const KernelHandle done = ManualEvent(false);
    std::function<DWORD()> body = [&] {
        WaitForSingleObject(go.Get(), INFINITE);
        SetEvent(done.Get());
        return DWORD{0};
    };
    StartThread(body).Reset();
    SetEvent(go.Get());
    EXPECT_EQ(WaitForSingleObject(done.Get(), kLong_ms), WAIT_OBJECT_0);
    Sleep(kShort_ms); // its last steps; nothing can be waited for any more
}

TEST(Thread, SignalPassesBetweenThreadsInEitherDirection) {
    const KernelHandle ping = AutoEvent(false);
    const KernelHandle pong = AutoEvent(false);
    constexpr int kRounds = 200;
    std::function<DWORD()> body = [&] {
        for (int i = 0; i < kRounds; ++i) {
            if (WaitForSingleObject(ping.Get(), kLong_ms) != WAIT_OBJECT_0) {
                return DWORD{1};
            }
            SetEvent(pong.Get());
        }
        return DWORD{0};
    };
    const KernelHandle thread = StartThread(body);
    for (int i = 0; i < kRounds; ++i) {
        SetEvent(ping.Get());
        ASSERT_EQ(WaitForSingleObject(pong.Get(), kLong_ms), WAIT_OBJECT_0);
    }
    EXPECT_EQ(WaitForSingleObject(thread.Get(), kLong_ms), WAIT_OBJECT_0);
}

TEST(Thread, AutoResetEventReleasesExactlyOneOfTwoWaiters) {
    const KernelHandle event = AutoEvent(false);
    std::atomic<int> released{0};
    std::function<DWORD()> body = [&] {
        const DWORD result = WaitForSingleObject(event.Get(), kLong_ms);
        ++released;
        return result;
    };
    const KernelHandle first = StartThread(body);
    const KernelHandle second = StartThread(body);
    SetEvent(event.Get());
    const HANDLE threads[] = {first.Get(), second.Get()};
    ASSERT_LT(WaitForMultipleObjects(2, threads, FALSE, kLong_ms), WAIT_OBJECT_0 + 2);
    Sleep(kShort_ms);
    EXPECT_EQ(released, 1);
    SetEvent(event.Get());
    EXPECT_EQ(WaitForMultipleObjects(2, threads, TRUE, kLong_ms), WAIT_OBJECT_0);
    EXPECT_EQ(released, 2);
}

} // namespace
