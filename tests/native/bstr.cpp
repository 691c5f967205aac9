// BSTRs: the byte length in the four bytes before the text, a zero character after it.
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <string_view>

#include "tests/native/memory.h"
#include "win/platform.h"

namespace {

constexpr size_t kHeaderBytes = 8; // keeps the text aligned as Windows does; the length is in the last four
constexpr size_t kLengthBytes = sizeof(UINT);
constexpr UINT kLargestBytes = std::numeric_limits<UINT>::max() - kHeaderBytes - sizeof(WCHAR);

char* BlockOf(BSTR text) {
    return reinterpret_cast<char*>(text) - kHeaderBytes;
}

// Without a source the text stays uninitialised, for the caller to fill.
BSTR Allocate(const void* source, UINT bytes) {
    if (bytes > kLargestBytes || native::NextAllocationFails()) {
        return nullptr;
    }
    auto* const block = static_cast<char*>(std::malloc(kHeaderBytes + bytes + sizeof(WCHAR)));
    if (block == nullptr) {
        return nullptr;
    }
    char* const text = block + kHeaderBytes;
    std::memcpy(text - kLengthBytes, &bytes, kLengthBytes);
    if (source != nullptr && bytes != 0) {
        std::memcpy(text, source, bytes);
    }
    std::memset(text + bytes, 0, sizeof(WCHAR));
    return reinterpret_cast<BSTR>(text);
}

} // namespace

BSTR WINAPI SysAllocStringByteLen(LPCSTR source, UINT bytes) {
    return Allocate(source, bytes);
}

BSTR WINAPI SysAllocStringLen(const OLECHAR* source, UINT length) {
    return length > kLargestBytes / sizeof(WCHAR) ? nullptr
                                                  : Allocate(source, static_cast<UINT>(length * sizeof(WCHAR)));
}

BSTR WINAPI SysAllocString(const OLECHAR* source) {
    if (source == nullptr) {
        return nullptr;
    }
    return SysAllocStringLen(source, static_cast<UINT>(std::basic_string_view<OLECHAR>(source).size()));
}

INT WINAPI SysReAllocStringLen(BSTR* text, const OLECHAR* source, UINT length) {
    const BSTR copy = SysAllocStringLen(source, length);
    if (copy == nullptr) {
        return FALSE;
    }
    SysFreeString(*text); // only now: the source may lie inside it
    *text = copy;
    return TRUE;
}

INT WINAPI SysReAllocString(BSTR* text, const OLECHAR* source) {
    const BSTR copy = SysAllocString(source);
    if (copy == nullptr && source != nullptr) {
        return FALSE;
    }
    SysFreeString(*text);
    *text = copy;
    return TRUE;
}

void WINAPI SysFreeString(BSTR text) {
    if (text != nullptr) {
        std::free(BlockOf(text));
    }
}

UINT WINAPI SysStringByteLen(BSTR text) {
    if (text == nullptr) {
        return 0;
    }
    UINT bytes = 0;
    std::memcpy(&bytes, reinterpret_cast<const char*>(text) - kLengthBytes, kLengthBytes);
    return bytes;
}

UINT WINAPI SysStringLen(BSTR text) {
    return SysStringByteLen(text) / static_cast<UINT>(sizeof(WCHAR));
}
