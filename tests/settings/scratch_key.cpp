#include "tests/settings/scratch_key.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <map>

namespace {

std::string Narrow(const std::wstring& text) {
    std::string narrow;
    std::transform(text.begin(), text.end(), std::back_inserter(narrow),
                   [](wchar_t c) { return static_cast<char>(c); });
    return narrow;
}

std::vector<std::wstring> SubkeyNames(HKEY key) {
    std::vector<std::wstring> names;
    wchar_t name[256] = {};
    for (DWORD i = 0, chars = 256;
         RegEnumKeyExW(key, i, name, &chars, nullptr, nullptr, nullptr, nullptr) == ERROR_SUCCESS; ++i, chars = 256) {
        names.emplace_back(name, chars);
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::map<std::wstring, RawValue> Values(HKEY key) {
    std::map<std::wstring, RawValue> values;
    wchar_t name[256] = {};
    for (DWORD i = 0;; ++i) {
        DWORD chars = 256;
        RawValue value;
        DWORD size = 0;
        if (RegEnumValueW(key, i, name, &chars, nullptr, &value.type, nullptr, &size) != ERROR_SUCCESS) {
            return values;
        }
        value.bytes.resize(size);
        RegQueryValueExW(key, name, nullptr, nullptr, value.bytes.data(), &size);
        values[name] = value;
    }
}

std::string Line(const std::wstring& name, const RawValue& value) {
    std::string line = Narrow(name) + " " + std::to_string(value.type);
    for (const BYTE byte : value.bytes) {
        char hex[4] = {};
        std::snprintf(hex, sizeof(hex), " %02x", byte);
        line += hex;
    }
    return line + "\n";
}

std::string DumpKey(HKEY key, const std::string& path) {
    std::string text = "[" + path + "]\n";
    for (const auto& [name, value] : Values(key)) {
        text += Line(name, value);
    }
    for (const std::wstring& name : SubkeyNames(key)) {
        HKEY child = nullptr;
        RegOpenKeyW(key, name.c_str(), &child);
        text += DumpKey(child, path + "\\" + Narrow(name));
        RegCloseKey(child);
    }
    return text;
}

} // namespace

ScratchKey::ScratchKey() {
    static int s_count = 0;
    m_path = L"Software\\QrxSettingsTest_" + std::to_wstring(GetTickCount64()) + L"_" + std::to_wstring(++s_count);
    EXPECT_EQ(ERROR_SUCCESS, RegCreateKeyW(HKEY_CURRENT_USER, m_path.c_str(), &m_key));
}

ScratchKey::~ScratchKey() {
    RegCloseKey(m_key);
    RegDeleteTreeW(HKEY_CURRENT_USER, m_path.c_str());
}

void ScratchKey::Write(const std::wstring& name, DWORD type, const std::vector<BYTE>& bytes) const {
    std::vector<BYTE> guarded = bytes;
    guarded.insert(guarded.end(), 2, 0xFF); // or the system would count a zero behind the bytes in
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetValueExW(m_key, name.c_str(), 0, type, guarded.data(), static_cast<DWORD>(bytes.size())));
}

std::optional<RawValue> ScratchKey::Read(const std::wstring& name, const std::wstring& subkey) const {
    HKEY key = nullptr;
    if (RegOpenKeyExW(m_key, subkey.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return std::nullopt;
    }
    const auto values = Values(key);
    RegCloseKey(key);
    const auto found = values.find(name);
    return found == values.end() ? std::nullopt : std::optional(found->second);
}

bool ScratchKey::HasSubkey(const std::wstring& subkey) const {
    HKEY key = nullptr;
    const bool found = RegOpenKeyW(m_key, subkey.c_str(), &key) == ERROR_SUCCESS;
    RegCloseKey(key);
    return found;
}

std::string ScratchKey::Dump() const {
    return DumpKey(m_key, "scratch");
}

std::vector<BYTE> BytesOf(const std::wstring& text) {
    const auto* const bytes = reinterpret_cast<const BYTE*>(text.data());
    return {bytes, bytes + text.size() * sizeof(wchar_t)};
}

namespace {

// The system's own questions about handles and keys, as its driver kit documents them.
using QueryKey = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
using QueryObject = LONG(WINAPI*)(HANDLE, int, void*, ULONG, ULONG*);
constexpr int kKeyNameInformation = 3;
constexpr int kObjectBasicInformation = 0;

template <typename Function>
Function SystemFunction(const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

// Empty when the handle is that of no key.
std::wstring KeyName(HANDLE handle) {
    static const auto s_query = SystemFunction<QueryKey>("NtQueryKey");
    struct {
        ULONG bytes;
        wchar_t name[1024];
    } information{};
    ULONG got = 0;
    const LONG known = s_query(handle, kKeyNameInformation, &information, sizeof(information), &got);
    return known == 0 ? std::wstring(information.name, information.bytes / sizeof(wchar_t)) : std::wstring();
}

ACCESS_MASK AccessOf(HANDLE handle) {
    static const auto s_query = SystemFunction<QueryObject>("NtQueryObject");
    struct {
        ULONG attributes;
        ACCESS_MASK access;
        ULONG others[12];
    } information{};
    ULONG got = 0;
    EXPECT_EQ(0, s_query(handle, kObjectBasicInformation, &information, sizeof(information), &got));
    return information.access;
}

} // namespace

std::vector<ACCESS_MASK> AccessToOpenKeys(const std::wstring& path) {
    constexpr std::uintptr_t kLastHandle = 0x10000;
    std::vector<ACCESS_MASK> access;
    for (std::uintptr_t value = 4; value < kLastHandle; value += 4) {
        const auto handle = reinterpret_cast<HANDLE>(value);
        const std::wstring name = KeyName(handle);
        const size_t tail = name.size() < path.size() ? std::wstring::npos : name.size() - path.size();
        if (tail != std::wstring::npos && lstrcmpiW(name.c_str() + tail, path.c_str()) == 0) {
            access.push_back(AccessOf(handle));
        }
    }
    return access;
}
