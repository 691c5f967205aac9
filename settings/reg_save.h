// reg_save_t: writes settings to a tree of registry keys; one key a section, one registry value a value.
//
// Units: sizes in bytes. Owner: its key. Threads: one at a time. Errors: false; nothing is changed then.
// 64-bit integers and doubles are REG_BINARY and strings lack their terminator: settings in the field are stored so.
#pragma once

#include "settings/base_save.h"
#include "settings/reg_key.h"

class reg_save_t final : public base_save_t {
  public:
    // root: stays its holder's; used when an open names no root of its own. What is deleted is below the root of the
    // last open.
    explicit reg_save_t(HKEY root) : m_root(root), m_openRoot(root) {}

    bool open_file(const std::wstring& section, const std::wstring& file) override;
    bool open_key(const std::wstring& section, HKEY root) override;
    void close() override;
    bool delete_section(const std::wstring& section) override;
    bool save_int32(const std::wstring& key, std::int32_t value) override;
    bool save_double(const std::wstring& key, double value) override;
    bool save_int64(const std::wstring& key, std::int64_t value) override;
    bool save_binary(const std::wstring& key, const void* data, std::uint32_t size) override;
    bool save_string(const std::wstring& key, const std::wstring& value) override;

  private:
    bool SetValue(const std::wstring& name, DWORD type, const void* data, size_t size);

    RegKey m_key;
    const HKEY m_root;
    HKEY m_openRoot;
    std::wstring m_section;
};
