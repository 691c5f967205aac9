// base_load_t: what can be read from a section of the settings, whatever keeps them.
//
// Units: sizes in bytes. Owner: no virtual destructor; whoever owns a back end destroys it as the class it is.
// Threads: one at a time. Errors: a default, false or kAbsentValue; settings_failure as settings/failure.h says.
#pragma once

#include <cstdint>
#include <string>

#include "win/platform.h"

inline constexpr std::uint32_t kAbsentValue = 0xFFFFFFFF;

// The order of the operations is the order of their slots.
class base_load_t {
  public:
    // Opens a section of a settings file. False from a back end that keeps no files.
    virtual bool open_file(const std::wstring& section, const std::wstring& file) = 0;
    // Opens a section below a registry key. False from a back end that keeps no keys.
    virtual bool open_key(const std::wstring& section, HKEY root) = 0;
    virtual void close() = 0;

    virtual std::uint32_t child_count() = 0;
    // Empty when there is no such subsection.
    virtual std::wstring child_name(std::uint32_t index) = 0;
    // kAbsentValue when there is no such value.
    virtual std::uint32_t value_size(const std::wstring& key) = 0;

    virtual std::int32_t load(const std::wstring& key, std::int32_t fallback) { return load_int32(key, fallback); }
    // The same 32 bits, read as an unsigned number.
    virtual std::uint32_t load(const std::wstring& key, std::uint32_t fallback) {
        return static_cast<std::uint32_t>(load_int32(key, static_cast<std::int32_t>(fallback)));
    }
    virtual std::int32_t load_int32(const std::wstring& key, std::int32_t fallback) = 0;
    virtual double load_double(const std::wstring& key, double fallback) = 0;
    virtual std::int64_t load_int64(const std::wstring& key, std::int64_t fallback) = 0;
    // size: the buffer's on entry, the stored one on return (0 when there is none). False when it does not fit.
    virtual bool load_binary(const std::wstring& key, void* buffer, std::uint32_t& size) = 0;
    virtual std::wstring load_string(const std::wstring& key, const std::wstring& fallback) = 0;

  protected:
    ~base_load_t() = default;
};
