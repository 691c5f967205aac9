#include <gtest/gtest.h>

#include "dshow/pos_pass_thru.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/outer_object.h"
#include "tests/dshow/test_filter.h"
#include "win/com_ptr.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

using win::ComPtr;

class PosPassThruTest : public dshow_test::ObjectCountTest {
  protected:
    void SetUp() override { ASSERT_EQ(CoInitialize(nullptr), S_OK); }
    void TearDown() override {
        filter.Reset();
        CoUninitialize();
        ObjectCountTest::TearDown();
    }

    dshow_test::FilterPtr filter = dshow_test::MakeFilter();
    dshow_test::TestInputPin& input = filter->AddInput();
};

TEST_F(PosPassThruTest, NullPointersAreRefused) {
    IUnknown* object = filter.Get() == nullptr ? nullptr : static_cast<IPin*>(&input);
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, nullptr, &object), E_POINTER);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, &input, nullptr), E_POINTER);
}

#ifdef QRX_NATIVE

TEST_F(PosPassThruTest, SystemWithoutTheClassSaysSo) {
    IUnknown* object = static_cast<IPin*>(&input);
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, &input, &object), REGDB_E_CLASSNOTREG);
    EXPECT_EQ(object, nullptr);
}

class FakePassThru final : public ISeekingPassThru {
  public:
    HRESULT hr = S_OK;
    BOOL renderer = TRUE;
    IPin* pin = nullptr;
    bool offersInterface = true;
    [[nodiscard]] LONG References() const { return m_references.Count(); }

    STDMETHODIMP QueryInterface(REFIID iid, void** object) noexcept override {
        const bool known = iid == IID_IUnknown || (iid == IID_ISeekingPassThru && offersInterface);
        *object = known ? this : nullptr;
        return known ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() noexcept override { return m_references.Add(); }
    STDMETHODIMP_(ULONG) Release() noexcept override { return m_references.Release(); }
    STDMETHODIMP Init(BOOL bSupportRendering, IPin* pPin) noexcept override {
        renderer = bSupportRendering;
        pin = pPin;
        return hr;
    }

  private:
    test_support::ReferenceCount m_references{"a pass-through"};
};

TEST_F(PosPassThruTest, ObjectIsBoundToThePinAndHandedOut) {
    FakePassThru passThru;
    dshow_test::OuterObject outer;
    const native::ScopedClass offered(CLSID_SeekingPassThru, [&](IUnknown* aggregator, REFIID iid, void** object) {
        EXPECT_EQ(aggregator, &outer);
        EXPECT_EQ(iid, IID_IUnknown);
        return passThru.QueryInterface(iid, object);
    });
    ComPtr<IUnknown> object;
    ASSERT_EQ(CreatePosPassThru(&outer, FALSE, &input, object.Put()), S_OK);
    EXPECT_EQ(object.Get(), &passThru);
    EXPECT_EQ(passThru.References(), 1);
    EXPECT_EQ(passThru.renderer, FALSE);
    EXPECT_EQ(passThru.pin, static_cast<IPin*>(&input));
}

TEST_F(PosPassThruTest, ObjectThatCannotBeBoundIsReleased) {
    FakePassThru passThru;
    const native::ScopedClass offered(CLSID_SeekingPassThru, [&](IUnknown*, REFIID iid, void** object) {
        return passThru.QueryInterface(iid, object);
    });
    passThru.hr = E_ACCESSDENIED;
    IUnknown* object = static_cast<IPin*>(&input);
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, &input, &object), E_ACCESSDENIED);
    EXPECT_EQ(object, nullptr);
    passThru.offersInterface = false;
    EXPECT_EQ(CreatePosPassThru(nullptr, FALSE, &input, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(passThru.References(), 0);
}

#else

TEST_F(PosPassThruTest, SystemsObjectSeeksThroughThePin) {
    ComPtr<IUnknown> object;
    ASSERT_EQ(CreatePosPassThru(nullptr, FALSE, &input, object.Put()), S_OK);
    EXPECT_TRUE(object.Query<IMediaPosition>(IID_IMediaPosition));
    const auto seeking = object.Query<IMediaSeeking>(IID_IMediaSeeking);
    ASSERT_TRUE(seeking);
    LONGLONG duration = 0;
    EXPECT_TRUE(FAILED(seeking->GetDuration(&duration))); // the pin has no peer to ask
    EXPECT_EQ(filter->AddRef(), 2U);                      // no reference is kept on the pin
    EXPECT_EQ(filter->Release(), 1U);
}

TEST_F(PosPassThruTest, SystemsObjectCanBeAggregated) {
    dshow_test::OuterObject outer;
    ComPtr<IUnknown> inner;
    ASSERT_EQ(CreatePosPassThru(&outer, FALSE, &input, inner.Put()), S_OK);
    outer.Aggregate(inner);
    ComPtr<IMediaSeeking> seeking;
    ASSERT_EQ(outer.QueryInterface(IID_IMediaSeeking, seeking.PutVoid()), S_OK);
    EXPECT_EQ(outer.References(), 1);
}

#endif

} // namespace
