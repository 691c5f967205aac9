// The program itself, interrupted as the system does it: by a thread in it that calls the console's control routine.
//
// Where it is then does not depend on the clock. Each output pipe takes a single byte; so a program of whose line the
// first byte has been read stands inside that line until somebody reads on.
#include <gmock/gmock.h>

#include <array>
#include <optional>
#include <string>

#include "mkvmux/muxer_loader.h"
#include "tests/mkvmux/temporary_file.h"
#include "win/handle.h"
#include "win/platform.h"

namespace {

using test_mkvmux::TemporaryFile;
using testing::EndsWith;
using testing::HasSubstr;

constexpr DWORD kWatchdogMs = 300'000;
constexpr DWORD kFailed = 2;
constexpr DWORD kDoneWithWarnings = 1;

// The reading end of a pipe of one byte, and the end that a program inherits.
struct NarrowPipe {
    NarrowPipe() {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        EXPECT_TRUE(CreatePipe(read.Put(), write.Put(), &inherited, 1));
        SetHandleInformation(read.Get(), HANDLE_FLAG_INHERIT, 0);
    }

    // Up to and including this text; everything to the end without one.
    std::string ReadUntil(const std::optional<std::string>& text = {}) const {
        std::string all;
        char byte = 0;
        DWORD count = 0;
        while ((!text || !all.ends_with(*text)) && ReadFile(read.Get(), &byte, 1, &count, nullptr) != FALSE &&
               count == 1) {
            all += byte;
        }
        return all;
    }

    win::KernelHandle read;
    win::KernelHandle write;
};

class Program {
  public:
    explicit Program(const std::wstring& arguments) {
        const std::wstring path = (mkvmux::ProgramDirectory() / L"mkvmux.exe").native();
        std::wstring command = L"\"" + path + L"\" --no-register " + arguments;
        STARTUPINFOW startup{};
        startup.cb = sizeof(startup);
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdOutput = m_output.write.Get();
        startup.hStdError = m_errorFile.Get();
        PROCESS_INFORMATION process{};
        EXPECT_TRUE(
            CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &process));
        m_process.Reset(process.hProcess);
        win::KernelHandle(process.hThread).Reset();
        m_output.write.Reset(); // or the pipe would not end with the program
        m_errorFile.Reset();
    }
    ~Program() { TerminateProcess(m_process.Get(), 99); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    [[nodiscard]] const NarrowPipe& Output() const { return m_output; }

    // The thread that the system starts for an interruption.
    [[nodiscard]] win::KernelHandle Interrupt(DWORD kind) const {
        // NOLINTNEXTLINE(performance-no-int-to-ptr): the routine takes its number this way
        return StartThread("kernelbase.dll", "CtrlRoutine", reinterpret_cast<void*>(static_cast<ULONG_PTR>(kind)));
    }

    // Until the handler has done its work. That of a closed console does not return: there it has, when so many threads
    // that were started after it have run to their ends.
    void InterruptAndWaitForTheHandler(DWORD kind) const {
        constexpr int kLaterThreads = 300;
        const win::KernelHandle handler = Interrupt(kind);
        for (int i = 0; kind == CTRL_CLOSE_EVENT && i < kLaterThreads; ++i) {
            WaitForEnd(StartThread("kernel32.dll", "SwitchToThread", nullptr));
        }
        if (kind != CTRL_CLOSE_EVENT) {
            WaitForEnd(handler);
        }
    }

    [[nodiscard]] DWORD Status() const {
        WaitForEnd(m_process);
        DWORD status = 99;
        GetExitCodeProcess(m_process.Get(), &status);
        return status;
    }

    [[nodiscard]] std::string Errors() const { return m_errors.Content(); }

  private:
    // In the program; the system's libraries are at the same place in every process.
    [[nodiscard]] win::KernelHandle StartThread(const char* library, const char* function, void* argument) const {
        const auto routine = reinterpret_cast<LPTHREAD_START_ROUTINE>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(library), function)));
        EXPECT_NE(routine, nullptr) << function;
        win::KernelHandle thread(CreateRemoteThread(m_process.Get(), nullptr, 0, routine, argument, 0, nullptr));
        EXPECT_TRUE(thread) << GetLastError();
        return thread;
    }

    static void WaitForEnd(const win::KernelHandle& object) {
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(object.Get(), kWatchdogMs));
    }

    static HANDLE CreateInherited(const std::wstring& path) {
        SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
        return CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                           FILE_ATTRIBUTE_NORMAL, nullptr);
    }

    TemporaryFile m_errors{L".txt"};
    NarrowPipe m_output;
    win::FileHandle m_errorFile{CreateInherited(m_errors.Path())};
    win::KernelHandle m_process;
};

class InterruptionTest : public testing::TestWithParam<DWORD> {
  protected:
    InterruptionTest() { m_input.SetContent(test_mkvmux::PcmWaveFile(600)); }

    [[nodiscard]] std::wstring RunArguments() const {
        return L"-o \"" + m_output.Path() + L"\" \"" + m_input.Path() + L"\"";
    }

    static void ExpectEndsAtOnce(const Program& program, DWORD kind) {
        const win::KernelHandle thread = program.Interrupt(kind); // goes with the process
        EXPECT_EQ(kFailed, program.Status());
        EXPECT_EQ(program.Errors(), "mkvmux: error: interrupted; no output was written\n");
    }

    TemporaryFile m_input{L".wav"};
    TemporaryFile m_output{L".mkv"};
};

TEST_P(InterruptionTest, WhileTheOptionsAreReadItIsOneLineAndStatus2) {
    const Program program(L"--list-languages");
    EXPECT_THAT(program.Output().ReadUntil(" "), EndsWith(" "));
    ExpectEndsAtOnce(program, GetParam());
}

TEST_P(InterruptionTest, BeforeTheOutputIsOpenItIsOneLineAndStatus2AndNoFile) {
    const Program program(RunArguments());
    EXPECT_THAT(program.Output().ReadUntil("track 0:"), EndsWith("track 0:"));
    ExpectEndsAtOnce(program, GetParam());
    EXPECT_FALSE(m_output.Exists());
}

TEST_P(InterruptionTest, DuringTheRunItFinishesTheFile) {
    const Program program(RunArguments());
    EXPECT_THAT(program.Output().ReadUntil("Progress:"), EndsWith("Progress:"));
    program.InterruptAndWaitForTheHandler(GetParam());
    EXPECT_THAT(program.Output().ReadUntil(), HasSubstr("bytes written"));
    EXPECT_EQ(kDoneWithWarnings, program.Status());
    EXPECT_EQ(program.Errors(), "mkvmux: warning: interrupted; the file ends here\n");
    EXPECT_TRUE(m_output.Exists());
}

std::string NameOfKind(const testing::TestParamInfo<DWORD>& kind) {
    constexpr std::array kNames{"CtrlC", "CtrlBreak", "ClosedConsole"};
    return kNames.at(kind.param);
}

INSTANTIATE_TEST_SUITE_P(Kinds, InterruptionTest,
                         testing::Values<DWORD>(CTRL_C_EVENT, CTRL_BREAK_EVENT, CTRL_CLOSE_EVENT), NameOfKind);

class SecondInterruptionTest : public InterruptionTest {};

TEST_P(SecondInterruptionTest, EndsTheProgramAtOnceAndSaysThatTheOutputIsUnfinished) {
    const Program program(RunArguments());
    EXPECT_THAT(program.Output().ReadUntil("Progress:"), EndsWith("Progress:"));
    program.InterruptAndWaitForTheHandler(CTRL_C_EVENT);
    const win::KernelHandle thread = program.Interrupt(GetParam());
    EXPECT_EQ(kFailed, program.Status());
    EXPECT_EQ(program.Errors(), "mkvmux: error: interrupted twice; the output is unfinished\n");
}

INSTANTIATE_TEST_SUITE_P(Kinds, SecondInterruptionTest, testing::Values<DWORD>(CTRL_C_EVENT, CTRL_BREAK_EVENT),
                         NameOfKind);

} // namespace
