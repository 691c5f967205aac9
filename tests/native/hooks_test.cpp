// What a test may ask of the Linux lane, or make it answer.
#include <gtest/gtest.h>

#include <cstring>
#include <thread>

#include "tests/native/native_hooks.h"
#include "win/bstr.h"
#include "win/critical_section.h"
#include "win/handle.h"
#include "win/wide_string.h"

namespace {

using native::CountedKernelCalls;
using native::KernelCalls;

constexpr GUID kTestClass{0x01020304, 0x0506, 0x0708, {0x09, 0x0a, 0x0b, 0x0c, 0x0d, 0x0e, 0x0f, 0x11}};

TEST(Hooks, OpenHandlesAreCountedUntilTheyAreClosed) {
    const size_t before = native::OpenHandleCount();
    win::KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    win::FileHandle file(CreateFileW(OLESTR("/dev/null"), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(native::OpenHandleCount(), before + 2);
    event.Reset();
    file.Reset();
    EXPECT_EQ(native::OpenHandleCount(), before);
}

TEST(Hooks, ClosingTwiceIsCounted) {
    const size_t before = native::BadHandleCount();
    const HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_TRUE(CloseHandle(event));
    EXPECT_EQ(native::BadHandleCount(), before);
    EXPECT_FALSE(CloseHandle(event));
    EXPECT_EQ(native::BadHandleCount(), before + 1);
}

TEST(Hooks, CriticalSectionsAreCountedUntilDeleted) {
    const size_t before = native::LiveCriticalSectionCount();
    {
        const win::CriticalSection section;
        EXPECT_EQ(native::LiveCriticalSectionCount(), before + 1);
    }
    EXPECT_EQ(native::LiveCriticalSectionCount(), before);
}

TEST(Hooks, ComInitialisationsBalance) {
    const int before = native::ComInitializations();
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    EXPECT_EQ(native::ComInitializations(), before + 1);
    CoUninitialize();
    EXPECT_EQ(native::ComInitializations(), before);
}

TEST(Hooks, KernelCallsAreCountedByKind) {
    const KernelCalls before = CountedKernelCalls();
    const win::KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    SetEvent(event.Get());
    ResetEvent(event.Get());
    ResetEvent(event.Get());
    WaitForSingleObject(event.Get(), 0);
    Sleep(0);
    const KernelCalls calls = CountedKernelCalls() - before;
    EXPECT_EQ(calls.creates, 1U);
    EXPECT_EQ(calls.sets, 1U);
    EXPECT_EQ(calls.resets, 2U);
    EXPECT_EQ(calls.waits, 1U);
    EXPECT_EQ(calls.sleeps, 1U);
    EXPECT_EQ(calls.contended, 0U);
    EXPECT_EQ(calls.Total(), 6U);
}

TEST(Hooks, OnlyAContendedCriticalSectionIsAKernelCall) {
    win::CriticalSection section;
    const KernelCalls before = CountedKernelCalls();
    section.lock();
    section.lock();
    EXPECT_EQ((CountedKernelCalls() - before).Total(), 0U);
    std::thread other([&] {
        section.lock();
        section.unlock();
    });
    while ((CountedKernelCalls() - before).contended == 0) {
        std::this_thread::yield();
    }
    section.unlock();
    section.unlock();
    other.join();
    EXPECT_EQ((CountedKernelCalls() - before).Total(), 1U);
}

TEST(Hooks, TickCountStandsWhereItIsPutAndWrapsAt32Bits) {
    {
        native::ScopedTickCount ticks(0xffff'fffe);
        EXPECT_EQ(GetTickCount(), 0xffff'fffeU);
        ticks.Advance(3);
        EXPECT_EQ(GetTickCount(), 1U);
        EXPECT_EQ(GetTickCount64(), 0x1'0000'0001U);
        ticks.Set(7);
        EXPECT_EQ(GetTickCount(), 7U);
    }
    const DWORD before = GetTickCount();
    Sleep(5);
    EXPECT_GE(GetTickCount() - before, 5U);
}

TEST(Hooks, AllocationFailsWhenAskedTo) {
    {
        const native::ScopedAllocationFailure failure(2);
        void* const first = CoTaskMemAlloc(1);
        EXPECT_NE(first, nullptr);
        CoTaskMemFree(first);
        EXPECT_EQ(SysAllocString(OLESTR("a")), nullptr);
        CoTaskMemFree(CoTaskMemAlloc(1));
    }
    const native::ScopedAllocationFailure failure(1, true);
    EXPECT_EQ(CoTaskMemAlloc(1), nullptr);
    EXPECT_EQ(CoTaskMemAlloc(1), nullptr);
}

TEST(Hooks, ClassOfATestIsFoundWhileItLives) {
    void* object = nullptr;
    {
        IUnknown* const outer = nullptr;
        const native::ScopedClass offered(kTestClass, [&](IUnknown* given, REFIID iid, void** out) {
            EXPECT_EQ(given, outer);
            EXPECT_TRUE(IsEqualIID(iid, IID_IUnknown));
            *out = &object;
            return S_OK;
        });
        EXPECT_EQ(CoCreateInstance(kTestClass, outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &object), S_OK);
        EXPECT_EQ(object, &object);
    }
    EXPECT_EQ(CoCreateInstance(kTestClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object), REGDB_E_CLASSNOTREG);
}

TEST(Hooks, StringTableGivesWhatATestPutThere) {
    WCHAR buffer[4] = {'x'};
    EXPECT_EQ(LoadStringW(nullptr, 7, buffer, 4), 0);
    const native::ScopedString text(7, OLESTR("abcdef"));
    EXPECT_EQ(LoadStringW(nullptr, 7, buffer, 4), 3);
    EXPECT_EQ(WideString(buffer), OLESTR("abc"));
    const WCHAR* own = nullptr;
    EXPECT_EQ(LoadStringW(nullptr, 7, reinterpret_cast<LPWSTR>(&own), 0), 6);
    EXPECT_EQ(WideString(own, 6), OLESTR("abcdef"));
}

TEST(Hooks, ResourceGivesWhatATestPutThere) {
    constexpr WORD kVersion = 16;
    EXPECT_EQ(FindResourceW(nullptr, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(kVersion)), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_RESOURCE_NAME_NOT_FOUND));
    const native::ScopedResource resource(kVersion, 1, "bytes", 5);
    const HRSRC found = FindResourceW(nullptr, MAKEINTRESOURCEW(1), MAKEINTRESOURCEW(kVersion));
    ASSERT_NE(found, nullptr);
    EXPECT_EQ(SizeofResource(nullptr, found), 5U);
    EXPECT_EQ(std::memcmp(LockResource(LoadResource(nullptr, found)), "bytes", 5), 0);
}

TEST(Hooks, ModuleIsNamedAfterTheProgram) {
    WCHAR buffer[MAX_PATH] = {};
    const DWORD length = GetModuleFileNameW(nullptr, buffer, MAX_PATH);
    const WideStringView name(buffer, length);
    EXPECT_EQ(name.substr(name.rfind('/') + 1), OLESTR("test_native"));
    EXPECT_EQ(GetModuleFileNameW(nullptr, buffer, 5), 5U);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(buffer[4], 0);
}

TEST(Hooks, PathsKnowDriveZAndNoOther) {
    EXPECT_NE(GetFileAttributesW(OLESTR("Z:\\dev\\null")), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetFileAttributesW(OLESTR("C:\\dev\\null")), INVALID_FILE_ATTRIBUTES);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PATH_NOT_FOUND));
    EXPECT_FALSE(CreateDirectoryW(OLESTR(""), nullptr));
    EXPECT_FALSE(CreateDirectoryW(OLESTR("C:"), nullptr));
    EXPECT_FALSE(CreateDirectoryW(OLESTR("/tmp/a|b"), nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_NAME));
}

TEST(Hooks, FullDiskIsAWriteError) {
    const win::FileHandle full(CreateFileW(OLESTR("/dev/full"), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    DWORD written = 1;
    EXPECT_FALSE(WriteFile(full.Get(), "x", 1, &written, nullptr));
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_DISK_FULL));
    EXPECT_EQ(written, 0U);
}

} // namespace
