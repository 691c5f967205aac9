// Stop while somebody waits: for room, for packets, for the stream, for the end; and a run behind each of them.
#include <gtest/gtest.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>
#include <utility>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/watchdog.h"

using namespace test_support;

namespace {

constexpr HRESULT kFailed = -1;
constexpr size_t kSound = 0;
constexpr size_t kText = 1;
constexpr size_t kTextBytes = 100000; // eleven of them are more than its queue takes

// Sound and text, so that the text waits in its queue until sound has come.
class StopInWaits : public ::testing::Test {
  protected:
    StopInWaits() {
        EXPECT_EQ(S_OK, m_rig.ConnectOutput());
        EXPECT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
        EXPECT_EQ(S_OK, m_rig.ConnectInput(TextType()));
        EXPECT_EQ(S_OK, m_rig.Pause());
    }
    // The filter works as ever.
    ~StopInWaits() override {
        EXPECT_EQ(S_OK, m_rig.Pause());
        EXPECT_EQ(S_OK, m_rig.Deliver(kSound, 0, 10));
        EXPECT_EQ(S_OK, m_rig.Deliver(kText, 0, 10));
        EXPECT_TRUE(m_rig.EndAll());
        EXPECT_EQ(S_OK, m_rig.Stop());
        EXPECT_EQ(1u, m_rig.Layout().BlocksOf(1).size());
        EXPECT_EQ(1u, m_rig.Layout().BlocksOf(2).size());
        EXPECT_TRUE(m_rig.Layout().problems.empty());
    }

    // Stop on a thread of its own, which must come back. Where it does not, the program ends: nobody could wait for
    // that thread, this test's end neither.
    [[nodiscard]] std::future<HRESULT> BeginStop() {
        return std::async(std::launch::async, [this] { return m_rig.Stop(); });
    }
    static void ExpectEnd(std::future<HRESULT> stopped) {
        if (stopped.wait_for(kWatchdog) != std::future_status::ready) {
            std::fprintf(stderr, "error: Stop does not come back\n");
            std::abort();
        }
        EXPECT_EQ(S_OK, stopped.get());
    }
    void ExpectStop() { ExpectEnd(BeginStop()); }
    HRESULT DeliverText(INT64 time) {
        return m_rig.Input(kText).Deliver(std::vector<BYTE>(kTextBytes), time, time + 1);
    }
    // Until the queue is full: what comes next has to wait.
    void FillTheQueue() {
        for (INT64 i = 0; i < 12; ++i) { // the last one is still with its pin
            ASSERT_EQ(S_OK, DeliverText(i));
        }
    }

    MuxerRig m_rig;
};

TEST_F(StopInWaits, WhileTheWorkerSleepsBecauseNothingHasCome) {
    ExpectStop();
}

TEST_F(StopInWaits, WhileTheWorkerWaitsForAStreamThatIsSilent) {
    EXPECT_EQ(S_OK, DeliverText(0));
    EXPECT_EQ(S_OK, DeliverText(1));
    ExpectStop();
}

TEST_F(StopInWaits, WhileASourceWaitsForRoom) {
    FillTheQueue();
    auto source = std::async(std::launch::async, [this] { return DeliverText(100); });
    ExpectStop();
    const HRESULT hr = source.get();
    EXPECT_TRUE(hr == S_OK || hr == S_FALSE) << hr; // dropped, or too late
}

TEST_F(StopInWaits, WhileAnEndOfStreamWaitsForRoom) {
    FillTheQueue();
    auto source = std::async(std::launch::async, [this] { return m_rig.Input(kText).DeliverEndOfStream(); });
    ExpectStop();
    const HRESULT hr = source.get();
    EXPECT_TRUE(hr == kFailed || hr == S_OK) << hr; // after two seconds nobody waits for the sound any more
}

TEST_F(StopInWaits, WhileAnInputIsFlushedAndItsSourceWaits) {
    FillTheQueue();
    auto source = std::async(std::launch::async, [this] { return DeliverText(100); });
    EXPECT_EQ(S_OK, m_rig.Input(kText).DeliverBeginFlush());
    ExpectStop();
    EXPECT_TRUE(SUCCEEDED(source.get()));
    EXPECT_EQ(S_OK, m_rig.Input(kText).DeliverEndFlush());
}

// The write is not abandoned: Stop waits for it, and the file is whole.
TEST_F(StopInWaits, WhileTheWorkerIsInsideAWrite) {
    EXPECT_EQ(S_OK, m_rig.Stop());
    std::promise<void> entered;
    std::promise<void> goOn;
    std::atomic<int> calls{0};
    const auto stopper = std::this_thread::get_id();
    m_rig.Sink().Stream().OnEveryCall([&, released = goOn.get_future().share()] {
        if (std::this_thread::get_id() != stopper && calls++ == 0) {
            entered.set_value();
            released.wait();
        }
    });
    EXPECT_EQ(S_OK, m_rig.Pause());
    for (const INT64 time : {0, 40000, 80000}) { // each in a cluster of its own
        EXPECT_EQ(S_OK, m_rig.Deliver(kSound, time, 10));
        EXPECT_EQ(S_OK, m_rig.Deliver(kText, time, 10));
    }
    ASSERT_EQ(std::future_status::ready, entered.get_future().wait_for(kWatchdog));
    auto stopped = BeginStop();
    goOn.set_value();
    ExpectEnd(std::move(stopped));
    EXPECT_TRUE(m_rig.Layout().problems.empty());
    EXPECT_TRUE(m_rig.Layout().cuts.empty());
    m_rig.Sink().Stream().OnEveryCall([] {});
}

} // namespace
