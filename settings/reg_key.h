// RegKey: a registry key that was opened or created below another, or none.
//
// Owner: closes its handle, unless the system handed back the very key it was opened below.
// Threads: one at a time. Errors: false; no key is open then.
#pragma once

#include <string>

#include "win/platform.h"

inline constexpr DWORD kMaxKeyNameChars = 255; // the registry's own limit for one part of a path

class RegKey {
  public:
    RegKey() = default;
    ~RegKey() { Close(); }
    RegKey(const RegKey&) = delete;
    RegKey& operator=(const RegKey&) = delete;

    // For reading. What was open is closed first.
    bool Open(HKEY root, const std::wstring& path);
    // For reading and writing; creates what is missing. What was open is closed first.
    bool Create(HKEY root, const std::wstring& path);
    void Close();

    [[nodiscard]] HKEY Get() const { return m_key; }
    explicit operator bool() const { return m_key != nullptr; }

  private:
    HKEY m_key = nullptr;
    bool m_owned = false;
};

// The path as the registry takes it: without a separator in front.
[[nodiscard]] std::wstring RegistryPath(const std::wstring& section);

// The registry would read a name with a zero inside as a shorter one.
[[nodiscard]] bool IsRegistryName(const std::wstring& name);

// Deletes a key and all below it, deepest first. False as soon as one cannot be deleted.
[[nodiscard]] bool DeleteKeyTree(HKEY parent, const std::wstring& name);
