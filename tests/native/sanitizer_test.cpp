// The sanitizers of the lane are awake: each fault that they are there for ends a program, with its name in the
// report; and calls in the platform's calling convention are no fault.
#include <gtest/gtest.h>

#include <sanitizer/lsan_interface.h>

#include <cstdlib>
#include <limits>
#include <mutex>
#include <stdexcept>

#include "win/bstr.h"
#include "win/com_ptr.h"
#include "win/critical_section.h"

GTEST_DECLARE_bool_(death_test_use_fork); // GoogleTest defines it without declaring it to users

namespace {

constexpr ULONG kReferencesOfAStatic = 1;

class TwoInterfaces : public IPersistStream, public ISpecifyPropertyPages {
  public:
    virtual ~TwoInterfaces() = default;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** object) override {
        *object = IsEqualIID(iid, IID_ISpecifyPropertyPages)
                      ? static_cast<void*>(static_cast<ISpecifyPropertyPages*>(this))
                      : static_cast<void*>(static_cast<IPersistStream*>(this));
        return S_OK;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return kReferencesOfAStatic; }
    ULONG STDMETHODCALLTYPE Release() override { return kReferencesOfAStatic; }
    HRESULT STDMETHODCALLTYPE GetClassID(CLSID*) override { return S_OK; }
    HRESULT STDMETHODCALLTYPE IsDirty() override { return S_FALSE; }
    HRESULT STDMETHODCALLTYPE Load(IStream*) override { throw std::runtime_error("Load"); }
    HRESULT STDMETHODCALLTYPE Save(IStream*, BOOL) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetSizeMax(ULARGE_INTEGER*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPages(CAUUID* pages) override {
        pages->cElems = 2;
        return S_OK;
    }
};

// A pointer that the optimiser cannot follow.
template <typename Pointer>
Pointer Opaque(Pointer pointer) {
    volatile Pointer hidden = pointer;
    return hidden;
}

// Ends the process with a report if something leaked; the exit status without one is 0.
[[noreturn]] void ExitAfterLeakCheck() {
    __lsan_do_leak_check();
    std::_Exit(0);
}

void LeakBstr() {
    BSTR text = SysAllocString(OLESTR("lost"));
    EXPECT_NE(text, nullptr);
    text = nullptr;
}

class SanitizerDeathTest : public testing::Test {
  protected:
    // Each death runs in a process of its own, started afresh: the leak check needs one without other threads. By
    // fork, since clone needs a stack that GoogleTest cannot find under the sanitizer.
    void SetUp() override {
        GTEST_FLAG_SET(death_test_style, "threadsafe");
        GTEST_FLAG_SET(death_test_use_fork, true);
    }
};

TEST_F(SanitizerDeathTest, LeakedBlockIsReported) {
    EXPECT_DEATH(
        {
            LeakBstr();
            ExitAfterLeakCheck();
        },
        "LeakSanitizer: detected memory leaks");
}

TEST_F(SanitizerDeathTest, FreedBlockIsNoLeak) {
    EXPECT_EXIT(
        {
            SysFreeString(SysAllocString(OLESTR("kept")));
            ExitAfterLeakCheck();
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(SanitizerDeathTest, CriticalSectionThatIsNeverDeletedIsReported) {
    EXPECT_DEATH(
        {
            {
                CRITICAL_SECTION section;
                InitializeCriticalSection(&section);
                section = {};
            }
            ExitAfterLeakCheck();
        },
        "LeakSanitizer: detected memory leaks");
}

TEST_F(SanitizerDeathTest, ReadingBehindABstrIsReported) {
    EXPECT_DEATH(
        {
            const BSTR text = SysAllocStringLen(OLESTR("ab"), 2);
            std::_Exit(Opaque(text)[8]);
        },
        "heap-buffer-overflow");
}

TEST_F(SanitizerDeathTest, FreeingABstrTwiceIsReported) {
    EXPECT_DEATH(
        {
            volatile BSTR text = SysAllocString(OLESTR("ab"));
            SysFreeString(text);
            SysFreeString(text);
        },
        "double-free");
}

TEST_F(SanitizerDeathTest, SignedOverflowIsReported) {
    EXPECT_DEATH(
        {
            volatile INT64 largest = std::numeric_limits<INT64>::max();
            largest = largest + 1;
        },
        "signed integer overflow");
}

TEST_F(SanitizerDeathTest, ObjectOfAnotherClassIsReported) {
    EXPECT_DEATH(
        {
            TwoInterfaces object;
            auto* const wrong = reinterpret_cast<ISequentialStream*>(static_cast<ISpecifyPropertyPages*>(&object));
            (void)Opaque(wrong)->Read(nullptr, 0, nullptr);
        },
        "does not point to an object of type");
}

TEST_F(SanitizerDeathTest, MisusedCriticalSectionEndsTheProgram) {
    EXPECT_DEATH(
        {
            CRITICAL_SECTION section;
            InitializeCriticalSection(&section);
            LeaveCriticalSection(&section);
        },
        "left more often than entered");
    EXPECT_DEATH(
        {
            CRITICAL_SECTION section = {};
            EnterCriticalSection(&section);
        },
        "used before InitializeCriticalSection");
}

TEST(CallingConvention, InterfacesOfOneObjectAreCalledThroughEither) {
    TwoInterfaces object;
    const win::ComPtr<IPersistStream> first(&object);
    EXPECT_EQ(first->IsDirty(), S_FALSE);
    const auto second = first.Query<ISpecifyPropertyPages>(IID_ISpecifyPropertyPages);
    CAUUID pages = {};
    EXPECT_EQ(second->GetPages(&pages), S_OK);
    EXPECT_EQ(pages.cElems, 2U);
}

TEST(CallingConvention, ExceptionsUnwindThroughIt) {
    TwoInterfaces object;
    IPersistStream* const stream = &object;
    win::CriticalSection section;
    try {
        const std::lock_guard lock(section);
        (void)stream->Load(nullptr);
        FAIL() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Load");
    }
    section.lock(); // would end the program had the guard not left it
    section.unlock();
}

} // namespace
