#include <array>

#include <gtest/gtest.h>

#include "dshow/am_media_type.h"
#include "tests/dshow/object_count_test.h"
#include "tests/dshow/test_filter.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

using dshow_test::FilterPtr;
using dshow_test::MakeFilter;
using dshow_test::TagOf;
using dshow_test::TestInputPin;
using dshow_test::TypeWithTag;
using win::ComPtr;

class PinEnumeratorTest : public dshow_test::ObjectCountTest {
  protected:
    void SetUp() override {
        filter = MakeFilter();
        filter->AddInput(OLESTR("0"));
        filter->AddInput(OLESTR("1"));
        filter->AddOutput(OLESTR("2"));
        ASSERT_EQ(filter->EnumPins(pins.Put()), S_OK);
    }
    void TearDown() override {
        pins.Reset();
        EXPECT_EQ(filter->AddRef(), 2U); // every pin handed out was released
        EXPECT_EQ(filter->Release(), 1U);
        filter.Reset();
        ObjectCountTest::TearDown();
    }
    // The names of the pins that come, one character each; "!" for a failure.
    static std::string Names(IEnumPins& from, ULONG count) {
        std::array<IPin*, 8> out{};
        ULONG fetched = 99;
        if (FAILED(from.Next(count, out.data(), &fetched))) {
            return "!";
        }
        std::string names;
        for (ULONG i = 0; i < fetched; ++i) {
            LPWSTR id = nullptr;
            EXPECT_EQ(out[i]->QueryId(&id), S_OK);
            names += static_cast<char>(id[0]);
            CoTaskMemFree(id);
            out[i]->Release();
        }
        return names;
    }

    FilterPtr filter;
    ComPtr<IEnumPins> pins;
};

TEST_F(PinEnumeratorTest, PinsComeInOrder) {
    EXPECT_EQ(Names(*pins.Get(), 2), "01");
    EXPECT_EQ(Names(*pins.Get(), 2), "2");
    EXPECT_EQ(Names(*pins.Get(), 2), "");
    ASSERT_EQ(pins->Reset(), S_OK);
    EXPECT_EQ(Names(*pins.Get(), 8), "012");
}

TEST_F(PinEnumeratorTest, NextTellsWhetherAllCame) {
    std::array<IPin*, 4> out{};
    ULONG fetched = 99;
    EXPECT_EQ(pins->Next(0, out.data(), &fetched), S_OK);
    EXPECT_EQ(fetched, 0U);
    EXPECT_EQ(pins->Next(4, out.data(), &fetched), S_FALSE);
    EXPECT_EQ(fetched, 3U);
    for (ULONG i = 0; i < fetched; ++i) {
        out[i]->Release();
    }
    IPin* one = out[0];
    EXPECT_EQ(pins->Next(1, &one, nullptr), S_FALSE);
    EXPECT_EQ(one, nullptr);
}

TEST_F(PinEnumeratorTest, BadArgumentsAreRefused) {
    std::array<IPin*, 2> out{};
    ULONG fetched = 99;
    EXPECT_EQ(pins->Next(2, out.data(), nullptr), E_INVALIDARG);
    EXPECT_EQ(pins->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(fetched, 0U);
    EXPECT_EQ(pins->Clone(nullptr), E_POINTER);
    EXPECT_EQ(pins->QueryInterface(IID_IEnumPins, nullptr), E_POINTER);
    ComPtr<IUnknown> other;
    EXPECT_EQ(pins->QueryInterface(IID_IPin, other.PutVoid()), E_NOINTERFACE);
    EXPECT_EQ(pins->QueryInterface(IID_IEnumPins, other.PutVoid()), S_OK);
    EXPECT_EQ(filter->EnumPins(nullptr), E_POINTER);
}

TEST_F(PinEnumeratorTest, SkipStopsAtTheEnd) {
    EXPECT_EQ(pins->Skip(4), S_FALSE);
    EXPECT_EQ(pins->Skip(0xffffffff), S_FALSE);
    EXPECT_EQ(pins->Skip(2), S_OK);
    EXPECT_EQ(pins->Skip(2), S_FALSE);
    EXPECT_EQ(Names(*pins.Get(), 2), "2");
    EXPECT_EQ(pins->Skip(0), S_OK);
}

TEST_F(PinEnumeratorTest, AddedPinPutsTheEnumeratorOutOfSyncUntilReset) {
    EXPECT_EQ(Names(*pins.Get(), 1), "0");
    filter->AddInput(OLESTR("3"));
    IPin* pin = nullptr;
    ULONG fetched = 99;
    EXPECT_EQ(pins->Next(1, &pin, &fetched), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(pin, nullptr);
    EXPECT_EQ(fetched, 0U);
    EXPECT_EQ(pins->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    ComPtr<IEnumPins> clone;
    EXPECT_EQ(pins->Clone(clone.Put()), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_FALSE(clone);
    ASSERT_EQ(pins->Reset(), S_OK);
    EXPECT_EQ(Names(*pins.Get(), 8), "0123");
}

TEST_F(PinEnumeratorTest, CloneStandsWhereTheOriginalStood) {
    EXPECT_EQ(Names(*pins.Get(), 1), "0");
    ComPtr<IEnumPins> clone;
    ASSERT_EQ(pins->Clone(clone.Put()), S_OK);
    EXPECT_EQ(Names(*clone.Get(), 1), "1");
    EXPECT_EQ(Names(*clone.Get(), 1), "2");
    EXPECT_EQ(Names(*pins.Get(), 1), "1");
}

TEST_F(PinEnumeratorTest, EnumeratorKeepsItsFilterAlive) {
    ComPtr<IEnumPins> last;
    {
        const FilterPtr other = MakeFilter();
        other->AddInput(OLESTR("7"));
        ASSERT_EQ(other->EnumPins(last.Put()), S_OK);
    }
    EXPECT_EQ(Names(*last.Get(), 1), "7");
}

TEST_F(PinEnumeratorTest, ExceptionInTheFilterBecomesAnHresult) {
    filter->throwOnGetPin = true;
    IPin* pin = nullptr;
    EXPECT_EQ(pins->Next(1, &pin, nullptr), E_UNEXPECTED);
    EXPECT_EQ(filter->FindPin(OLESTR("0"), &pin), E_UNEXPECTED);
    filter->throwOnGetPin = false;
}

class MediaTypeEnumeratorTest : public dshow_test::ObjectCountTest {
  protected:
    void SetUp() override {
        pin.script.types = {TypeWithTag(1), TypeWithTag(2), TypeWithTag(3)};
        ASSERT_EQ(pin.EnumMediaTypes(types.Put()), S_OK);
    }
    void TearDown() override {
        types.Reset();
        EXPECT_EQ(filter->AddRef(), 2U);
        EXPECT_EQ(filter->Release(), 1U);
        filter.Reset();
        ObjectCountTest::TearDown();
    }
    static std::string Tags(IEnumMediaTypes& from, ULONG count) {
        std::array<AM_MEDIA_TYPE*, 8> out{};
        ULONG fetched = 99;
        if (FAILED(from.Next(count, out.data(), &fetched))) {
            return "!";
        }
        std::string tags;
        for (ULONG i = 0; i < fetched; ++i) {
            tags += static_cast<char>('0' + TagOf(*out[i]));
            DeleteMediaType(out[i]);
        }
        return tags;
    }

    FilterPtr filter = MakeFilter();
    TestInputPin& pin = filter->AddInput();
    ComPtr<IEnumMediaTypes> types;
};

TEST_F(MediaTypeEnumeratorTest, TypesComeInOrderAsCopies) {
    EXPECT_EQ(Tags(*types.Get(), 2), "12");
    EXPECT_EQ(Tags(*types.Get(), 2), "3");
    EXPECT_EQ(Tags(*types.Get(), 2), "");
    ASSERT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(Tags(*types.Get(), 8), "123");
}

TEST_F(MediaTypeEnumeratorTest, BadArgumentsAreRefused) {
    std::array<AM_MEDIA_TYPE*, 2> out{};
    ULONG fetched = 99;
    EXPECT_EQ(types->Next(2, out.data(), nullptr), E_INVALIDARG);
    EXPECT_EQ(types->Next(1, nullptr, &fetched), E_POINTER);
    EXPECT_EQ(fetched, 0U);
    EXPECT_EQ(types->Clone(nullptr), E_POINTER);
    EXPECT_EQ(types->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
    ComPtr<IUnknown> other;
    EXPECT_EQ(types->QueryInterface(IID_IEnumPins, other.PutVoid()), E_NOINTERFACE);
}

TEST_F(MediaTypeEnumeratorTest, SkipStopsAtTheEnd) {
    EXPECT_EQ(types->Skip(4), S_FALSE);
    EXPECT_EQ(types->Skip(0xffffffff), S_FALSE);
    EXPECT_EQ(types->Skip(0x7fffffff), S_FALSE);
    EXPECT_EQ(types->Skip(0), S_OK);
    EXPECT_EQ(types->Skip(2), S_OK);
    EXPECT_EQ(Tags(*types.Get(), 2), "3");
    EXPECT_EQ(types->Skip(1), S_FALSE);
}

TEST_F(MediaTypeEnumeratorTest, ChangedTypesPutTheEnumeratorOutOfSyncUntilReset) {
    EXPECT_EQ(Tags(*types.Get(), 1), "1");
    pin.script.types = {TypeWithTag(4)};
    pin.IncrementTypeVersion();
    AM_MEDIA_TYPE* type = nullptr;
    EXPECT_EQ(types->Next(1, &type, nullptr), VFW_E_ENUM_OUT_OF_SYNC);
    EXPECT_EQ(type, nullptr);
    EXPECT_EQ(types->Skip(1), VFW_E_ENUM_OUT_OF_SYNC);
    ComPtr<IEnumMediaTypes> clone;
    EXPECT_EQ(types->Clone(clone.Put()), VFW_E_ENUM_OUT_OF_SYNC);
    ASSERT_EQ(types->Reset(), S_OK);
    EXPECT_EQ(Tags(*types.Get(), 8), "4");
}

TEST_F(MediaTypeEnumeratorTest, CloneStandsWhereTheOriginalStood) {
    EXPECT_EQ(types->Skip(1), S_OK);
    ComPtr<IEnumMediaTypes> clone;
    ASSERT_EQ(types->Clone(clone.Put()), S_OK);
    EXPECT_EQ(Tags(*clone.Get(), 8), "23");
    EXPECT_EQ(Tags(*types.Get(), 1), "2");
}

#ifdef QRX_NATIVE
TEST_F(MediaTypeEnumeratorTest, LackOfMemoryHandsOutNothing) {
    std::array<AM_MEDIA_TYPE*, 3> out{};
    ULONG fetched = 99;
    // Each type takes three blocks: the pin's copy, the record and its format.
    const native::ScopedAllocationFailure fails(8);
    EXPECT_EQ(types->Next(3, out.data(), &fetched), E_OUTOFMEMORY);
    EXPECT_EQ(fetched, 0U);
    EXPECT_EQ(out[0], nullptr);
    EXPECT_EQ(out[1], nullptr);
}
#endif

} // namespace
