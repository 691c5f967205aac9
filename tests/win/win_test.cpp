// The owners in win/: what they hold is released exactly once.
#include <gtest/gtest.h>

#include <thread>

#include "win/bstr.h"
#include "win/com_ptr.h"
#include "win/critical_section.h"
#include "win/handle.h"
#include "win/module_version.h"
#include "win/wide_string.h"

namespace {

struct Counted : public IUnknown {
    virtual ~Counted() = default;
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = nullptr;
        if (!IsEqualGUID(iid, IID_IUnknown)) {
            return E_NOINTERFACE;
        }
        *object = this;
        AddRef();
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
    ULONG STDMETHODCALLTYPE Release() override { return --references; }

    ULONG references = 0;
};

TEST(ComPtr, CountsOneReferenceForEachHolder) {
    Counted object;
    {
        win::ComPtr<Counted> first(&object);
        EXPECT_EQ(1u, object.references);
        win::ComPtr<Counted> second = first;
        EXPECT_EQ(2u, object.references);
        second = second;
        EXPECT_EQ(2u, object.references);
        const win::ComPtr<Counted> moved = std::move(first);
        EXPECT_EQ(2u, object.references);
        EXPECT_FALSE(first); // NOLINT(bugprone-use-after-move): a moved-from pointer is empty
        second.Reset();
        EXPECT_EQ(1u, object.references);
    }
    EXPECT_EQ(0u, object.references);
}

TEST(ComPtr, AttachTakesOverAndDetachHandsOn) {
    Counted object;
    object.AddRef();
    win::ComPtr<Counted> pointer;
    pointer.Attach(&object);
    EXPECT_EQ(1u, object.references);
    EXPECT_EQ(&object, pointer.Detach());
    EXPECT_EQ(1u, object.references);
}

TEST(ComPtr, QueryGivesTheOtherInterfaceOrNone) {
    Counted object;
    const win::ComPtr<Counted> pointer(&object);
    {
        const auto unknown = pointer.Query<IUnknown>(IID_IUnknown);
        EXPECT_TRUE(unknown);
        EXPECT_EQ(2u, object.references);
    }
    EXPECT_FALSE(pointer.Query<IStream>(IID_IStream));
    EXPECT_EQ(1u, object.references);
}

TEST(Bstr, NullStaysNullAndEmptyStaysEmpty) {
    EXPECT_EQ(nullptr, win::Bstr::CopyOf(nullptr).Get());
    const win::Bstr empty{WideStringView()};
    ASSERT_NE(nullptr, empty.Get());
    EXPECT_EQ(0u, SysStringLen(empty.Get()));
    EXPECT_TRUE(empty.View().empty());
}

TEST(Bstr, CopiesAreDeepAndKeepInnerZeros) {
    const WideString text(OLESTR("a\0b"), 3);
    const win::Bstr first{text};
    const win::Bstr second = first;
    EXPECT_NE(first.Get(), second.Get());
    EXPECT_EQ(text, WideString(second.View()));
}

struct CountingPolicy {
    using Type = int;
    static Type Invalid() { return -1; }
    static void Close(Type) { ++closed; }
    static inline int closed = 0;
};

TEST(UniqueHandle, ClosesEachHandleOnceAndNeverTheInvalidOne) {
    CountingPolicy::closed = 0;
    {
        win::UniqueHandle<CountingPolicy> none;
        EXPECT_FALSE(none);
        win::UniqueHandle<CountingPolicy> handle(5);
        win::UniqueHandle<CountingPolicy> taken = std::move(handle);
        EXPECT_EQ(5, taken.Get());
        taken.Reset(6);
        EXPECT_EQ(1, CountingPolicy::closed);
    }
    EXPECT_EQ(2, CountingPolicy::closed);
}

TEST(CriticalSection, IsRecursive) {
    win::CriticalSection section;
    section.lock();
    EXPECT_TRUE(section.try_lock());
    section.unlock();
    section.unlock();
}

TEST(LockGuard, HoldsTheLockAsLongAsItLives) {
    win::CriticalSection section;
    const auto othersMayEnter = [&section] {
        bool entered = false;
        std::thread([&] {
            entered = section.try_lock();
            if (entered) {
                section.unlock();
            }
        }).join();
        return entered;
    };
    {
        const win::LockGuard lock(section);
        section.AssertHeld();
        EXPECT_FALSE(othersMayEnter());
    }
    EXPECT_TRUE(othersMayEnter());
}

TEST(WideString, DecimalKeepsTheSignAndTheWholeRange) {
    EXPECT_EQ(WideString(OLESTR("-9223372036854775808")), ToWideDecimal(INT64{-9223372036854775807LL - 1}));
    EXPECT_EQ(WideString(OLESTR("4294967295")), ToWideDecimal(UINT32{4294967295U}));
}

TEST(ModuleVersion, IsEmptyForAProgramWithoutVersionResource) {
    EXPECT_EQ("", win::ModuleVersionText());
}

} // namespace
