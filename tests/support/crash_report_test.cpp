// What a test program says when it crashes: this one, in a process of its own.
#include <gmock/gmock.h>

#include <string>

#include "win/handle.h"
#include "win/platform.h"

namespace {

using testing::HasSubstr;

constexpr DWORD kWatchdogMs = 600'000;
constexpr wchar_t kCrashVariable[] = L"QRX_CRASH_ON_PURPOSE";

// Crashes in a process that is told to, and in no other.
TEST(CrashReportTest, CrashesOnlyWhenItIsTold) {
    if (GetEnvironmentVariableW(kCrashVariable, nullptr, 0) != 0) {
        volatile int* volatile nowhere = nullptr;
        *nowhere = 1;
    }
    EXPECT_EQ(GetEnvironmentVariableW(kCrashVariable, nullptr, 0), 0u);
}

std::string ReadToTheEnd(HANDLE pipe) {
    std::string text;
    std::string piece(4096, '\0');
    DWORD count = 0;
    while (ReadFile(pipe, piece.data(), static_cast<DWORD>(piece.size()), &count, nullptr) != FALSE && count > 0) {
        text.append(piece, 0, count);
    }
    return text;
}

TEST(CrashReportTest, ACrashNamesTheFaultThePlaceAndTheCallers) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    win::KernelHandle read;
    win::KernelHandle write;
    ASSERT_TRUE(CreatePipe(read.Put(), write.Put(), &inherited, 0));
    SetHandleInformation(read.Get(), HANDLE_FLAG_INHERIT, 0);
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = write.Get();
    startup.hStdError = write.Get();
    std::wstring command = L"test_support_self.exe --gtest_filter=CrashReportTest.CrashesOnlyWhenItIsTold";
    std::wstring self(MAX_PATH, L'\0');
    self.resize(GetModuleFileNameW(nullptr, self.data(), MAX_PATH));
    PROCESS_INFORMATION process{};
    SetEnvironmentVariableW(kCrashVariable, L"1");
    const BOOL started =
        CreateProcessW(self.c_str(), command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process);
    SetEnvironmentVariableW(kCrashVariable, nullptr);
    ASSERT_TRUE(started);
    const win::KernelHandle owned(process.hProcess);
    const win::KernelHandle thread(process.hThread);
    write.Reset();
    const std::string text = ReadToTheEnd(read.Get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.hProcess, kWatchdogMs));
    EXPECT_THAT(text, HasSubstr("[ RUN      ] CrashReportTest.CrashesOnlyWhenItIsTold"));
    EXPECT_THAT(text, HasSubstr("crash: exception 0xc0000005, writing address 0x0"));
    EXPECT_THAT(text, testing::ContainsRegex("crash: in .*test_support_self.exe.0x"));
    EXPECT_THAT(text, testing::ContainsRegex("crash: called from .*test_support_self.exe.0x"));
    DWORD status = 0;
    GetExitCodeProcess(process.hProcess, &status);
    EXPECT_NE(status, 0u);
}

} // namespace
