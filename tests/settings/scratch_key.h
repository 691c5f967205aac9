// ScratchKey: a registry key of one test's own below HKEY_CURRENT_USER, deleted with all below it.
//
// Owner: itself. Threads: one. Errors: a key that cannot be made or read is a test failure.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "win/platform.h"

struct RawValue {
    DWORD type = 0;
    std::vector<BYTE> bytes;
    bool operator==(const RawValue&) const = default;
};

class ScratchKey {
  public:
    ScratchKey();
    ~ScratchKey();
    ScratchKey(const ScratchKey&) = delete;
    ScratchKey& operator=(const ScratchKey&) = delete;

    // Below HKEY_CURRENT_USER, without a separator in front.
    [[nodiscard]] const std::wstring& Path() const { return m_path; }
    [[nodiscard]] std::wstring Section(const std::wstring& name) const { return m_path + L"\\" + name; }
    [[nodiscard]] HKEY Get() const { return m_key; }

    void Write(const std::wstring& name, DWORD type, const std::vector<BYTE>& bytes) const;
    // The stored bytes of a value of this key or of a key below it.
    [[nodiscard]] std::optional<RawValue> Read(const std::wstring& name, const std::wstring& subkey = {}) const;
    [[nodiscard]] bool HasSubkey(const std::wstring& subkey) const;
    // Every key and value below as text, in the order of their names: "[key]" and "name type hex".
    [[nodiscard]] std::string Dump() const;

  private:
    std::wstring m_path;
    HKEY m_key = nullptr;
};

// What this process may do with the keys that it has open under the path below HKEY_CURRENT_USER.
[[nodiscard]] std::vector<ACCESS_MASK> AccessToOpenKeys(const std::wstring& path);

[[nodiscard]] std::vector<BYTE> BytesOf(const std::wstring& text);
