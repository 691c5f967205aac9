// The order in which packets are taken, and the results of taking and adding.
#include "mux/mux_interleaver.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "tests/mux/packet_helpers.h"
#include "tests/support/watchdog.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr DWORD kTakeTimeoutMs = 40;

class MuxInterleaverTest : public ::testing::Test {
  protected:
    CMuxInterStream& AddStream(MuxStreamKind kind, bool interleaved = true) {
        CMuxInterStream* const stream = interleaver.AddStream();
        stream->Attach(nullptr, kind, interleaved);
        return *stream;
    }
    // For what can be answered at once; the time is up for a product that cannot, never for a slow machine.
    int Take() { return interleaver.GetNextPacket(taken, test_support::kWatchdogMs); }
    // For what no time would be enough for.
    int TakeInVain(DWORD timeoutMs = 1) { return interleaver.GetNextPacket(taken, timeoutMs); }

    CMuxInterleaver interleaver;
    std::unique_ptr<CMuxInterPacket> taken;
};

TEST_F(MuxInterleaverTest, ResultsHaveTheirNumbers) {
    EXPECT_EQ(0, kMuxOk);
    EXPECT_EQ(-1, kMuxFailed);
    EXPECT_EQ(-2, kMuxStopping);
    EXPECT_EQ(-3, kMuxAllEnded);
    EXPECT_EQ(static_cast<HRESULT>(0xFFFFFFFF), kMuxFailedResult);
}

TEST_F(MuxInterleaverTest, EqualStartTimesTheLowerIndexIsTakenFirst) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(1, 100));
    interleaver.AddPacket(MakePacket(0, 100));
    interleaver.AddPacket(MakeEndOfStream(0));
    ASSERT_EQ(kMuxOk, Take());
    EXPECT_EQ(0, taken->streamIndex);
    ASSERT_EQ(kMuxOk, Take());
    EXPECT_EQ(1, taken->streamIndex);
}

TEST_F(MuxInterleaverTest, TheEarliestFrontIsTakenFirst) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    for (const INT64 start : {10, 30, 50}) {
        interleaver.AddPacket(MakePacket(0, start));
    }
    for (const INT64 start : {-5, 20, 40}) {
        interleaver.AddPacket(MakePacket(1, start));
    }
    interleaver.AddPacket(MakeEndOfStream(0));
    interleaver.AddPacket(MakeEndOfStream(1));
    std::vector<std::int64_t> starts;
    while (Take() == kMuxOk) {
        starts.push_back(taken->start);
    }
    EXPECT_EQ((std::vector<std::int64_t>{-5, 10, 20, 30, 40, 50}), starts);
    EXPECT_EQ(kMuxAllEnded, Take());
}

TEST_F(MuxInterleaverTest, AStreamKeepsItsOwnOrderWhateverTheTimes) {
    AddStream(MuxStreamKind::Video);
    for (const INT64 start : {30, 10, 20}) {
        interleaver.AddPacket(MakePacket(0, start));
    }
    interleaver.AddPacket(MakeEndOfStream(0));
    std::vector<std::int64_t> starts;
    while (Take() == kMuxOk) {
        starts.push_back(taken->start);
    }
    EXPECT_EQ((std::vector<std::int64_t>{30, 10, 20}), starts);
}

TEST_F(MuxInterleaverTest, WithAnEmptyInterleavedAudioStreamNothingIsTakenFor40MsHoweverMuchVideoWaits) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    for (INT64 i = 0; i < 1000; ++i) {
        interleaver.AddPacket(MakePacket(0, i));
    }
    const auto begin = steady_clock::now();
    EXPECT_EQ(kMuxFailed, TakeInVain(kTakeTimeoutMs));
    const auto waited = steady_clock::now() - begin;
    EXPECT_EQ(nullptr, taken);
    EXPECT_GE(waited, milliseconds(20)); // the tick count may advance in steps of 16 ms
    EXPECT_EQ(1000u, interleaver.QueuedPacketCount());
}

TEST_F(MuxInterleaverTest, WhenTheEmptyAudioStreamEndsTheVideoFlowsAndThenAllHaveEnded) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 1));
    interleaver.AddPacket(MakePacket(0, 2));
    EXPECT_EQ(kMuxFailed, TakeInVain());
    interleaver.AddPacket(MakeEndOfStream(1));
    EXPECT_EQ(kMuxOk, Take());
    EXPECT_EQ(kMuxOk, Take());
    EXPECT_EQ(kMuxFailed, TakeInVain()); // video may still go on
    interleaver.AddPacket(MakeEndOfStream(0));
    EXPECT_EQ(kMuxAllEnded, Take());
    EXPECT_EQ(kMuxAllEnded, Take());
    EXPECT_EQ(2u, interleaver.QueuedPacketCount());
}

TEST_F(MuxInterleaverTest, WithNoStreamsTheFirstPassSaysThatAllHaveEnded) {
    AddStream(MuxStreamKind::Video);
    interleaver.AddPacket(MakePacket(0, 0));
    interleaver.ClearStreams();
    EXPECT_EQ(kMuxAllEnded, Take());
}

TEST_F(MuxInterleaverTest, BeforeAnythingWasEverQueuedThereIsNoPassAtAll) {
    EXPECT_EQ(kMuxFailed, TakeInVain(1));
    AddStream(MuxStreamKind::Video);
    EXPECT_EQ(kMuxFailed, TakeInVain(1));
}

TEST_F(MuxInterleaverTest, AStreamOfKindOtherBlocksItsProducerAsSoonAs2000BytesAreQueued) {
    CMuxInterStream& stream = AddStream(MuxStreamKind::Other);
    interleaver.AddPacket(MakePacket(0, 0, 1999));
    EXPECT_EQ(CMuxInterleaver::RoomWait::Writable, interleaver.WaitForRoom(stream, 1));
    interleaver.AddPacket(MakePacket(0, 1, 1));
    EXPECT_EQ(CMuxInterleaver::RoomWait::TimedOut, interleaver.WaitForRoom(stream, 1));
    ASSERT_EQ(kMuxOk, Take());
    EXPECT_EQ(CMuxInterleaver::RoomWait::Writable, interleaver.WaitForRoom(stream, 1));
}

TEST_F(MuxInterleaverTest, TheLimitIsTestedWhenRoomIsAskedForNotWhenAPacketIsAppended) {
    AddStream(MuxStreamKind::Other);
    EXPECT_EQ(kMuxOk, interleaver.AddPacket(MakePacket(0, 0, 5000)));
    EXPECT_EQ(kMuxOk, interleaver.AddPacket(MakePacket(0, 1, 5000)));
    EXPECT_EQ(10000u, interleaver.StreamAt(0)->QueuedBytes());
}

TEST_F(MuxInterleaverTest, StopWinsEvenIfPacketsAreAvailable) {
    AddStream(MuxStreamKind::Video);
    interleaver.AddPacket(MakePacket(0, 0));
    interleaver.SetStop();
    EXPECT_EQ(kMuxStopping, Take());
    EXPECT_EQ(nullptr, taken);
    interleaver.ResetStop();
    EXPECT_EQ(kMuxOk, Take());
}

TEST_F(MuxInterleaverTest, APacketForAnUnknownStreamIsDeletedAndRefused) {
    AddStream(MuxStreamKind::Video);
    EXPECT_EQ(kMuxFailed, interleaver.AddPacket(MakePacket(-1, 0)));
    EXPECT_EQ(kMuxFailed, interleaver.AddPacket(MakePacket(1, 0)));
    EXPECT_EQ(kMuxFailed, interleaver.AddPacket(nullptr));
    EXPECT_EQ(0u, interleaver.QueuedPacketCount());
}

TEST_F(MuxInterleaverTest, ANewPacketIsEmptyAndKnowsItsStream) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    std::unique_ptr<CMuxInterPacket> packet;
    ASSERT_EQ(kMuxOk, interleaver.NewPacket(1, packet));
    EXPECT_EQ(1, packet->streamIndex);
    EXPECT_FALSE(packet->endOfStream);
    EXPECT_EQ(0u, packet->size);
}

TEST_F(MuxInterleaverTest, NoNewPacketWhileStoppingEvenWithRoom) {
    AddStream(MuxStreamKind::Video);
    interleaver.SetStop();
    auto packet = MakePacket(0, 0);
    EXPECT_EQ(kMuxFailed, interleaver.NewPacket(0, packet));
    EXPECT_EQ(nullptr, packet);
}

TEST_F(MuxInterleaverTest, NoNewPacketForAStreamThatDoesNotExist) {
    std::unique_ptr<CMuxInterPacket> packet;
    EXPECT_EQ(kMuxFailed, interleaver.NewPacket(0, packet));
    EXPECT_EQ(kMuxFailed, interleaver.NewPacket(-1, packet));
}

TEST_F(MuxInterleaverTest, StreamsThatAreNotActiveAreSkipped) {
    interleaver.AddStream(); // not attached
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    interleaver.AddPacket(MakePacket(1, 7));
    interleaver.AddPacket(MakeEndOfStream(1));
    ASSERT_EQ(kMuxOk, Take());
    EXPECT_EQ(1, taken->streamIndex);
    EXPECT_EQ(kMuxAllEnded, Take());
}

TEST_F(MuxInterleaverTest, AnEmptyStreamThatIsNotInterleavedIsNotWaitedFor) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Subtitle, false);
    interleaver.AddPacket(MakePacket(0, 9));
    EXPECT_EQ(kMuxOk, Take());
}

// An upstream filter that goes on after its end, or says it twice, must not keep the run from ending.
TEST_F(MuxInterleaverTest, WhatComesBehindAnEndOfStreamIsNeverTakenAndHoldsNobodyUp) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakeEndOfStream(0));
    EXPECT_EQ(kMuxOk, interleaver.AddPacket(MakePacket(0, 3)));
    EXPECT_EQ(kMuxOk, interleaver.AddPacket(MakeEndOfStream(0)));
    interleaver.AddPacket(MakePacket(1, 8));
    interleaver.AddPacket(MakeEndOfStream(1));
    ASSERT_EQ(kMuxOk, Take());
    EXPECT_EQ(1, taken->streamIndex);
    EXPECT_EQ(kMuxAllEnded, Take());
}

TEST_F(MuxInterleaverTest, ClearingTheStreamsDeletesWhatIsQueued) {
    AddStream(MuxStreamKind::Video);
    interleaver.AddPacket(MakePacket(0, 0, 100000));
    interleaver.ClearStreams();
    EXPECT_EQ(0u, interleaver.StreamCount());
    EXPECT_EQ(nullptr, interleaver.StreamAt(0));
    AddStream(MuxStreamKind::Video);
    EXPECT_EQ(0u, interleaver.StreamAt(0)->Index());
    EXPECT_TRUE(interleaver.StreamAt(0)->IsEmpty());
}

} // namespace
