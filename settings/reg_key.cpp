#include "settings/reg_key.h"

#include <utility>

namespace {

constexpr wchar_t kSeparator = L'\\';
// KEY_WRITE and the right to query values.
constexpr REGSAM kSaverAccess = 0x20007;

// A longer name could not be enumerated, nor deleted, later.
bool HasOnlyShortNames(const std::wstring& path) {
    size_t chars = 0;
    for (const wchar_t c : path) {
        chars = c == kSeparator ? 0 : chars + 1;
        if (chars > kMaxKeyNameChars) {
            return false;
        }
    }
    return true;
}

} // namespace

bool RegKey::Open(HKEY root, const std::wstring& path) {
    Close();
    if (!IsRegistryName(path) || RegOpenKeyW(root, path.c_str(), &m_key) != ERROR_SUCCESS) {
        m_key = nullptr;
        return false;
    }
    // An empty path gives the root itself, which stays its holder's.
    m_owned = m_key != root;
    return true;
}

bool RegKey::Create(HKEY root, const std::wstring& path) {
    Close();
    if (!IsRegistryName(path) || !HasOnlyShortNames(path) ||
        RegCreateKeyExW(root, path.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, kSaverAccess, nullptr, &m_key,
                        nullptr) != ERROR_SUCCESS) {
        m_key = nullptr;
        return false;
    }
    m_owned = true;
    return true;
}

void RegKey::Close() {
    const HKEY key = std::exchange(m_key, nullptr);
    if (std::exchange(m_owned, false)) {
        RegCloseKey(key);
    }
}

std::wstring RegistryPath(const std::wstring& section) {
    return section.starts_with(kSeparator) ? section.substr(1) : section;
}

bool IsRegistryName(const std::wstring& name) {
    return name.find(L'\0') == std::wstring::npos;
}

bool DeleteKeyTree(HKEY parent, const std::wstring& name) {
    RegKey key;
    if (!key.Open(parent, name)) {
        return false;
    }
    // Always the first: the others move up when it is gone.
    for (;;) {
        wchar_t child[kMaxKeyNameChars + 1] = {};
        DWORD chars = kMaxKeyNameChars + 1;
        const LONG found = RegEnumKeyExW(key.Get(), 0, child, &chars, nullptr, nullptr, nullptr, nullptr);
        if (found == ERROR_NO_MORE_ITEMS) {
            break;
        }
        if (found != ERROR_SUCCESS || !DeleteKeyTree(key.Get(), child)) {
            return false;
        }
    }
    key.Close();
    return RegDeleteKeyW(parent, name.c_str()) == ERROR_SUCCESS;
}
