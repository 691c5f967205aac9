// What a process keeps of the module after it was unloaded.
#include <initguid.h>

#include <qrx_mkvmuxer.h>

#include <gtest/gtest.h>

#include <future>
#include <memory>
#include <thread>

#include "tests/module/loaded_module.h"
#include "tests/support/fake_sink_pin.h"
#include "tests/support/fake_upstream_pin.h"
#include "tests/support/handle_count.h"
#include "tests/support/media_types.h"
#include "tests/support/pin_lookup.h"
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
