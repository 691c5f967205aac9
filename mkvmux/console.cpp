#include "mkvmux/console.h"

#include "mkvmux/text.h"
#include "sources/base/printable.h"

namespace mkvmux {

namespace {

constexpr int kDefaultColumns = 80;
constexpr size_t kMaxLineChars = size_t{32} * 1024; // a path has no more

bool IsConsole(HANDLE handle) {
    DWORD mode = 0;
    return GetConsoleMode(handle, &mode) != FALSE;
}

void WriteBytes(HANDLE handle, std::string_view text) {
    while (!text.empty()) {
        DWORD written = 0;
        if (WriteFile(handle, text.data(), static_cast<DWORD>(text.size()), &written, nullptr) == FALSE ||
            written == 0) {
            return;
        }
        text.remove_prefix(written);
    }
}

void Write(DWORD which, std::string_view text) {
    const HANDLE handle = GetStdHandle(which);
    if (!IsConsole(handle)) {
        WriteBytes(handle, text);
        return;
    }
    const std::wstring wide = WideFromUtf8(text);
    DWORD written = 0;
    WriteConsoleW(handle, wide.data(), static_cast<DWORD>(wide.size()), &written, nullptr);
}

// One line that commands no terminal, whatever an input, a configuration or a file of options holds.
void WriteRemark(const char* kind, std::string_view text) {
    Write(STD_ERROR_HANDLE, kind + source::Printable(text, kMaxLineChars) + "\n");
}

} // namespace

void Console::Inform(std::string_view text) const {
    if (!m_quiet) {
        Print(text);
    }
}

void Console::Print(std::string_view text) {
    Write(STD_OUTPUT_HANDLE, text);
}

void Console::Warn(std::string_view text) {
    m_hasWarned = true;
    WriteRemark("mkvmux: warning: ", text);
}

void Console::Fail(std::string_view text) {
    WriteRemark("mkvmux: error: ", text);
}

bool Console::IsTerminal() {
    return IsConsole(GetStdHandle(STD_OUTPUT_HANDLE));
}

int Console::TerminalColumns() {
    CONSOLE_SCREEN_BUFFER_INFO info{};
    if (GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &info) == FALSE || info.dwSize.X <= 0) {
        return kDefaultColumns;
    }
    return info.srWindow.Right - info.srWindow.Left + 1;
}

} // namespace mkvmux
