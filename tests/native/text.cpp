// Conversion between UTF-16 and the code pages, with the documented rules for sizes, terminators and defaults.
#include <algorithm>
#include <cstring>

#include "tests/native/code_page.h"

namespace {

using native::kWindows1252;
using Wide = std::basic_string<WCHAR>;
using WideView = std::basic_string_view<WCHAR>;

constexpr int kZeroTerminated = -1;

struct Bytes {
    std::string text;
    bool valid = true;        // no lone surrogate
    bool usedDefault = false; // some character had no byte
};

int Fail(DWORD error) {
    SetLastError(error);
    return 0;
}

// The whole text up to and including the terminator, when the caller gives no length.
template <typename Char>
std::basic_string_view<Char> View(const Char* text, int length) {
    if (length == kZeroTerminated) {
        return {text, std::char_traits<Char>::length(text) + 1};
    }
    return {text, static_cast<size_t>(length)};
}

// Copies what was converted, or only tells its size when the capacity is 0.
template <typename String, typename Char>
int Deliver(const String& text, Char* out, int capacity) {
    const auto size = static_cast<int>(text.size());
    if (capacity == 0) {
        return size;
    }
    std::copy_n(text.begin(), std::min(size, capacity), out);
    return size <= capacity ? size : Fail(ERROR_INSUFFICIENT_BUFFER);
}

Bytes ToUtf8(WideView text) {
    Bytes bytes;
    while (!text.empty()) {
        native::AppendUtf8(bytes.text, native::TakeUtf16(text, bytes.valid));
    }
    return bytes;
}

Bytes ToAnsi(WideView text, const char* defaultCharacter) {
    Bytes bytes;
    for (const WCHAR unit : text) {
        const auto byte = native::ToWindows1252(unit);
        bytes.usedDefault = bytes.usedDefault || !byte;
        bytes.text.push_back(byte.value_or(defaultCharacter != nullptr ? *defaultCharacter : '?'));
    }
    return bytes;
}

template <typename Source, typename Target>
bool BadArguments(const Source* source, int length, const Target* out, int capacity) {
    return source == nullptr || length == 0 || length < kZeroTerminated || capacity < 0 ||
           (out == nullptr && capacity != 0);
}

} // namespace

INT WINAPI WideCharToMultiByte(UINT codePage, DWORD flags, LPCWSTR source, INT length, LPSTR out, INT capacity,
                               LPCSTR defaultCharacter, LPBOOL usedDefault) {
    const UINT page = native::ResolveCodePage(codePage);
    const bool utf8 = page == CP_UTF8;
    if (BadArguments(source, length, out, capacity) || (!utf8 && page != kWindows1252) ||
        (utf8 && (defaultCharacter != nullptr || usedDefault != nullptr))) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~(utf8 ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS)) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    const Bytes bytes = utf8 ? ToUtf8(View(source, length)) : ToAnsi(View(source, length), defaultCharacter);
    if (!bytes.valid && (flags & WC_ERR_INVALID_CHARS) != 0) {
        return Fail(ERROR_NO_UNICODE_TRANSLATION);
    }
    if (usedDefault != nullptr) {
        *usedDefault = bytes.usedDefault ? TRUE : FALSE;
    }
    return Deliver(bytes.text, out, capacity);
}

INT WINAPI MultiByteToWideChar(UINT codePage, DWORD flags, LPCSTR source, INT length, LPWSTR out, INT capacity) {
    const UINT page = native::ResolveCodePage(codePage);
    if (BadArguments(source, length, out, capacity) || (page != CP_UTF8 && page != kWindows1252)) {
        return Fail(ERROR_INVALID_PARAMETER);
    }
    if ((flags & ~static_cast<DWORD>(MB_ERR_INVALID_CHARS | MB_PRECOMPOSED)) != 0) {
        return Fail(ERROR_INVALID_FLAGS);
    }
    std::string_view text = View(source, length);
    Wide wide;
    bool valid = true;
    while (!text.empty()) {
        if (page == CP_UTF8) {
            native::AppendUtf16(wide, native::TakeUtf8(text, valid));
        } else {
            wide.push_back(native::FromWindows1252(text.front()));
            text.remove_prefix(1);
        }
    }
    if (!valid && (flags & MB_ERR_INVALID_CHARS) != 0) {
        return Fail(ERROR_NO_UNICODE_TRANSLATION);
    }
    return Deliver(wide, out, capacity);
}

UINT WINAPI GetACP() {
    return kWindows1252;
}
