// Pause, Run and Stop: what each does in which state, and what a refused start leaves behind.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/mux/mux_test_fixture.h"
#include "tests/support/watchdog.h"

namespace {

using test_support::FakeUpstreamPin;
using test_support::kWatchdog;
using test_support::MediaTypeValue;

using BaseMuxStatesTest = MuxTest;

TEST_F(BaseMuxStatesTest, PausingWithNoConnectedInputStartsNoThreadAndCreatesNoStreams) {
    ASSERT_EQ(S_OK, ConnectOutput());
    EXPECT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(State_Paused, mux->State());
    EXPECT_FALSE(mux->ThreadExists());
    EXPECT_EQ(0u, mux->Interleaver().StreamCount());
    EXPECT_EQ(0, mux->starts);
    EXPECT_EQ(S_OK, mux->Stop());
    EXPECT_EQ(State_Stopped, mux->State());
}

TEST_F(BaseMuxStatesTest, PausingFromStoppedStartsStreamingOnce) {
    ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    EXPECT_EQ(S_OK, mux->Pause());
    EXPECT_TRUE(mux->ThreadExists());
    EXPECT_EQ(1, mux->starts);
    EXPECT_EQ(S_OK, mux->Pause()); // paused already
    EXPECT_EQ(S_OK, mux->Run(0));
    EXPECT_EQ(S_OK, mux->Run(0)); // running already
    EXPECT_EQ(State_Running, mux->State());
    EXPECT_EQ(S_OK, mux->Pause()); // back from running starts nothing again
    EXPECT_EQ(State_Paused, mux->State());
    EXPECT_EQ(1, mux->starts);
    EXPECT_EQ(1u, mux->Interleaver().StreamCount());
}

TEST_F(BaseMuxStatesTest, RunningFromStoppedGoesThroughPause) {
    ConnectVideo();
    EXPECT_EQ(S_OK, mux->Run(0));
    EXPECT_EQ(State_Running, mux->State());
    EXPECT_TRUE(mux->ThreadExists());
    EXPECT_EQ(1, mux->starts);
}

TEST_F(BaseMuxStatesTest, StopEndsTheWorkerAndTheStreams) {
    ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_NE(nullptr, mux->InputPin(0).Stream());
    EXPECT_EQ(S_OK, mux->Stop());
    EXPECT_EQ(State_Stopped, mux->State());
    EXPECT_FALSE(mux->ThreadExists());
    EXPECT_EQ(nullptr, mux->InputPin(0).Stream());
    EXPECT_EQ(0u, mux->Interleaver().StreamCount());
    EXPECT_EQ(1, mux->stops);
    EXPECT_TRUE(mux->IsAborted());
    EXPECT_TRUE(mux->Interleaver().IsStopping());
    EXPECT_EQ(S_OK, mux->Stop()); // stopped already
    EXPECT_EQ(1, mux->stops);
}

TEST_F(BaseMuxStatesTest, PauseClearsWhatStopHasSet) {
    ConnectVideo();
    mux->Pause();
    mux->Stop();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_FALSE(mux->IsAborted());
    EXPECT_FALSE(mux->Interleaver().IsStopping());
}

TEST_F(BaseMuxStatesTest, PauseStopPauseRunsAgainWithAFreshThreadAndFreshStreams) {
    FakeUpstreamPin& video = ConnectVideo();
    // What a thread has of its own begins at 0 with a thread; an identifier may come again.
    std::vector<int> packetsOfTheThread;
    mux->onPacket = [&packetsOfTheThread](CMuxInterPacket&, CBaseMuxInputPin&) {
        thread_local int t_packets = 0;
        packetsOfTheThread.push_back(++t_packets);
    };
    for (int run = 0; run < 2; ++run) {
        ASSERT_EQ(S_OK, mux->Pause());
        const size_t before = mux->Seen().size();
        EXPECT_EQ(S_OK, video.Deliver(Data(3), 10, 20));
        EXPECT_EQ(S_OK, video.DeliverEndOfStream());
        ASSERT_TRUE(mux->WaitForPackets(before + 1));
        const auto deadline = std::chrono::steady_clock::now() + kWatchdog;
        while (graph.EventCount(EC_COMPLETE) <= run && std::chrono::steady_clock::now() < deadline) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        EXPECT_NE(std::this_thread::get_id(), mux->Seen().back().thread);
        ASSERT_EQ(S_OK, mux->Stop());
    }
    EXPECT_EQ(2, graph.EventCount(EC_COMPLETE));
    EXPECT_EQ((std::vector<int>{1, 1}), packetsOfTheThread);
    EXPECT_EQ(2, mux->starts);
    EXPECT_EQ(2, mux->stops);
}

TEST_F(BaseMuxStatesTest, StreamsAreMadeForActiveInputsInTheirOrderWithKindAndFlag) {
    ConnectVideo();
    ConnectAudio();
    ConnectSubtitle();
    ConnectOther();
    mux->activeOf = [](int index) { return index != 1; };
    mux->interleavedOf = [](const CMediaType& type) { return type.majortype == MEDIATYPE_Video; };
    ASSERT_EQ(S_OK, mux->Pause());
    CMuxInterleaver& interleaver = mux->Interleaver();
    ASSERT_EQ(3u, interleaver.StreamCount());
    EXPECT_EQ(interleaver.StreamAt(0), mux->InputPin(0).Stream());
    EXPECT_EQ(nullptr, mux->InputPin(1).Stream());
    EXPECT_EQ(interleaver.StreamAt(1), mux->InputPin(2).Stream());
    EXPECT_EQ(interleaver.StreamAt(2), mux->InputPin(3).Stream());
    EXPECT_EQ(nullptr, mux->InputPin(4).Stream()); // the free one
    EXPECT_EQ(MuxStreamKind::Video, interleaver.StreamAt(0)->Kind());
    EXPECT_EQ(104857600u, interleaver.StreamAt(0)->ByteLimit());
    EXPECT_EQ(MuxStreamKind::Subtitle, interleaver.StreamAt(1)->Kind());
    EXPECT_EQ(1048576u, interleaver.StreamAt(1)->ByteLimit());
    EXPECT_EQ(MuxStreamKind::Other, interleaver.StreamAt(2)->Kind());
    EXPECT_EQ(2000u, interleaver.StreamAt(2)->ByteLimit());
    EXPECT_TRUE(interleaver.StreamAt(0)->IsInterleaved());
    EXPECT_FALSE(interleaver.StreamAt(1)->IsInterleaved());
    for (INT32 i = 0; i < 3; ++i) {
        EXPECT_TRUE(interleaver.StreamAt(i)->IsActive());
    }
    EXPECT_EQ(&mux->InputPin(2), interleaver.StreamAt(1)->Pin());
}

TEST_F(BaseMuxStatesTest, ARefusedStartReleasesEverythingAndTellsWhy) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    mux->onStart = [] { return VFW_E_UNSUPPORTED_VIDEO; };
    EXPECT_EQ(VFW_E_UNSUPPORTED_VIDEO, mux->Pause());
    EXPECT_EQ(State_Stopped, mux->State());
    EXPECT_FALSE(mux->ThreadExists());
    EXPECT_EQ(0u, mux->Interleaver().StreamCount());
    EXPECT_EQ(nullptr, mux->InputPin(0).Stream());
    EXPECT_EQ(nullptr, mux->Downstream());
    EXPECT_EQ(0, sink.Stream().References());
    EXPECT_EQ(1, mux->stops);
    EXPECT_EQ(S_FALSE, video.Deliver(Data(1), 0, 1));
    EXPECT_EQ(VFW_E_UNSUPPORTED_VIDEO, mux->Run(0));
    EXPECT_EQ(State_Stopped, mux->State());
    mux->onStart = nullptr;
    EXPECT_EQ(S_OK, mux->Pause());
}

TEST_F(BaseMuxStatesTest, AStartThatAnswersMinusOneGoesOnWithoutAFileAndStillCompletes) {
    FakeUpstreamPin& video = ConnectVideo();
    mux->onStart = [] { return kMuxFailedResult; };
    EXPECT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(State_Paused, mux->State());
    EXPECT_TRUE(mux->ThreadExists());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kWatchdog));
}

TEST_F(BaseMuxStatesTest, AThrowingStartIsARefusedStart) {
    ConnectVideo();
    mux->onStart = []() -> HRESULT { throw std::runtime_error("refused"); };
    EXPECT_EQ(E_UNEXPECTED, mux->Pause());
    EXPECT_EQ(State_Stopped, mux->State());
    mux->onStart = []() -> HRESULT { throw "a plain text"; };
    EXPECT_EQ(E_UNEXPECTED, mux->Pause());
    mux->onStart = []() -> HRESULT { throw std::bad_alloc(); };
    EXPECT_EQ(E_OUTOFMEMORY, mux->Pause());
    EXPECT_FALSE(mux->ThreadExists());
    EXPECT_EQ(0u, mux->Interleaver().StreamCount());
}

TEST_F(BaseMuxStatesTest, AThrowingStopStillStops) {
    ConnectVideo();
    mux->onStop = []() -> HRESULT { throw "a plain text"; };
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, mux->Stop());
    EXPECT_EQ(State_Stopped, mux->State());
    EXPECT_FALSE(mux->ThreadExists());
    EXPECT_EQ(0u, mux->Interleaver().StreamCount());
}

TEST_F(BaseMuxStatesTest, AThrowingKindOrFlagIsARefusedStart) {
    ConnectVideo();
    mux->kindOf = [](const CMediaType&) -> MuxStreamKind { throw std::bad_alloc(); };
    EXPECT_EQ(E_OUTOFMEMORY, mux->Pause());
    EXPECT_EQ(State_Stopped, mux->State());
    EXPECT_EQ(0u, mux->Interleaver().StreamCount());
}

TEST_F(BaseMuxStatesTest, AFilterReleasedWhileStreamingEndsItsWorkerItself) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.Deliver(Data(1), 0, 1));
    video.Unplug(); // the muxer's side refuses, being active
    mux->JoinFilterGraph(nullptr, nullptr);
    mux.Reset();
    EXPECT_EQ(objectsBefore, CBaseObject::ObjectsActive());
    EXPECT_EQ(0, video.References());
}

TEST_F(BaseMuxStatesTest, AnInputWithoutAnAllocatorStopsWithoutErrorAndItsOpenFlushEndsWithTheRun) {
    FakeUpstreamPin bare(test_support::VideoInfoType(mediasubtype::kVp8));
    bare.NotifyNoAllocator();
    ASSERT_EQ(S_OK, bare.ConnectTo(&mux->InputPin(0)));
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, bare.Deliver(Data(1), 0, 1));
    EXPECT_EQ(S_OK, bare.DeliverBeginFlush()); // and nobody ends it
    EXPECT_EQ(S_OK, mux->Stop());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, bare.Deliver(Data(2), 0, 1));
    EXPECT_EQ(S_OK, bare.DeliverEndOfStream());
    EXPECT_TRUE(sink.WaitForEndOfStream(kWatchdog));
    EXPECT_EQ(S_OK, mux->Stop());
    ASSERT_EQ(1u, mux->Seen().size());
    EXPECT_EQ(Data(2), mux->Seen()[0].bytes);
    bare.Unplug();
}

TEST_F(BaseMuxStatesTest, OneInputAfterAnotherCanBeUsedBetweenRuns) {
    FakeUpstreamPin& first = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    mux->Stop();
    first.Unplug();
    ConnectAudio(); // takes In 0
    ASSERT_EQ(S_OK, mux->Pause());
    ASSERT_EQ(1u, mux->Interleaver().StreamCount());
    EXPECT_EQ(MuxStreamKind::Audio, mux->Interleaver().StreamAt(0)->Kind());
}

} // namespace
