// The real registry, with class identifiers and names that only these tests use.
#include <gtest/gtest.h>

#include "dshow/registration.h"
#include "tests/dshow/test_templates.h"
#include "win/com_ptr.h"
#include "win/module_instance.h"

namespace {

using win::ComPtr;

constexpr wchar_t kFilterKey[] = L"CLSID\\{8A3C9F21-51D0-4B87-A27E-3C4B0D996101}";
constexpr wchar_t kPlainKey[] = L"CLSID\\{8A3C9F21-51D0-4B87-A27E-3C4B0D996102}";

// The text value, or "?" when it is not there.
std::wstring Text(const std::wstring& key, const wchar_t* name) {
    wchar_t text[MAX_PATH] = {};
    DWORD bytes = sizeof(text);
    const LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), name, RRF_RT_REG_SZ, nullptr, text, &bytes);
    return status == ERROR_SUCCESS ? text : L"?";
}

bool KeyExists(const std::wstring& path) {
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) {
        return false;
    }
    RegCloseKey(key);
    return true;
}

// Whether the mapper offers a filter of the test's name to those who ask for any merit.
bool MapperKnowsTheFilter() {
    ComPtr<IFilterMapper2> mapper;
    ComPtr<IEnumMoniker> filters;
    EXPECT_EQ(
        CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2, mapper.PutVoid()),
        S_OK);
    if (mapper->EnumMatchingFilters(filters.Put(), 0, FALSE, 0, FALSE, 0, nullptr, nullptr, nullptr, FALSE, FALSE, 0,
                                    nullptr, nullptr, nullptr) != S_OK) {
        return false;
    }
    bool found = false;
    ComPtr<IMoniker> moniker;
    while (!found && filters->Next(1, moniker.Put(), nullptr) == S_OK) {
        ComPtr<IPropertyBag> bag;
        VARIANT name;
        VariantInit(&name);
        if (SUCCEEDED(moniker->BindToStorage(nullptr, nullptr, IID_IPropertyBag, bag.PutVoid())) &&
            SUCCEEDED(bag->Read(L"FriendlyName", &name, nullptr))) {
            found = std::wstring(name.bstrVal) == dshow_test::kFilterSetup.strName;
        }
        VariantClear(&name);
    }
    return found;
}

class RegistrationTest : public testing::Test {
  protected:
    void SetUp() override { ASSERT_EQ(CoInitialize(nullptr), S_OK); }
    void TearDown() override {
        AMovieDllRegisterServer2(FALSE);
        CoUninitialize();
    }
};

TEST_F(RegistrationTest, UnregisteringAModuleThatWasNeverRegisteredSucceeds) {
    ASSERT_FALSE(KeyExists(kFilterKey));
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), S_OK);
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), S_OK);
}

TEST_F(RegistrationTest, EveryClassGetsItsKeys) {
    wchar_t file[MAX_PATH] = {};
    ASSERT_NE(GetModuleFileNameW(win::ModuleInstance(), file, MAX_PATH), 0U);
    ASSERT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
    EXPECT_EQ(Text(kFilterKey, nullptr), L"Quorlex Test Filter");
    EXPECT_EQ(Text(kPlainKey, nullptr), L"Quorlex Test Object");
    for (const std::wstring key : {kFilterKey, kPlainKey}) {
        EXPECT_EQ(Text(key + L"\\InprocServer32", nullptr), file);
        EXPECT_EQ(Text(key + L"\\InprocServer32", L"ThreadingModel"), L"Both");
    }
}

TEST_F(RegistrationTest, FilterIsFoundThroughTheMapperUntilItIsRemoved) {
    EXPECT_FALSE(MapperKnowsTheFilter());
    ASSERT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
    EXPECT_TRUE(MapperKnowsTheFilter());
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), S_OK); // once more changes nothing
    EXPECT_TRUE(MapperKnowsTheFilter());
    ASSERT_EQ(AMovieDllRegisterServer2(FALSE), S_OK);
    EXPECT_FALSE(MapperKnowsTheFilter());
    EXPECT_FALSE(KeyExists(kFilterKey));
    EXPECT_FALSE(KeyExists(kPlainKey));
}

TEST_F(RegistrationTest, RegistrationServesAThreadThatHasNotEnteredCom) {
    CoUninitialize();
    EXPECT_EQ(AMovieDllRegisterServer2(TRUE), S_OK);
    EXPECT_EQ(AMovieDllRegisterServer2(FALSE), S_OK);
    ASSERT_EQ(CoInitialize(nullptr), S_OK);
}

} // namespace
