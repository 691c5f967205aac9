// The worker: its requests, its order, and what it survives.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <new>
#include <set>

#include "tests/mux/mux_test_fixture.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;
using test_support::FakeUpstreamPin;
using test_support::kWatchdog;

using MuxWorkerTest = MuxTest;

constexpr DWORD kMinusOne = 0xFFFFFFFF;

TEST_F(MuxWorkerTest, AnswersTheRequestsItKnowsWith0AndOthersWithMinusOne) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    ASSERT_TRUE(graph.WaitForEvent(EC_COMPLETE, kWatchdog)); // idle from here
    EXPECT_EQ(0u, mux->CallWorker(1));
    EXPECT_EQ(kMinusOne, mux->CallWorker(3));
    EXPECT_EQ(kMinusOne, mux->CallWorker(77));
    EXPECT_EQ(0u, mux->CallWorker(2)); // runs again, and finds that all have ended
    EXPECT_EQ(0u, mux->CallWorker(1));
    EXPECT_TRUE(mux->ThreadExists());
}

TEST_F(MuxWorkerTest, ARequestEndsTheLoopAndIsThenAnswered) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(0u, mux->CallWorker(1)); // leaves the loop; nothing is taken any more
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_FALSE(mux->WaitForPackets(1, milliseconds(150)));
    EXPECT_EQ(0u, mux->CallWorker(2));
    EXPECT_TRUE(mux->WaitForPackets(1));
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kWatchdog));
}

TEST_F(MuxWorkerTest, ProcessesEveryPacketOnOneThreadThatIsNobodyElses) {
    FakeUpstreamPin& video = ConnectVideo();
    FakeUpstreamPin& audio = ConnectAudio();
    ASSERT_EQ(S_OK, mux->Pause());
    for (INT64 i = 0; i < 100; ++i) {
        EXPECT_EQ(S_OK, video.Deliver({1}, i, i + 1));
        EXPECT_EQ(S_OK, audio.Deliver({2}, i, i + 1));
    }
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_EQ(S_OK, audio.DeliverEndOfStream());
    ASSERT_TRUE(graph.WaitForEvent(EC_COMPLETE, kWatchdog));
    std::set<std::thread::id> threads;
    for (const auto& packet : mux->Seen()) {
        threads.insert(packet.thread);
        EXPECT_EQ(packet.streamIndex, packet.pinIndex);
    }
    EXPECT_EQ(200u, mux->Seen().size());
    EXPECT_EQ(1u, threads.size());
    EXPECT_EQ(0u, threads.count(std::this_thread::get_id()));
}

TEST_F(MuxWorkerTest, GoesOnWhenProcessingAPacketThrowsAndTellsTheUpstreamFilter) {
    FakeUpstreamPin& video = ConnectVideo();
    FakeUpstreamPin& audio = ConnectAudio();
    mux->onPacket = [](CMuxInterPacket&, CBaseMuxInputPin& pin) {
        if (pin.Index() == 0) {
            throw "CMkvWriter::WritePacket something";
        }
    };
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.Deliver({1}, 1, 2));
    EXPECT_EQ(S_OK, audio.Deliver({2}, 5, 6));
    EXPECT_EQ(S_OK, audio.Deliver({2}, 6, 7));
    const auto deadline = steady_clock::now() + kWatchdog;
    while (mux->InputPin(0).Stream()->StreamResult() == S_OK && steady_clock::now() < deadline) {
        std::this_thread::sleep_for(milliseconds(1));
    }
    EXPECT_EQ(E_UNEXPECTED, video.Deliver({1}, 2, 3));
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_EQ(S_OK, audio.DeliverEndOfStream());
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kWatchdog));
    EXPECT_EQ(2u, mux->Seen().size()); // the audio
}

// Memory may run out between the packets, too.
TEST_F(MuxWorkerTest, ALoopThatThrowsEndsTheRunInOrderAndTellsEverybody) {
    int ends = 0;
    sink.OnEndOfStream([&ends] {
        if (ends++ == 0) {
            throw std::bad_alloc();
        }
    });
    ASSERT_EQ(S_OK, ConnectOutput());
    FakeUpstreamPin& video = ConnectVideo();
    FakeUpstreamPin& audio = ConnectAudio();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_EQ(S_OK, audio.DeliverEndOfStream());
    ASSERT_TRUE(sink.WaitForEndOfStream(kWatchdog)) << "nobody waits for the end for ever";
    EXPECT_EQ(E_OUTOFMEMORY, video.Deliver({1}, 0, 1));
    EXPECT_EQ(E_OUTOFMEMORY, audio.Deliver({1}, 0, 1));
    ASSERT_EQ(1, graph.EventCount(EC_STREAM_ERROR_STOPPED));
    EXPECT_EQ(E_OUTOFMEMORY, static_cast<HRESULT>(graph.Events().front().parameter1));
    EXPECT_EQ(S_OK, mux->Stop());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_EQ(S_OK, audio.DeliverEndOfStream());
    EXPECT_TRUE(sink.WaitForEndOfStream(kWatchdog, 2));
    EXPECT_EQ(1u, mux->Seen().size());
}

TEST_F(MuxWorkerTest, TheMuxersRecordedResultReachesTheUpstreamFilter) {
    FakeUpstreamPin& video = ConnectVideo();
    std::atomic<bool> recorded{false};
    mux->onPacket = [&](CMuxInterPacket&, CBaseMuxInputPin& pin) {
        pin.Stream()->SetStreamResult(STG_E_MEDIUMFULL);
        recorded = true;
    };
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.Deliver({1}, 1, 2));
    ASSERT_TRUE(mux->WaitForPackets(1));
    EXPECT_TRUE(recorded);
    EXPECT_EQ(STG_E_MEDIUMFULL, video.Deliver({1}, 2, 3));
}

TEST_F(MuxWorkerTest, AStalledInputHoldsTheOthersForTwoSecondsAndThenNoMore) {
    FakeUpstreamPin& video = ConnectVideo();
    ConnectAudio(); // gives nothing
    ASSERT_EQ(S_OK, mux->Pause());
    const auto begin = steady_clock::now();
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.Deliver({1}, 1, 2));
    ASSERT_TRUE(mux->WaitForPackets(1));
    const auto waited = steady_clock::now() - begin;
    EXPECT_GE(waited, milliseconds(1000)); // 50 timeouts of 40 ms, as the tick count measures them
}

TEST_F(MuxWorkerTest, AFullVideoQueueEndsTheWaitingForAnEmptyInputSoon) {
    FakeUpstreamPin& video = ConnectVideo();
    ConnectAudio(); // gives nothing
    ASSERT_EQ(S_OK, mux->Pause());
    const std::vector<BYTE> frame(20 * 1024 * 1024);
    for (INT64 i = 0; i < 7; ++i) { // the sixth frame would wait for ever without the stall breaker
        EXPECT_EQ(S_OK, video.Deliver(frame, i, i + 1));
    }
    EXPECT_TRUE(mux->WaitForPackets(1));
}

TEST_F(MuxWorkerTest, StopDoesNotWaitForWhatIsQueued) {
    FakeUpstreamPin& video = ConnectVideo();
    mux->onPacket = [this](CMuxInterPacket&, CBaseMuxInputPin&) {
        while (!mux->IsAborted()) { // the first packet lasts until Stop is under way
            std::this_thread::yield();
        }
    };
    ASSERT_EQ(S_OK, mux->Pause());
    for (INT64 i = 0; i < 1000; ++i) {
        EXPECT_EQ(S_OK, video.Deliver({1}, i, i + 1));
    }
    EXPECT_EQ(S_OK, mux->Stop());
    EXPECT_LE(mux->Seen().size(), 1u);
}

#ifdef QRX_NATIVE
TEST_F(MuxWorkerTest, AStarvedWorkerSleepsThrough) {
    ConnectVideo();
    ConnectAudio();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, upstreams[0]->Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, upstreams[0]->Deliver({1}, 1, 2));
    const native::KernelCalls before = native::CountedKernelCalls();
    const auto begin = steady_clock::now();
    constexpr int kSleeps = 10;
    while (native::CountedKernelCalls().waits < before.waits + kSleeps && steady_clock::now() < begin + kWatchdog) {
        std::this_thread::sleep_for(milliseconds(1));
    }
    const native::KernelCalls calls = native::CountedKernelCalls() - before;
    EXPECT_GE(calls.waits, static_cast<std::uint64_t>(kSleeps));
    EXPECT_GE(steady_clock::now() - begin, (kSleeps - 2) * milliseconds(20)); // 40 ms each, as the tick count has it
    EXPECT_EQ(0u, calls.sets + calls.resets + calls.sleeps);
}
#endif

} // namespace
