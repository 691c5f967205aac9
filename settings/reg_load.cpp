#include "settings/reg_load.h"

#include <algorithm>
#include <vector>

#include "settings/failure.h"

namespace {

// No sensible setting is longer; the registry itself would hold far more.
constexpr DWORD kMaxStringBytes = 64 * 1024 * 1024;

} // namespace

bool reg_load_t::open_file(const std::wstring& /*section*/, const std::wstring& /*file*/) {
    return false;
}

bool reg_load_t::open_key(const std::wstring& section, HKEY root) {
    return Guarded([&] {
        close();
        if (!m_key.Open(root == nullptr ? m_root : root, RegistryPath(section))) {
            return false;
        }
        m_section = section;
        return true;
    });
}

void reg_load_t::close() {
    m_key.Close();
    m_section.clear();
}

std::uint32_t reg_load_t::child_count() {
    DWORD count = 0;
    if (!m_key || RegQueryInfoKeyW(m_key.Get(), nullptr, nullptr, nullptr, &count, nullptr, nullptr, nullptr, nullptr,
                                   nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
        return 0;
    }
    return count;
}

std::wstring reg_load_t::child_name(std::uint32_t index) {
    return Guarded([&] {
        wchar_t name[kMaxKeyNameChars + 1] = {};
        DWORD chars = kMaxKeyNameChars + 1;
        const bool found = m_key && RegEnumKeyExW(m_key.Get(), index, name, &chars, nullptr, nullptr, nullptr,
                                                  nullptr) == ERROR_SUCCESS;
        return found ? std::wstring(name, chars) : std::wstring();
    });
}

std::uint32_t reg_load_t::value_size(const std::wstring& key) {
    DWORD type = REG_NONE;
    DWORD size = 0;
    return QueryValue(key, type, size) ? size : kAbsentValue;
}

std::int32_t reg_load_t::load_int32(const std::wstring& key, std::int32_t fallback) {
    DWORD type = REG_NONE;
    std::int32_t value = 0;
    DWORD size = sizeof(value);
    const bool found = m_key && IsRegistryName(key) &&
                       RegQueryValueExW(m_key.Get(), key.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(&value),
                                        &size) == ERROR_SUCCESS;
    return found && type == REG_DWORD && size == sizeof(value) ? value : fallback;
}

double reg_load_t::load_double(const std::wstring& key, double fallback) {
    return LoadEightBytes(key, fallback);
}

std::int64_t reg_load_t::load_int64(const std::wstring& key, std::int64_t fallback) {
    return LoadEightBytes(key, fallback);
}

// The stored type is not looked at: bytes are bytes.
bool reg_load_t::load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) {
    const DWORD capacity = size;
    size = 0;
    DWORD type = REG_NONE;
    DWORD stored = 0;
    if (!QueryValue(key, type, stored)) {
        return false;
    }
    size = stored;
    if (stored > capacity || (stored > 0 && buffer == nullptr)) {
        return false;
    }
    DWORD got = capacity;
    const bool read = stored == 0 || RegQueryValueExW(m_key.Get(), key.c_str(), nullptr, nullptr,
                                                      static_cast<BYTE*>(buffer), &got) == ERROR_SUCCESS;
    size = stored == 0 ? 0 : got;
    return read;
}

std::wstring reg_load_t::load_string(const std::wstring& key, const std::wstring& fallback) {
    return Guarded([&] {
        DWORD type = REG_NONE;
        DWORD size = 0;
        if (!QueryValue(key, type, size) || type != REG_SZ || size == 0 || size > kMaxStringBytes) {
            return fallback;
        }
        // As many characters as there are bytes: room for the terminator that need not be stored.
        std::vector<wchar_t> text(size);
        if (RegQueryValueExW(m_key.Get(), key.c_str(), nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &size) !=
                ERROR_SUCCESS ||
            type != REG_SZ) {
            return fallback;
        }
        // Half a character at the end is none.
        const auto wholeEnd = text.begin() + size / sizeof(wchar_t);
        return std::wstring(text.begin(), std::find(text.begin(), wholeEnd, L'\0'));
    });
}

bool reg_load_t::QueryValue(const std::wstring& name, DWORD& type, DWORD& size) const {
    return m_key && IsRegistryName(name) &&
           RegQueryValueExW(m_key.Get(), name.c_str(), nullptr, &type, nullptr, &size) == ERROR_SUCCESS;
}

template <typename Number>
Number reg_load_t::LoadEightBytes(const std::wstring& name, Number fallback) {
    static_assert(sizeof(Number) == 8);
    Number value = 0;
    std::uint32_t size = sizeof(value);
    return load_binary(name, &value, size) && size == sizeof(value) ? value : fallback;
}
