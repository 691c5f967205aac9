#include "tests/ui/handle_census.h"

#include <gtest/gtest.h>

#include <winternl.h>

#include <algorithm>

#include "win/platform.h"

namespace ui_test {

namespace {

// An entry of the table of GDI objects, as 64-bit Windows lays it out.
struct GdiEntry {
    UINT64 object;
    USHORT process;
    USHORT count;
    USHORT unique;
    USHORT type; // 0 for a free entry
    UINT64 user;
};
static_assert(sizeof(GdiEntry) == 24);
constexpr size_t kGdiEntries = 0x4000;   // the first ones; handed out from the front
constexpr size_t kGdiTableOffset = 0xF8; // in the 64-bit process environment block

size_t CountGdiObjects() {
    if (const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS); counted > 0) {
        return counted;
    }
    const auto* const block = reinterpret_cast<const BYTE*>(NtCurrentTeb()->ProcessEnvironmentBlock);
    const auto* const entries = *reinterpret_cast<const GdiEntry* const*>(block + kGdiTableOffset);
    EXPECT_NE(nullptr, entries);
    return static_cast<size_t>(
        std::count_if(entries, entries + kGdiEntries, [](const GdiEntry& entry) { return entry.type != 0; }));
}

// Whether the handle with that number, of whatever generation, is a user object of this process.
bool IsOwnUserObject(USHORT number) {
    // NOLINTNEXTLINE(performance-no-int-to-ptr): a handle is a number
    void* const handle = reinterpret_cast<void*>(static_cast<ULONG_PTR>(number));
    DWORD process = 0;
    GetWindowThreadProcessId(static_cast<HWND>(handle), &process);
    return process == GetCurrentProcessId() || IsMenu(static_cast<HMENU>(handle));
}

size_t CountUserObjects() {
    if (const DWORD counted = GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS); counted > 0) {
        return counted;
    }
    constexpr UINT kFirst = 0x20;
    constexpr UINT kLast = 0xFFEF;
    size_t count = 0;
    for (UINT number = kFirst; number <= kLast; number += 2) {
        count += IsOwnUserObject(static_cast<USHORT>(number)) ? 1 : 0;
    }
    return count;
}

} // namespace

HandleCensus HandleCensus::Take() {
    return {CountGdiObjects(), CountUserObjects()};
}

} // namespace ui_test
