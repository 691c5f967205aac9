// null_load_t: the back end of a loader that has none: nothing can be opened, and every load gives its default.
//
// Threads: any; it has no state. Errors: none.
#pragma once

#include "settings/base_load.h"

class null_load_t final : public base_load_t {
  public:
    bool open_file(const std::wstring& /*section*/, const std::wstring& /*file*/) override { return false; }
    bool open_key(const std::wstring& /*section*/, HKEY /*root*/) override { return false; }
    void close() override {}
    std::uint32_t child_count() override { return 0; }
    std::wstring child_name(std::uint32_t /*index*/) override { return {}; }
    std::uint32_t value_size(const std::wstring& /*key*/) override { return kAbsentValue; }
    std::int32_t load_int32(const std::wstring& /*key*/, std::int32_t fallback) override { return fallback; }
    double load_double(const std::wstring& /*key*/, double fallback) override { return fallback; }
    std::int64_t load_int64(const std::wstring& /*key*/, std::int64_t fallback) override { return fallback; }
    bool load_binary(const std::wstring& /*key*/, void* /*buffer*/, std::uint32_t& size) override {
        size = 0;
        return false;
    }
    std::wstring load_string(const std::wstring& /*key*/, const std::wstring& fallback) override { return fallback; }
};
