// The built module, as hosts meet it: loaded directly, and found through the registry and the filter mapper.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/module/loaded_module.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/layout_check.h"
#include "tests/support/matroska_layout.h"
#include "tests/support/media_types.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/program_run.h"
#include "tests/support/watchdog.h"
#include "tests/support/written_files.h"
#include "win/handle.h"

using namespace test_support;

namespace {

constexpr GUID kUnknownClass{0x11111111, 0x2222, 0x3333, {4, 4, 4, 4, 4, 4, 4, 4}};

class Module : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    static void TearDownTestSuite() { CoUninitialize(); }

    [[nodiscard]] win::ComPtr<IBaseFilter> CreateFilter() const {
        win::ComPtr<IBaseFilter> filter;
        EXPECT_EQ(S_OK,
                  m_module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid()));
        return filter;
    }

    LoadedModule m_module;
};

WideString ClassKey(REFCLSID clsid) {
    WCHAR text[40] = {};
    StringFromGUID2(clsid, text, 40);
    return WideString(OLESTR("CLSID\\")) + text;
}

bool KeyExists(const WideString& key) {
    HKEY handle = nullptr;
    const LONG result = RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &handle);
    if (result == ERROR_SUCCESS) {
        RegCloseKey(handle);
    }
    return result == ERROR_SUCCESS;
}

WideString RegistryText(const WideString& key, const WCHAR* value) {
    WCHAR text[MAX_PATH] = {};
    DWORD bytes = sizeof(text);
    const LONG result = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), value, RRF_RT_REG_SZ, nullptr, text, &bytes);
    EXPECT_EQ(ERROR_SUCCESS, result);
    return text;
}

// The friendly names of what the mapper enumerates for these wishes.
std::vector<WideString> MatchingFilters(DWORD merit) {
    win::ComPtr<IFilterMapper2> mapper;
    EXPECT_EQ(S_OK, CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2,
                                     mapper.PutVoid()));
    win::ComPtr<IEnumMoniker> monikers;
    const GUID inputTypes[] = {MEDIATYPE_Video, GUID_NULL};
    std::vector<WideString> names;
    if (FAILED(mapper->EnumMatchingFilters(monikers.Put(), 0, TRUE, merit, TRUE, 1, inputTypes, nullptr, nullptr, FALSE,
                                           TRUE, 0, nullptr, nullptr, nullptr))) {
        return names;
    }
    win::ComPtr<IMoniker> moniker;
    while (monikers->Next(1, moniker.Put(), nullptr) == S_OK) {
        win::ComPtr<IPropertyBag> bag;
        VARIANT value;
        VariantInit(&value);
        if (SUCCEEDED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid())) &&
            SUCCEEDED(bag->Read(OLESTR("FriendlyName"), &value, nullptr))) {
            names.emplace_back(value.bstrVal);
        }
        VariantClear(&value);
    }
    return names;
}

size_t CountOf(const std::vector<WideString>& names, WideStringView name) {
    return static_cast<size_t>(std::count(names.begin(), names.end(), name));
}

TEST_F(Module, AnUnknownClassIsNotAvailable) {
    void* object = this;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, m_module.GetClassObject(kUnknownClass, IID_IClassFactory, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(Module, AnInterfaceThatNoFactoryHasIsRefusedWithANullObject) {
    void* object = this;
    EXPECT_EQ(E_NOINTERFACE, m_module.GetClassObject(CLSID_MatroskaMuxer, IID_IBaseFilter, &object));
    EXPECT_EQ(nullptr, object);
}

TEST_F(Module, ItsThreeClassesHaveFactories) {
    for (const CLSID* clsid : {&CLSID_MatroskaMuxer, &CLSID_MKVMuxerAboutPage, &CLSID_MKVMuxerPropertyPage}) {
        win::ComPtr<IUnknown> unknown;
        EXPECT_EQ(S_OK, m_module.GetClassObject(*clsid, IID_IUnknown, unknown.PutVoid()));
        EXPECT_TRUE(m_module.Factory(*clsid));
    }
}

TEST_F(Module, StaysLoadedWhileAnObjectOrAServerLockLives) {
    EXPECT_EQ(S_OK, m_module.CanUnloadNow());
    {
        const auto filter = CreateFilter();
        EXPECT_EQ(S_FALSE, m_module.CanUnloadNow());
    }
    EXPECT_EQ(S_OK, m_module.CanUnloadNow());
    m_module.Factory(CLSID_MatroskaMuxer)->LockServer(TRUE);
    EXPECT_EQ(S_FALSE, m_module.CanUnloadNow());
    m_module.Factory(CLSID_MatroskaMuxer)->LockServer(FALSE);
    EXPECT_EQ(S_OK, m_module.CanUnloadNow());
}

TEST_F(Module, AFreshFilterHasItsOutputAndOneInput) {
    const auto filter = CreateFilter();
    const auto pins = PinsOf(filter.Get());
    ASSERT_EQ(2u, pins.size());
    EXPECT_EQ(WideString(OLESTR("Out")), NameOf(pins[0].Get()));
    EXPECT_EQ(WideString(OLESTR("In 0")), NameOf(pins[1].Get()));
}

TEST_F(Module, ItsPropertyPagesAreCreatedWithTheirTitles) {
    const std::pair<CLSID, WideString> pages[] = {{CLSID_MKVMuxerAboutPage, OLESTR("About")},
                                                  {CLSID_MKVMuxerPropertyPage, OLESTR("Settings")}};
    for (const auto& [clsid, title] : pages) {
        win::ComPtr<IPropertyPage> page;
        ASSERT_EQ(S_OK, m_module.Factory(clsid)->CreateInstance(nullptr, IID_IPropertyPage, page.PutVoid()));
        PROPPAGEINFO info{};
        EXPECT_EQ(S_OK, page->GetPageInfo(&info));
        EXPECT_EQ(title, WideString(info.pszTitle));
        CoTaskMemFree(info.pszTitle);
        EXPECT_EQ(S_FALSE, m_module.CanUnloadNow());
    }
    EXPECT_EQ(S_OK, m_module.CanUnloadNow());
}

TEST_F(Module, AFileWrittenWithoutRegistrationNamesTheModulesVersion) {
    const auto filter = CreateFilter();
    FakeSinkPin sink;
    FakeUpstreamPin source(WaveType(mediasubtype::kPcm));
    ASSERT_EQ(S_OK, PinNamed(filter.Get(), OLESTR("Out"))->Connect(&sink, nullptr));
    ASSERT_EQ(S_OK, source.ConnectTo(PinNamed(filter.Get(), OLESTR("In 0")).Get()));
    ASSERT_EQ(S_OK, filter->Pause());
    EXPECT_EQ(S_OK, source.Deliver({1, 2, 3, 4}, 0, 200000));
    EXPECT_EQ(S_OK, source.DeliverEndOfStream());
    EXPECT_TRUE(sink.WaitForEndOfStream(kWatchdog));
    ASSERT_EQ(S_OK, filter->Stop());
    source.Unplug();
    sink.Unplug();
    const auto bytes = sink.Stream().Bytes();
    EXPECT_EQ("Quorlex Matroska Muxer Version " QRX_VERSION, ReadLayout(bytes).writingApp);
    EXPECT_EQ("libmatroska 1.4.1", ReadLayout(bytes).muxingApp);
    EXPECT_TRUE(CheckLayout(bytes).empty());
    SaveForJudges("loaded_module.mkv", bytes);
}

TEST_F(Module, UnregisteringWhatWasNeverRegisteredSucceeds) {
    EXPECT_EQ(S_OK, m_module.UnregisterServer());
    EXPECT_EQ(S_OK, m_module.UnregisterServer());
}

TEST_F(Module, RegistrationWritesTheClassesAndTheFilterIsFoundAndCreated) {
    ASSERT_EQ(S_OK, m_module.RegisterServer());
    const WideString key = ClassKey(CLSID_MatroskaMuxer);
    EXPECT_EQ(WideString(OLESTR("Quorlex Matroska Muxer")), RegistryText(key, nullptr));
    EXPECT_EQ(LoadedModule::Path(), RegistryText(key + OLESTR("\\InprocServer32"), nullptr));
    EXPECT_EQ(WideString(OLESTR("Both")), RegistryText(key + OLESTR("\\InprocServer32"), OLESTR("ThreadingModel")));
    EXPECT_EQ(WideString(OLESTR("MKV Muxer about page")), RegistryText(ClassKey(CLSID_MKVMuxerAboutPage), nullptr));
    EXPECT_EQ(WideString(OLESTR("MKV Muxer property page")),
              RegistryText(ClassKey(CLSID_MKVMuxerPropertyPage), nullptr));

    EXPECT_EQ(1u, CountOf(MatchingFilters(MERIT_DO_NOT_USE), OLESTR("Quorlex Matroska Muxer")));
    EXPECT_EQ(0u, CountOf(MatchingFilters(MERIT_DO_NOT_USE + 1), OLESTR("Quorlex Matroska Muxer")));

    win::ComPtr<IBaseFilter> filter;
    EXPECT_EQ(S_OK,
              CoCreateInstance(CLSID_MatroskaMuxer, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, filter.PutVoid()));
    filter.Reset();

    EXPECT_EQ(S_OK, m_module.UnregisterServer());
    EXPECT_FALSE(KeyExists(key));
    EXPECT_FALSE(KeyExists(ClassKey(CLSID_MKVMuxerAboutPage)));
    EXPECT_FALSE(KeyExists(ClassKey(CLSID_MKVMuxerPropertyPage)));
    EXPECT_EQ(0u, CountOf(MatchingFilters(MERIT_DO_NOT_USE), OLESTR("Quorlex Matroska Muxer")));
}

DWORD RunRegsvr32(const WideString& options) {
    return RunCommand(OLESTR("regsvr32 ") + options + OLESTR(" \"") + LoadedModule::Path() + OLESTR("\""));
}

TEST_F(Module, Regsvr32RegistersAndUnregistersIt) {
    EXPECT_EQ(0u, RunRegsvr32(OLESTR("/s")));
    EXPECT_TRUE(KeyExists(ClassKey(CLSID_MatroskaMuxer)));
    EXPECT_EQ(0u, RunRegsvr32(OLESTR("/s /u")));
    EXPECT_FALSE(KeyExists(ClassKey(CLSID_MatroskaMuxer)));
}

TEST_F(Module, ItsVersionResourceStatesTheProjectsVersion) {
    DWORD unused = 0;
    const DWORD size = GetFileVersionInfoSizeW(LoadedModule::Path().c_str(), &unused);
    ASSERT_GT(size, 0u);
    std::vector<BYTE> block(size);
    ASSERT_TRUE(GetFileVersionInfoW(LoadedModule::Path().c_str(), 0, size, block.data()));
    VS_FIXEDFILEINFO* info = nullptr;
    UINT length = 0;
    ASSERT_TRUE(VerQueryValueW(block.data(), OLESTR("\\"), reinterpret_cast<void**>(&info), &length));
    const std::string version =
        std::to_string(HIWORD(info->dwFileVersionMS)) + "." + std::to_string(LOWORD(info->dwFileVersionMS)) + "." +
        std::to_string(HIWORD(info->dwFileVersionLS)) + "." + std::to_string(LOWORD(info->dwFileVersionLS));
    EXPECT_EQ(QRX_VERSION, version);
}

} // namespace
