#include "settings/reg_save.h"

#include <limits>

#include "settings/failure.h"

bool reg_save_t::open_file(const std::wstring& /*section*/, const std::wstring& /*file*/) {
    return false;
}

bool reg_save_t::open_key(const std::wstring& section, HKEY root) {
    return Guarded([&] {
        close();
        m_openRoot = root == nullptr ? m_root : root;
        if (!m_key.Create(m_openRoot, RegistryPath(section))) {
            return false;
        }
        m_section = section;
        return true;
    });
}

void reg_save_t::close() {
    m_key.Close();
    m_section.clear();
}

bool reg_save_t::delete_section(const std::wstring& section) {
    return Guarded([&] {
        const std::wstring path = RegistryPath(section);
        // Without a name it would be the root and all that others keep there.
        return path.find_first_not_of(L'\\') != std::wstring::npos && DeleteKeyTree(m_openRoot, path);
    });
}

bool reg_save_t::save_int32(const std::wstring& key, std::int32_t value) {
    return SetValue(key, REG_DWORD, &value, sizeof(value));
}

bool reg_save_t::save_double(const std::wstring& key, double value) {
    return SetValue(key, REG_BINARY, &value, sizeof(value));
}

bool reg_save_t::save_int64(const std::wstring& key, std::int64_t value) {
    return SetValue(key, REG_BINARY, &value, sizeof(value));
}

bool reg_save_t::save_binary(const std::wstring& key, const void* data, std::uint32_t size) {
    return (data != nullptr || size == 0) && SetValue(key, REG_BINARY, data, size);
}

bool reg_save_t::save_string(const std::wstring& key, const std::wstring& value) {
    return Guarded([&] {
        RequirePossibleLength(value);
        if (value.find(L'\0') != std::wstring::npos) {
            return false; // it would end there when it is loaded
        }
        // The system counts a zero right behind the text in, so there must be none.
        const std::wstring guarded = value + L'.';
        return SetValue(key, REG_SZ, guarded.data(), value.size() * sizeof(wchar_t));
    });
}

bool reg_save_t::SetValue(const std::wstring& name, DWORD type, const void* data, size_t size) {
    return m_key && IsRegistryName(name) && size <= std::numeric_limits<DWORD>::max() &&
           RegSetValueExW(m_key.Get(), name.c_str(), 0, type, static_cast<const BYTE*>(data),
                          static_cast<DWORD>(size)) == ERROR_SUCCESS;
}
