#include <gtest/gtest.h>

#include "dshow/unknown.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/outer_object.h"
#include "tests/dshow/test_filter.h"

namespace {

using dshow_test::MakeFilter;
using dshow_test::OuterObject;
using dshow_test::TestFilter;
using win::ComPtr;

class UnknownTest : public dshow_test::ObjectCountTest {};

IUnknown* AsUnknown(CUnknown& object) {
    return object.GetOwner();
}

TEST_F(UnknownTest, EveryInterfaceLeadsToTheSameUnknown) {
    const auto filter = MakeFilter();
    ComPtr<IUnknown> first;
    ComPtr<IUnknown> second;
    const auto setup = ComPtr<IBaseFilter>(filter.Get()).Query<IAMovieSetup>(IID_IAMovieSetup);
    ASSERT_TRUE(setup);
    ASSERT_EQ(filter->QueryInterface(IID_IUnknown, first.PutVoid()), S_OK);
    ASSERT_EQ(setup->QueryInterface(IID_IUnknown, second.PutVoid()), S_OK);
    EXPECT_EQ(first.Get(), second.Get());
}

TEST_F(UnknownTest, InterfaceThatIsNotThereClearsTheOutParameter) {
    const auto filter = MakeFilter();
    void* object = &object;
    EXPECT_EQ(filter->QueryInterface(IID_IPin, &object), E_NOINTERFACE);
    EXPECT_EQ(object, nullptr);
    EXPECT_EQ(filter->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    EXPECT_EQ(filter->QueryInterface(IID_IBaseFilter, nullptr), E_POINTER);
}

TEST_F(UnknownTest, CountBeginsAtZeroAndLastReleaseDeletesTheObject) {
    auto* const filter = new TestFilter;
    EXPECT_EQ(LivingObjects(), 1);
    EXPECT_EQ(filter->AddRef(), 1U);
    EXPECT_EQ(filter->AddRef(), 2U);
    EXPECT_EQ(filter->Release(), 1U);
    EXPECT_EQ(filter->Release(), 0U);
    EXPECT_EQ(LivingObjects(), 0);
}

TEST_F(UnknownTest, ObjectsOfTheModuleAreCountedWithTheirPins) {
    const auto filter = MakeFilter();
    filter->AddInput();
    filter->AddOutput();
    EXPECT_EQ(LivingObjects(), 3);
}

TEST_F(UnknownTest, AggregatedObjectDelegatesToTheOuterOne) {
    OuterObject outer;
    auto* const inner = new TestFilter(&outer);
    ComPtr<IUnknown> own;
    inner->NonDelegatingAddRef();
    ASSERT_EQ(inner->NonDelegatingQueryInterface(IID_IUnknown, own.PutVoid()), S_OK);
    inner->NonDelegatingRelease();
    outer.Aggregate(own);
    EXPECT_EQ(inner->GetOwner(), &outer);
    EXPECT_EQ(outer.References(), 0);

    ComPtr<IBaseFilter> filter;
    ASSERT_EQ(outer.QueryInterface(IID_IBaseFilter, filter.PutVoid()), S_OK);
    EXPECT_EQ(outer.References(), 1); // the outer object's count, not the inner one's
    ComPtr<IUnknown> identity;
    ASSERT_EQ(filter->QueryInterface(IID_IUnknown, identity.PutVoid()), S_OK);
    EXPECT_EQ(identity.Get(), &outer);
    EXPECT_NE(own.Get(), &outer);
    EXPECT_EQ(LivingObjects(), 1);
}

// Hands itself out while it is destroyed, as an object that says good-bye to others does.
class LastWords : public CUnknown {
  public:
    explicit LastWords(int& destroyed) : CUnknown(OLESTR("last words"), nullptr), m_destroyed(destroyed) {}
    ~LastWords() override {
        AsUnknown(*this)->AddRef();
        AsUnknown(*this)->Release();
        ++m_destroyed;
    }

  private:
    int& m_destroyed;
};

TEST_F(UnknownTest, ReferencesTakenDuringDestructionDeleteTheObjectOnce) {
    int destroyed = 0;
    auto* const object = new LastWords(destroyed);
    AsUnknown(*object)->AddRef();
    EXPECT_EQ(AsUnknown(*object)->Release(), 0U);
    EXPECT_EQ(destroyed, 1);
}

class Thrower : public CUnknown {
  public:
    Thrower() : CUnknown(OLESTR("thrower"), nullptr) {}
    STDMETHODIMP NonDelegatingQueryInterface(REFIID riid, void** ppv) override {
        if (riid == IID_IPin) {
            throw std::bad_alloc();
        }
        if (riid == IID_IBaseFilter) {
            throw "Thrower";
        }
        return CUnknown::NonDelegatingQueryInterface(riid, ppv);
    }
};

TEST_F(UnknownTest, ExceptionInQueryInterfaceBecomesAnHresult) {
    const ComPtr<IUnknown> object(AsUnknown(*new Thrower));
    void* out = nullptr;
    EXPECT_EQ(object->QueryInterface(IID_IPin, &out), E_OUTOFMEMORY);
    EXPECT_EQ(object->QueryInterface(IID_IBaseFilter, &out), E_UNEXPECTED);
}

TEST_F(UnknownTest, GetInterfaceNeedsAnOutParameter) {
    const auto filter = MakeFilter();
    EXPECT_EQ(GetInterface(AsUnknown(*filter.Get()), nullptr), E_POINTER);
}

} // namespace
