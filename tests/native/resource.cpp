// The module's name and resources: none but those that a test supplies.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "tests/native/native_hooks.h"

namespace {

using Key = std::pair<WORD, WORD>; // type, name
using Bytes = std::vector<std::byte>;

struct ResourceTable {
    std::mutex mutex;
    std::map<UINT, std::vector<WCHAR>> strings; // without a terminator, as in a string table
    std::map<Key, Bytes> blobs;
};

ResourceTable& Resources() {
    static ResourceTable table;
    return table;
}

// Nothing but an address that differs from null: the one module of the program.
const int g_module = 0;

} // namespace

namespace native {

void SetStringResource(UINT id, std::basic_string_view<WCHAR> text) {
    const std::lock_guard lock(Resources().mutex);
    Resources().strings.insert_or_assign(id, std::vector<WCHAR>(text.begin(), text.end()));
}

ScopedString::ScopedString(UINT id, std::basic_string_view<WCHAR> text) : m_id(id) {
    SetStringResource(id, text);
}

ScopedString::~ScopedString() {
    const std::lock_guard lock(Resources().mutex);
    Resources().strings.erase(m_id);
}

ScopedResource::ScopedResource(WORD type, WORD name, const void* bytes, size_t size) : m_type(type), m_name(name) {
    const auto* const first = static_cast<const std::byte*>(bytes);
    const std::lock_guard lock(Resources().mutex);
    Resources().blobs.insert_or_assign({type, name}, Bytes(first, first + size));
}

ScopedResource::~ScopedResource() {
    const std::lock_guard lock(Resources().mutex);
    Resources().blobs.erase({m_type, m_name});
}

} // namespace native

INT WINAPI LoadStringW(HINSTANCE, UINT id, LPWSTR buffer, INT capacity) {
    const std::lock_guard lock(Resources().mutex);
    const auto found = Resources().strings.find(id);
    if (buffer == nullptr || capacity < 0 || found == Resources().strings.end()) {
        return 0;
    }
    const std::vector<WCHAR>& text = found->second;
    if (capacity == 0) { // asks for the table's own text, which is not zero-terminated
        const WCHAR* const own = text.data();
        std::memcpy(buffer, &own, sizeof(own));
        return static_cast<INT>(text.size());
    }
    const auto length = std::min(text.size(), static_cast<size_t>(capacity) - 1);
    std::copy_n(text.begin(), length, buffer);
    buffer[length] = 0;
    return static_cast<INT>(length);
}

HRSRC WINAPI FindResourceW(HMODULE, LPCWSTR name, LPCWSTR type) {
    const std::lock_guard lock(Resources().mutex);
    if (IS_INTRESOURCE(name) && IS_INTRESOURCE(type)) {
        const auto id = [](LPCWSTR value) { return static_cast<WORD>(reinterpret_cast<ULONG_PTR>(value)); };
        const auto found = Resources().blobs.find({id(type), id(name)});
        if (found != Resources().blobs.end()) {
            return reinterpret_cast<HRSRC>(&found->second);
        }
    }
    SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
    return nullptr;
}

HGLOBAL WINAPI LoadResource(HMODULE, HRSRC resource) {
    return reinterpret_cast<HGLOBAL>(resource);
}

LPVOID WINAPI LockResource(HGLOBAL resource) {
    return resource == nullptr ? nullptr : reinterpret_cast<Bytes*>(resource)->data();
}

DWORD WINAPI SizeofResource(HMODULE, HRSRC resource) {
    return resource == nullptr ? 0 : static_cast<DWORD>(reinterpret_cast<Bytes*>(resource)->size());
}

HMODULE WINAPI GetModuleHandleW(LPCWSTR name) {
    if (name != nullptr) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<HMODULE>(const_cast<int*>(&g_module));
}

BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* module) {
    *module = GetModuleHandleW((flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS) != 0 ? nullptr : name);
    return *module != nullptr ? TRUE : FALSE;
}

DWORD WINAPI GetModuleFileNameW(HMODULE, LPWSTR buffer, DWORD capacity) {
    std::array<char, PATH_MAX> path{};
    const ssize_t bytes = readlink("/proc/self/exe", path.data(), path.size());
    if (bytes <= 0 || capacity == 0) {
        SetLastError(bytes <= 0 ? ERROR_FILE_NOT_FOUND : ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    // In full, even where the caller's buffer is smaller: then it gets what fits, with a terminator.
    const int length = MultiByteToWideChar(CP_UTF8, 0, path.data(), static_cast<int>(bytes), nullptr, 0);
    std::vector<WCHAR> wide(static_cast<size_t>(length));
    MultiByteToWideChar(CP_UTF8, 0, path.data(), static_cast<int>(bytes), wide.data(), length);
    if (static_cast<DWORD>(length) >= capacity) {
        std::copy_n(wide.begin(), capacity - 1, buffer);
        buffer[capacity - 1] = 0;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return capacity;
    }
    *std::copy(wide.begin(), wide.end(), buffer) = 0;
    return static_cast<DWORD>(length);
}
