#include "mkvmux/text.h"

#include <array>
#include <cstdio>

#include <errors.h>

#include "sources/base/printable.h"
#include "win/system_library.h"

namespace mkvmux {

namespace {

constexpr size_t kMaxMessageChars = 512;
static_assert(kMaxMessageChars >= MAX_ERROR_TEXT_LEN);

// The system's messages end in a full stop and a line break, and may hold breaks inside.
std::wstring OnOneLine(std::wstring text) {
    for (WCHAR& character : text) {
        if (character == L'\r' || character == L'\n') {
            character = L' ';
        }
    }
    const size_t last = text.find_last_not_of(L" .");
    text.resize(last == std::wstring::npos ? 0 : last + 1);
    return text;
}

// DirectShow keeps its messages to itself; the system does not know them. Its library is not imported: a program's
// imports are looked for beside the program first. Once loaded it stays.
DWORD DirectShowMessage(HRESULT hr, WCHAR* buffer, DWORD chars) {
    static const auto s_getText =
        win::EntryPoint<decltype(&AMGetErrorTextW)>(win::LoadSystemLibrary(L"quartz.dll"), "AMGetErrorTextW");
    return s_getText == nullptr ? 0 : s_getText(hr, buffer, chars);
}

std::wstring SystemMessage(HRESULT hr) {
    std::array<WCHAR, kMaxMessageChars> buffer{};
    const auto chars = static_cast<DWORD>(buffer.size());
    DWORD length = HRESULT_FACILITY(hr) == FACILITY_ITF ? DirectShowMessage(hr, buffer.data(), chars) : 0;
    if (length == 0) {
        length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                static_cast<DWORD>(hr), 0, buffer.data(), chars, nullptr);
    }
    return OnOneLine(std::wstring(buffer.data(), length));
}

} // namespace

std::string Shown(std::wstring_view text) {
    return source::Printable(Utf8FromWide(text));
}

std::string DescribeResult(HRESULT hr) {
    std::array<char, sizeof("0x00000000")> code{};
    std::snprintf(code.data(), code.size(), "0x%08lX", static_cast<unsigned long>(hr));
    const std::wstring message = SystemMessage(hr);
    return message.empty() ? std::string("error ") + code.data() : Utf8FromWide(message) + " (" + code.data() + ")";
}

HRESULT LastResult() {
    const DWORD error = GetLastError();
    return error == ERROR_SUCCESS ? E_FAIL : HRESULT_FROM_WIN32(error);
}

} // namespace mkvmux
