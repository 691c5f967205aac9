// The module's store: what it holds, and what loading and unloading the built module does to COM.
#include <initguid.h>

#include "settings/settings_store.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <thread>

#include <qrx_mkvmuxer.h>

#include "tests/module/loaded_module.h"
#include "tests/settings/scratch_key.h"
#include "tests/support/program_run.h"

namespace {

constexpr HRESULT kNoCom = CO_E_NOTINITIALIZED;

// The kind of the calling thread's apartment, or kNoCom.
HRESULT Apartment() {
    APTTYPE type = APTTYPE_CURRENT;
    APTTYPEQUALIFIER qualifier = APTTYPEQUALIFIER_NONE;
    const HRESULT known = CoGetApartmentType(&type, &qualifier);
    if (FAILED(known)) {
        return known;
    }
    return static_cast<HRESULT>(type == APTTYPE_MAINSTA ? APTTYPE_STA : type);
}

// COM's state belongs to a thread, so each test has one of its own.
void OnFreshThread(const std::function<void()>& body) {
    std::thread(body).join();
}

TEST(SettingsStore, HoldsALoaderASaverATextAFlagAndALockInThisOrder) {
    OnFreshThread([] {
        settings_store_t store;
        EXPECT_EQ(2, store.load.kind());
        EXPECT_EQ(2, store.save.kind());
        EXPECT_EQ(L"", store.text);
        EXPECT_EQ(1U, store.flag);
        ASSERT_NE(nullptr, store.lock);
        const std::lock_guard guard(*store.lock);
        EXPECT_LT(static_cast<void*>(&store.load), static_cast<void*>(&store.save));
        EXPECT_LT(static_cast<void*>(&store.save), static_cast<void*>(&store.text));
        EXPECT_LT(static_cast<void*>(&store.text), static_cast<void*>(&store.flag));
        EXPECT_LT(static_cast<void*>(&store.flag), static_cast<void*>(&store.lock));
    });
}

TEST(SettingsStore, InitialisesComWhileItLives) {
    OnFreshThread([] {
        ASSERT_EQ(kNoCom, Apartment());
        EXPECT_EQ(nullptr, g_SettingsStore);
        ASSERT_TRUE(CreateSettingsStore());
        EXPECT_NE(nullptr, g_SettingsStore);
        EXPECT_EQ(APTTYPE_STA, Apartment());
        DestroySettingsStore();
        EXPECT_EQ(nullptr, g_SettingsStore);
        EXPECT_EQ(kNoCom, Apartment());
        DestroySettingsStore(); // there is none: nothing happens
        EXPECT_EQ(kNoCom, Apartment());
    });
}

TEST(SettingsStore, ClosesWhatIsOpenWhenItGoes) {
    OnFreshThread([] {
        const ScratchKey scratch;
        ASSERT_TRUE(CreateSettingsStore());
        ASSERT_TRUE(g_SettingsStore->save.open_key(scratch.Section(L"a"), HKEY_CURRENT_USER));
        ASSERT_TRUE(g_SettingsStore->save.save_int32(L"v", 3));
        ASSERT_TRUE(g_SettingsStore->load.open_key(scratch.Section(L"a"), HKEY_CURRENT_USER));
        EXPECT_EQ(3, g_SettingsStore->load.load_int32(L"v", 0));
        DestroySettingsStore();
        EXPECT_TRUE(scratch.HasSubkey(L"a"));
    });
}

TEST(LoadedModuleSettings, LoadingInitialisesComApartmentThreadedAndUnloadingGivesItBack) {
    OnFreshThread([] {
        ASSERT_EQ(kNoCom, Apartment());
        for (int i = 0; i < 3; ++i) {
            {
                const LoadedModule module;
                EXPECT_EQ(APTTYPE_STA, Apartment());
            }
            EXPECT_EQ(kNoCom, Apartment());
        }
    });
}

TEST(LoadedModuleSettings, LoadingDoesNoHarmOnAThreadInTheMultithreadedApartment) {
    OnFreshThread([] {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_MULTITHREADED));
        {
            const LoadedModule module;
            EXPECT_EQ(APTTYPE_MTA, Apartment());
            EXPECT_TRUE(module.Factory(CLSID_MatroskaMuxer));
        }
        EXPECT_EQ(APTTYPE_MTA, Apartment());
        CoUninitialize();
        EXPECT_EQ(kNoCom, Apartment());
    });
}

TEST(LoadedModuleSettings, LoadingIsBalancedOnAThreadThatHasComAlready) {
    OnFreshThread([] {
        ASSERT_EQ(S_OK, CoInitialize(nullptr));
        { const LoadedModule module; }
        EXPECT_EQ(APTTYPE_STA, Apartment());
        CoUninitialize();
        EXPECT_EQ(kNoCom, Apartment());
    });
}

TEST(LoadedModuleSettings, UnloadingOnAnotherThreadLeavesThatThreadsComAlone) {
    OnFreshThread([] {
        auto module = std::make_unique<LoadedModule>();
        OnFreshThread([&module] {
            ASSERT_EQ(S_OK, CoInitialize(nullptr));
            module.reset();
            EXPECT_EQ(APTTYPE_STA, Apartment());
            CoUninitialize();
            EXPECT_EQ(kNoCom, Apartment());
        });
        EXPECT_EQ(APTTYPE_STA, Apartment()); // it ends with the thread
    });
}

TEST(LoadedModuleSettings, AProcessMayEndWithTheModuleLoaded) {
    EXPECT_EQ(0U, RunProgramBeside(L"settings_reader.exe", L"--hold \"" + LoadedModule::Path() + L"\""));
}

} // namespace
