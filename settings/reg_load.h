// reg_load_t: reads settings from a tree of registry keys; one key a section, one registry value a value.
//
// Units: sizes in bytes, as stored. Owner: its key. Threads: one at a time.
// Errors: the default, false or kAbsentValue, also for a value of another type.
#pragma once

#include "settings/base_load.h"
#include "settings/reg_key.h"

class reg_load_t final : public base_load_t {
  public:
    // root: stays its holder's; used when an open names no root of its own.
    explicit reg_load_t(HKEY root) : m_root(root) {}

    bool open_file(const std::wstring& section, const std::wstring& file) override;
    bool open_key(const std::wstring& section, HKEY root) override;
    void close() override;
    std::uint32_t child_count() override;
    std::wstring child_name(std::uint32_t index) override;
    std::uint32_t value_size(const std::wstring& key) override;
    std::int32_t load_int32(const std::wstring& key, std::int32_t fallback) override;
    double load_double(const std::wstring& key, double fallback) override;
    std::int64_t load_int64(const std::wstring& key, std::int64_t fallback) override;
    bool load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) override;
    std::wstring load_string(const std::wstring& key, const std::wstring& fallback) override;

  private:
    // False when there is no key or no such value.
    bool QueryValue(const std::wstring& name, DWORD& type, DWORD& size) const;
    template <typename Number>
    Number LoadEightBytes(const std::wstring& name, Number fallback);

    RegKey m_key;
    const HKEY m_root;
    std::wstring m_section;
};
