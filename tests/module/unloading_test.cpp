// What a process keeps of the module after it was unloaded.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>

#include <psapi.h>

#include "tests/module/loaded_module.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/handle_count.h"
#include "tests/support/media_types.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"
#include "win/handle.h"

using namespace test_support;

namespace {

constexpr int kRounds = 25;

class UnloadedModule : public ::testing::Test {
  protected:
    static void SetUpTestSuite() { CoInitializeEx(nullptr, COINIT_MULTITHREADED); }
    static void TearDownTestSuite() { CoUninitialize(); }

    // What the first round loads besides the module may stay.
    template <typename Round>
    static void ExpectNoHandleLeftBy(Round round) {
        round();
        const size_t before = OpenHandleCount();
        for (int i = 0; i < kRounds; ++i) {
            round();
        }
        EXPECT_EQ(before, OpenHandleCount());
    }
};

TEST_F(UnloadedModule, TheCountSeesAHandleThatIsLeftOpen) {
    const size_t before = OpenHandleCount();
    const win::KernelHandle event(CreateEventW(nullptr, TRUE, FALSE, nullptr));
    EXPECT_EQ(before + 1, OpenHandleCount());
}

TEST_F(UnloadedModule, LeavesNoHandleBehindHoweverOftenItIsLoaded) {
    ExpectNoHandleLeftBy([] { const LoadedModule module; });
}

// A refused start: the writer throws, which is what makes the runtime remember the thread.
void RefuseAStart(const LoadedModule& module) {
    win::ComPtr<IBaseFilter> filter;
    ASSERT_EQ(S_OK, module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid()));
    FakeSinkPin sink;
    FakeUpstreamPin source(MediaTypeValue(MEDIATYPE_Video, mediasubtype::kAvc1, FORMAT_None));
    ASSERT_EQ(S_OK, PinNamed(filter.Get(), OLESTR("Out"))->Connect(&sink, nullptr));
    ASSERT_EQ(S_OK, source.ConnectTo(PinNamed(filter.Get(), OLESTR("In 0")).Get()));
    EXPECT_EQ(VFW_E_INVALIDMEDIATYPE, filter->Pause());
    source.Unplug();
    sink.Unplug();
}

TEST_F(UnloadedModule, LeavesNoHandleBehindAfterAnExceptionOnTheHostsThread) {
    ExpectNoHandleLeftBy([] {
        const LoadedModule module;
        RefuseAStart(module);
    });
}

// A filter that runs, and an object of each of the other classes.
void UseAll(const LoadedModule& module) {
    RefuseAStart(module);
    win::ComPtr<IBaseFilter> filter;
    ASSERT_EQ(S_OK, module.Factory(CLSID_MatroskaMuxer)->CreateInstance(nullptr, IID_IBaseFilter, filter.PutVoid()));
    FakeSinkPin sink;
    FakeUpstreamPin source(WaveType(mediasubtype::kPcm));
    ASSERT_EQ(S_OK, PinNamed(filter.Get(), OLESTR("Out"))->Connect(&sink, nullptr));
    ASSERT_EQ(S_OK, source.ConnectTo(PinNamed(filter.Get(), OLESTR("In 0")).Get()));
    ASSERT_EQ(S_OK, filter->Pause());
    ASSERT_EQ(S_OK, source.Deliver(std::vector<BYTE>(100000), 0, 10));
    ASSERT_EQ(S_OK, source.DeliverEndOfStream());
    ASSERT_TRUE(sink.WaitForEndOfStream(kWatchdog));
    ASSERT_EQ(S_OK, filter->Stop());
    source.Unplug();
    sink.Unplug();
    for (const CLSID* page : {&CLSID_MKVMuxerAboutPage, &CLSID_MKVMuxerPropertyPage}) {
        win::ComPtr<IUnknown> object;
        ASSERT_EQ(S_OK, module.Factory(*page)->CreateInstance(nullptr, IID_IUnknown, object.PutVoid()));
    }
}

SIZE_T CommittedBytes() {
    PROCESS_MEMORY_COUNTERS counters{};
    counters.cb = sizeof(counters);
    EXPECT_TRUE(GetProcessMemoryInfo(GetCurrentProcess(), &counters, sizeof(counters)));
    return counters.PagefileUsage;
}

TEST_F(UnloadedModule, LeavesNoHandleAndNoMemoryBehindAfterTwoHundredHosts) {
    constexpr int kHosts = 200;
    // A module has a heap of its own: what it keeps stays with the process, a block a host at least.
    constexpr SIZE_T kLeastLeft = SIZE_T{kHosts} / 2 * 4096;
    size_t handles = 0;
    SIZE_T bytes = 0;
    for (int host = 0; host < kHosts; ++host) {
        if (host == kHosts / 2) {
            handles = OpenHandleCount();
            bytes = CommittedBytes();
        }
        const LoadedModule module;
        UseAll(module);
        EXPECT_EQ(S_OK, module.CanUnloadNow());
    }
    EXPECT_EQ(nullptr, GetModuleHandleW(LoadedModule::Path().c_str()));
    EXPECT_EQ(handles, OpenHandleCount());
    EXPECT_LT(CommittedBytes(), bytes + kLeastLeft);
}

TEST_F(UnloadedModule, AThreadThatWasInsideMayEndAfterwards) {
    auto module = std::make_unique<LoadedModule>();
    std::promise<void> used;
    std::promise<void> unloaded;
    std::thread host([&] {
        RefuseAStart(*module);
        used.set_value();
        unloaded.get_future().wait();
    });
    used.get_future().wait();
    module.reset();
    EXPECT_EQ(nullptr, GetModuleHandleW(LoadedModule::Path().c_str()));
    unloaded.set_value();
    host.join(); // nothing of the module is called any more
}

} // namespace
