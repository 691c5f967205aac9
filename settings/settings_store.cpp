#include "settings/settings_store.h"

#include <utility>

settings_store_t* g_SettingsStore = nullptr;

settings_store_t::settings_store_t()
    : ComApartment(CoInitialize(nullptr)), lock(std::make_unique<win::CriticalSection>()) {}

settings_store_t::~settings_store_t() {
    lock.reset();
    try {
        load.close();
        save.close();
    } catch (...) { // NOLINT(bugprone-empty-catch): the module goes whatever became of its settings
    }
}

bool CreateSettingsStore() noexcept {
    try {
        g_SettingsStore = new settings_store_t; // freed by DestroySettingsStore
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

void DestroySettingsStore() noexcept {
    delete std::exchange(g_SettingsStore, nullptr);
}
