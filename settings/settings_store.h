// settings_store_t: the module's settings: a loader, a saver, and a lock for callers that share them.
//
// Owner: the module, from its loading to its unloading. Threads: COM is initialised on the thread that makes it;
// callers take the lock. Errors: std::bad_alloc from the constructor.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "settings/load.h"
#include "settings/save.h"
#include "win/com_apartment.h"
#include "win/critical_section.h"

// COM is initialised first and given back last, by the same thread or not at all: a base, so that it outlives the
// members.
class settings_store_t : private win::ComApartment {
  public:
    settings_store_t();
    ~settings_store_t();
    settings_store_t(const settings_store_t&) = delete;
    settings_store_t& operator=(const settings_store_t&) = delete;

    load_t load;
    save_t save;
    std::wstring text;
    std::uint32_t flag = 1;
    std::unique_ptr<win::CriticalSection> lock;
};

// The module's store; null before it is loaded, after it is unloaded, and in programs that make none.
extern settings_store_t* g_SettingsStore;

// For the module's entry point, on process attach. False for lack of memory.
[[nodiscard]] bool CreateSettingsStore() noexcept;
// On process detach, unless the process is ending: nothing of COM is left to talk to then.
void DestroySettingsStore() noexcept;
