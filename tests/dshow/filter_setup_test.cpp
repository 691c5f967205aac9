#include <gtest/gtest.h>

#include "dshow/filter_setup.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_filter.h"
#include "tests/dshow/test_templates.h"
#include "tests/support/reference_count.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

using dshow_test::kFilterSetup;

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x80070002);

// Remembers what it was asked to register or to remove.
class FakeMapper final : public IFilterMapper2 {
  public:
    HRESULT hr = S_OK;
    int registered = 0;
    int unregistered = 0;

    // IUnknown
    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        *object = iid == IID_IFilterMapper2 ? this : nullptr;
        return *object != nullptr ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return m_references.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return m_references.Release(); }
    // IFilterMapper2
    STDMETHODIMP CreateCategory(REFCLSID, DWORD, LPCWSTR) noexcept override { return E_NOTIMPL; }
    STDMETHODIMP UnregisterFilter(const CLSID* category, LPCOLESTR instance, REFCLSID clsid) noexcept override {
        ++unregistered;
        EXPECT_EQ(category, nullptr);
        EXPECT_EQ(instance, nullptr);
        EXPECT_EQ(clsid, dshow_test::kFilterClass);
        return hr;
    }
    STDMETHODIMP RegisterFilter(REFCLSID clsid, LPCWSTR name, IMoniker** moniker, const CLSID* category,
                                LPCOLESTR instance, const REGFILTER2* filter) noexcept override {
        ++registered;
        EXPECT_EQ(clsid, dshow_test::kFilterClass);
        EXPECT_EQ(WideString(name), OLESTR("Quorlex Test Filter"));
        EXPECT_EQ(moniker, nullptr);
        EXPECT_EQ(category, nullptr);
        EXPECT_EQ(instance, nullptr);
        EXPECT_EQ(filter->dwVersion, 1U);
        EXPECT_EQ(filter->dwMerit, 0x200000U);
        EXPECT_EQ(filter->cPins, 2U);
        EXPECT_EQ(filter->rgPins, kFilterSetup.lpPin);
        return hr;
    }
    STDMETHODIMP EnumMatchingFilters(IEnumMoniker**, DWORD, BOOL, DWORD, BOOL, DWORD, const GUID*, const REGPINMEDIUM*,
                                     const CLSID*, BOOL, BOOL, DWORD, const GUID*, const REGPINMEDIUM*,
                                     const CLSID*) noexcept override {
        return E_NOTIMPL;
    }

  private:
    test_support::ReferenceCount m_references{"a filter mapper"};
};

class FilterSetupTest : public dshow_test::ObjectCountTest {
  protected:
    FakeMapper mapper;
};

TEST_F(FilterSetupTest, FilterIsRegisteredWithMeritAndPins) {
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, &mapper, TRUE), S_OK);
    EXPECT_EQ(mapper.registered, 1);
    EXPECT_EQ(mapper.unregistered, 0);
    mapper.hr = E_ACCESSDENIED;
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, &mapper, TRUE), E_ACCESSDENIED);
    mapper.hr = kFileNotFound;
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, &mapper, TRUE), kFileNotFound);
}

TEST_F(FilterSetupTest, FilterThatIsNotThereCountsAsRemoved) {
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, &mapper, FALSE), S_OK);
    EXPECT_EQ(mapper.unregistered, 1);
    mapper.hr = kFileNotFound;
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, &mapper, FALSE), S_OK);
    mapper.hr = E_ACCESSDENIED;
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, &mapper, FALSE), E_ACCESSDENIED);
    EXPECT_EQ(mapper.registered, 0);
}

TEST_F(FilterSetupTest, NothingToRegisterIsNoFailure) {
    EXPECT_EQ(AMovieSetupRegisterFilter2(nullptr, &mapper, TRUE), S_FALSE);
    EXPECT_EQ(AMovieSetupRegisterFilter2(&kFilterSetup, nullptr, TRUE), E_POINTER);
}

#ifdef QRX_NATIVE
TEST_F(FilterSetupTest, FilterWithSetupDataRegistersItselfInTheSystemsMapper) {
    const auto filter = dshow_test::MakeFilter();
    filter->setup = &kFilterSetup;
    EXPECT_EQ(filter->Register(), REGDB_E_CLASSNOTREG); // a system without a mapper
    const native::ScopedClass offered(CLSID_FilterMapper2, [this](IUnknown*, REFIID iid, void** object) {
        return mapper.QueryInterface(iid, object);
    });
    EXPECT_EQ(filter->Register(), S_OK);
    EXPECT_EQ(mapper.registered, 1);
    EXPECT_EQ(filter->Unregister(), S_OK);
    EXPECT_EQ(mapper.unregistered, 1);
}
#endif

} // namespace
