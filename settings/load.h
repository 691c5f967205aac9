// load_t: the loader that callers hold; it chooses and owns the back end that reads.
//
// Units: sizes in bytes. Owner: its back end, until it is closed. Threads: one at a time.
// Errors: with no back end, every load gives its default.
#pragma once

#include "settings/back_end.h"
#include "settings/base_load.h"
#include "settings/null_load.h"
#include "settings/reg_load.h"
#include "settings/xml_load.h"

class load_t final : public base_load_t {
  public:
    load_t() = default;
    ~load_t();
    load_t(const load_t&) = delete;
    load_t& operator=(const load_t&) = delete;

    // One of settings_kind.
    bool select(std::int32_t kind);
    [[nodiscard]] std::int32_t kind() const { return m_backEnd.Kind(); }

    bool open_file(const std::wstring& section, const std::wstring& file) override;
    bool open_key(const std::wstring& section, HKEY root) override;
    void close() override;
    std::uint32_t child_count() override;
    std::wstring child_name(std::uint32_t index) override;
    std::uint32_t value_size(const std::wstring& key) override;
    std::int32_t load(const std::wstring& key, std::int32_t fallback) override;
    std::uint32_t load(const std::wstring& key, std::uint32_t fallback) override;
    std::int32_t load_int32(const std::wstring& key, std::int32_t fallback) override;
    double load_double(const std::wstring& key, double fallback) override;
    std::int64_t load_int64(const std::wstring& key, std::int64_t fallback) override;
    bool load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) override;
    std::wstring load_string(const std::wstring& key, const std::wstring& fallback) override;

  private:
    BackEnd<base_load_t, null_load_t, reg_load_t, xml_load_t> m_backEnd;
};
