// null_save_t: the back end of a saver that has none: every operation gives false.
//
// Threads: any; it has no state. Errors: none.
#pragma once

#include "settings/base_save.h"

class null_save_t final : public base_save_t {
  public:
    bool open_file(const std::wstring& /*section*/, const std::wstring& /*file*/) override { return false; }
    bool open_key(const std::wstring& /*section*/, HKEY /*root*/) override { return false; }
    void close() override {}
    bool delete_section(const std::wstring& /*section*/) override { return false; }
    bool save_int32(const std::wstring& /*key*/, std::int32_t /*value*/) override { return false; }
    bool save_double(const std::wstring& /*key*/, double /*value*/) override { return false; }
    bool save_int64(const std::wstring& /*key*/, std::int64_t /*value*/) override { return false; }
    bool save_binary(const std::wstring& /*key*/, const void* /*data*/, std::uint32_t /*size*/) override {
        return false;
    }
    bool save_string(const std::wstring& /*key*/, const std::wstring& /*value*/) override { return false; }
};
