// save_t: the saver that callers hold; it chooses and owns the back end that writes.
//
// Units: sizes in bytes. Owner: its back end, until it is closed. Threads: one at a time.
// Errors: with no back end, every save gives false.
#pragma once

#include "settings/back_end.h"
#include "settings/base_save.h"
#include "settings/null_save.h"
#include "settings/reg_save.h"
#include "settings/xml_save.h"

class save_t final : public base_save_t {
  public:
    save_t() = default;
    ~save_t();
    save_t(const save_t&) = delete;
    save_t& operator=(const save_t&) = delete;

    // One of settings_kind.
    bool select(std::int32_t kind);
    [[nodiscard]] std::int32_t kind() const { return m_backEnd.Kind(); }

    bool open_file(const std::wstring& section, const std::wstring& file) override;
    bool open_key(const std::wstring& section, HKEY root) override;
    void close() override;
    bool delete_section(const std::wstring& section) override;
    bool save(const std::wstring& key, std::int32_t value) override;
    bool save(const std::wstring& key, std::uint32_t value) override;
    bool save_int32(const std::wstring& key, std::int32_t value) override;
    bool save_double(const std::wstring& key, double value) override;
    bool save_int64(const std::wstring& key, std::int64_t value) override;
    bool save_binary(const std::wstring& key, const void* data, std::uint32_t size) override;
    bool save_string(const std::wstring& key, const std::wstring& value) override;

  private:
    BackEnd<base_save_t, null_save_t, reg_save_t, xml_save_t> m_backEnd;
};
