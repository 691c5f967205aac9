// Runs a program and waits for it.
//
// Threads: any. Errors: a program that cannot be started, or does not end in time, is a test failure.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "tests/support/watchdog.h"
#include "win/handle.h"
#include "win/platform.h"

// The exit status of a command line.
inline DWORD RunCommand(std::wstring command) {
    STARTUPINFOW startup{};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process{};
    EXPECT_TRUE(
        CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process));
    const win::KernelHandle owned(process.hProcess);
    const win::KernelHandle thread(process.hThread);
    DWORD status = 99;
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(process.hProcess, test_support::kWatchdogMs));
    GetExitCodeProcess(process.hProcess, &status);
    return status;
}

// That of a program beside this one.
inline DWORD RunProgramBeside(const std::wstring& name, const std::wstring& arguments) {
    wchar_t buffer[MAX_PATH] = {};
    GetModuleFileNameW(nullptr, buffer, MAX_PATH);
    const std::wstring self = buffer;
    return RunCommand(L"\"" + self.substr(0, self.rfind(L'\\') + 1) + name + L"\" " + arguments);
}
