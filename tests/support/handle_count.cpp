#include "tests/support/handle_count.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "win/platform.h"

namespace test_support {

namespace {

constexpr ULONG kSystemHandleInformation = 16;
constexpr LONG kBufferTooSmall = static_cast<LONG>(0xC0000004);
constexpr size_t kEntriesOffset = 8;

// An entry of the list of all handles, as 64-bit Windows lays it out.
struct HandleEntry {
    USHORT process;
    USHORT backTrace;
    BYTE type;
    BYTE attributes;
    USHORT handle;
    void* object;
    ULONG access;
};
static_assert(sizeof(HandleEntry) == 24);

using QuerySystemInformation = LONG(WINAPI*)(ULONG what, void* buffer, ULONG size, ULONG* needed);

// The list grows while it is asked for, so the buffer does too.
std::vector<BYTE> ListOfAllHandles() {
    const FARPROC address = GetProcAddress(GetModuleHandleW(OLESTR("ntdll.dll")), "NtQuerySystemInformation");
    const auto query = reinterpret_cast<QuerySystemInformation>(reinterpret_cast<void*>(address));
    std::vector<BYTE> buffer(65536);
    LONG status = kBufferTooSmall;
    while ((status = query(kSystemHandleInformation, buffer.data(), static_cast<ULONG>(buffer.size()), nullptr)) ==
           kBufferTooSmall) {
        buffer.resize(buffer.size() * 2);
    }
    EXPECT_EQ(0, status);
    return buffer;
}

} // namespace

size_t OpenHandleCount() {
    DWORD counted = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &counted) && counted > 0) {
        return counted;
    }
    const std::vector<BYTE> list = ListOfAllHandles();
    ULONG total = 0;
    std::memcpy(&total, list.data(), sizeof(total));
    std::vector<HandleEntry> entries(total);
    std::memcpy(entries.data(), list.data() + kEntriesOffset, total * sizeof(HandleEntry));
    const auto mine = static_cast<USHORT>(GetCurrentProcessId());
    const auto isMine = [mine](const HandleEntry& entry) { return entry.process == mine; };
    return static_cast<size_t>(std::count_if(entries.begin(), entries.end(), isMine));
}

} // namespace test_support
