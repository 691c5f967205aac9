// Part of every test program under Windows: one that crashes says what happened, where, and who had called. (Which test
// ran then, is the last line of GoogleTest's.) addr2line makes source lines of the addresses.
//
// Threads: whichever crashes. What it uses needs neither the heap nor much of the stack.
#include <array>
#include <cstdio>

#include "win/platform.h"

namespace {

constexpr ULONG kMaxCallers = 40;

// "test_mkv.exe+0x12345 (0x140012345)": the second as the linker placed it, which is what addr2line takes.
void PrintPlace(const char* what, const void* address) {
    HMODULE module = nullptr;
    std::array<char, MAX_PATH> path{"?"};
    const auto place = reinterpret_cast<ULONG_PTR>(address);
    constexpr DWORD kByAddress = GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT;
    if (GetModuleHandleExA(kByAddress, static_cast<const char*>(address), &module) != FALSE) {
        GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size()));
    }
    std::fprintf(stderr, "crash: %s %s+0x%llx (0x%llx)\n", what, path.data(),
                 static_cast<unsigned long long>(place - reinterpret_cast<ULONG_PTR>(module)),
                 static_cast<unsigned long long>(place));
}

void PrintCallers(CONTEXT context) {
    for (ULONG i = 0; i < kMaxCallers && context.Rip != 0; ++i) {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): a register holds it
        PrintPlace(i == 0 ? "in" : "called from", reinterpret_cast<const void*>(context.Rip));
        DWORD64 base = 0;
        RUNTIME_FUNCTION* const function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        if (function == nullptr) {
            return;
        }
        void* data = nullptr;
        DWORD64 frame = 0;
        RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &data, &frame, nullptr);
    }
}

LONG WINAPI ReportCrash(EXCEPTION_POINTERS* exception) {
    const EXCEPTION_RECORD& record = *exception->ExceptionRecord;
    std::fprintf(stderr, "\ncrash: exception 0x%08lx", record.ExceptionCode);
    if (record.ExceptionCode == EXCEPTION_ACCESS_VIOLATION && record.NumberParameters >= 2) {
        std::fprintf(stderr, ", %s address 0x%llx", record.ExceptionInformation[0] == 0 ? "reading" : "writing",
                     static_cast<unsigned long long>(record.ExceptionInformation[1]));
    }
    std::fprintf(stderr, "\n");
    PrintCallers(*exception->ContextRecord);
    std::fflush(stderr);
    return EXCEPTION_EXECUTE_HANDLER; // the process ends with the exception's code
}

[[maybe_unused]] const LPTOP_LEVEL_EXCEPTION_FILTER g_before = SetUnhandledExceptionFilter(ReportCrash);

} // namespace
