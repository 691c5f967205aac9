// base_save_t: what can be written to a section of the settings, whatever keeps them.
//
// Units: sizes in bytes. Owner: no virtual destructor; whoever owns a back end destroys it as the class it is.
// Threads: one at a time. Errors: false; settings_failure as settings/failure.h says.
#pragma once

#include <cstdint>
#include <string>

#include "win/platform.h"

// The order of the operations is the order of their slots.
class base_save_t {
  public:
    // Opens a section of a settings file, made if missing. False from a back end that keeps no files.
    virtual bool open_file(const std::wstring& section, const std::wstring& file) = 0;
    // Opens a section below a registry key, made if missing. False from a back end that keeps no keys.
    virtual bool open_key(const std::wstring& section, HKEY root) = 0;
    // A settings file is written here, and only here.
    virtual void close() = 0;
    // The section and all below it; its path is told as to the open operations. An empty path is refused.
    virtual bool delete_section(const std::wstring& section) = 0;

    virtual bool save(const std::wstring& key, std::int32_t value) { return save_int32(key, value); }
    // The same 32 bits.
    virtual bool save(const std::wstring& key, std::uint32_t value) {
        return save_int32(key, static_cast<std::int32_t>(value));
    }
    virtual bool save_int32(const std::wstring& key, std::int32_t value) = 0;
    virtual bool save_double(const std::wstring& key, double value) = 0;
    virtual bool save_int64(const std::wstring& key, std::int64_t value) = 0;
    virtual bool save_binary(const std::wstring& key, const void* data, std::uint32_t size) = 0;
    virtual bool save_string(const std::wstring& key, const std::wstring& value) = 0;

  protected:
    ~base_save_t() = default;
};
