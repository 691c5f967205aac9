// What happens when the interleaver waits for streams that give nothing. Timeouts are counted, not measured, so they
// are reported here without waiting.
#include "mux/stall_breaker.h"

#include <gtest/gtest.h>

#include <string>

#include "log/logger.h"
#include "tests/log/log_directory.h"
#include "tests/mux/packet_helpers.h"
#include "tests/support/watchdog.h"

namespace {

class StallBreakerTest : public ::testing::Test {
  protected:
    CMuxInterStream& AddStream(MuxStreamKind kind, bool interleaved = true) {
        CMuxInterStream* const stream = interleaver.AddStream();
        stream->Attach(nullptr, kind, interleaved);
        return *stream;
    }
    void TimeOut(int times) {
        for (int i = 0; i < times; ++i) {
            breaker.OnTimeout();
        }
    }
    void FillVideo(INT32 index, INT64 start) {
        interleaver.AddPacket(MakePacket(index, start, 1));
        auto rest = MakePacket(index, start, 1);
        rest->size = 104857600; // as counted; the data itself does not matter here
        interleaver.AddPacket(std::move(rest));
    }

    CMuxInterleaver interleaver;
    CStallBreaker breaker{interleaver};
};

TEST_F(StallBreakerTest, EachAttemptToTakeAPacketLasts40Ms) {
    EXPECT_EQ(40u, CStallBreaker::kTakeTimeoutMs);
}

TEST_F(StallBreakerTest, FortyNineTimeoutsSuspendNothingAndTheFiftiethSuspendsAllEmptyInterleavedStreams) {
    CMuxInterStream& video = AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    CMuxInterStream& subtitle = AddStream(MuxStreamKind::Subtitle);
    CMuxInterStream& loose = AddStream(MuxStreamKind::Other, false);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(49);
    EXPECT_FALSE(audio.IsSuspended());
    EXPECT_TRUE(audio.IsInterleaved());
    TimeOut(1);
    EXPECT_TRUE(audio.IsSuspended());
    EXPECT_FALSE(audio.IsInterleaved());
    EXPECT_TRUE(subtitle.IsSuspended());
    EXPECT_FALSE(video.IsSuspended());
    EXPECT_TRUE(video.IsInterleaved());
    EXPECT_FALSE(loose.IsSuspended()); // was not waited for anyway
}

TEST_F(StallBreakerTest, WithNothingQueuedAnywhereNothingIsEverSuspended) {
    CMuxInterStream& video = AddStream(MuxStreamKind::Video);
    TimeOut(200);
    EXPECT_FALSE(video.IsSuspended());
}

TEST_F(StallBreakerTest, ProgressForgetsTheSnapshotToo) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(25);
    breaker.OnProgress();
    interleaver.AddPacket(MakePacket(0, 1)); // an old snapshot would not know of it
    TimeOut(50);
    EXPECT_TRUE(audio.IsSuspended());
}

TEST_F(StallBreakerTest, TheSnapshotIsTakenByThe25thTimeout) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(24);
    interleaver.AddPacket(MakePacket(0, 1)); // before the snapshot: does not count as progress
    TimeOut(26);
    EXPECT_TRUE(audio.IsSuspended());
}

TEST_F(StallBreakerTest, APacketQueuedAfterTheSnapshotKeepsTheWaitingFor50TimeoutsMore) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(25);
    interleaver.AddPacket(MakePacket(0, 1));
    TimeOut(25);
    EXPECT_FALSE(audio.IsSuspended());
    // The old snapshot of one packet stays and never matches the two that are queued now.
    TimeOut(100);
    EXPECT_FALSE(audio.IsSuspended());
    std::unique_ptr<CMuxInterPacket> packet;
    audio.Suspend();
    ASSERT_EQ(kMuxOk, interleaver.GetNextPacket(packet, test_support::kWatchdogMs));
    audio.WaitAgain();
    TimeOut(49); // one packet again, as in the snapshot; the 50th timeout compares
    EXPECT_TRUE(audio.IsInterleaved());
    TimeOut(1);
    EXPECT_FALSE(audio.IsInterleaved());
}

TEST_F(StallBreakerTest, AnyOtherResultStartsTheCountAgain) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(49);
    breaker.OnProgress();
    TimeOut(49);
    EXPECT_FALSE(audio.IsSuspended());
    TimeOut(1);
    EXPECT_TRUE(audio.IsSuspended());
}

TEST_F(StallBreakerTest, AfterSuspendingTheNextStallIsCountedFromNothing) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(50);
    audio.WaitAgain();
    TimeOut(49);
    EXPECT_TRUE(audio.IsInterleaved());
    TimeOut(1);
    EXPECT_FALSE(audio.IsInterleaved());
}

TEST_F(StallBreakerTest, AFullVideoQueueSuspendsTheEmptyStreamsAtOnce) {
    CMuxInterStream& video = AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    FillVideo(0, 10);
    TimeOut(1);
    EXPECT_TRUE(audio.IsSuspended());
    EXPECT_FALSE(audio.IsInterleaved());
    EXPECT_FALSE(video.IsSuspended());
}

TEST_F(StallBreakerTest, AFullAudioQueueSuspendsTheEmptyStreamsAtOnce) {
    CMuxInterStream& video = AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(1, 10, 10485760));
    TimeOut(1);
    EXPECT_TRUE(video.IsSuspended());
}

TEST_F(StallBreakerTest, FullSubtitleAndOtherQueuesDoNotCount) {
    CMuxInterStream& video = AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Subtitle);
    AddStream(MuxStreamKind::Other);
    interleaver.AddPacket(MakePacket(1, 10, 1048576));
    interleaver.AddPacket(MakePacket(2, 10, 2000));
    EXPECT_FALSE(interleaver.StreamAt(1)->IsWritable());
    EXPECT_FALSE(interleaver.StreamAt(2)->IsWritable());
    TimeOut(1);
    EXPECT_FALSE(video.IsSuspended());
}

TEST_F(StallBreakerTest, SubtitlesAreWaitedForAgainFromTheResumeTimeOnAndOtherStreamsAreNot) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& audio = AddStream(MuxStreamKind::Audio);
    CMuxInterStream& subtitle = AddStream(MuxStreamKind::Subtitle);
    FillVideo(0, 500);
    TimeOut(1);
    breaker.OnPacketTaken(*MakePacket(0, 499));
    EXPECT_FALSE(subtitle.IsInterleaved());
    breaker.OnPacketTaken(*MakePacket(0, 500));
    EXPECT_TRUE(subtitle.IsInterleaved());
    EXPECT_TRUE(subtitle.IsSuspended()); // stays marked
    EXPECT_FALSE(audio.IsInterleaved());
    EXPECT_TRUE(audio.IsSuspended());
    // Its next packet brings the audio back.
    interleaver.AddPacket(MakePacket(1, 600));
    EXPECT_TRUE(audio.IsInterleaved());
    EXPECT_FALSE(audio.IsSuspended());
}

TEST_F(StallBreakerTest, TheResumeTimeIsTheLatestOfTheNewestPacketsAndIsUsedOnce) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    CMuxInterStream& subtitle = AddStream(MuxStreamKind::Subtitle);
    interleaver.AddPacket(MakePacket(1, 900));
    interleaver.AddPacket(MakePacket(1, 700)); // the newest of its stream, not the latest
    FillVideo(0, 650);
    TimeOut(1);
    breaker.OnPacketTaken(*MakePacket(0, 699));
    EXPECT_FALSE(subtitle.IsInterleaved());
    breaker.OnPacketTaken(*MakePacket(0, 700));
    EXPECT_TRUE(subtitle.IsInterleaved());
    subtitle.Suspend();
    breaker.OnPacketTaken(*MakePacket(0, 10000));
    EXPECT_FALSE(subtitle.IsInterleaved());
}

TEST_F(StallBreakerTest, TheSilentStallSetsNoResumeTime) {
    AddStream(MuxStreamKind::Video);
    CMuxInterStream& subtitle = AddStream(MuxStreamKind::Subtitle);
    interleaver.AddPacket(MakePacket(0, 0));
    TimeOut(50);
    ASSERT_TRUE(subtitle.IsSuspended());
    breaker.OnPacketTaken(*MakePacket(0, 1000000));
    EXPECT_FALSE(subtitle.IsInterleaved());
}

TEST_F(StallBreakerTest, TheFullQueueIsLoggedOnceATimeout) {
    LogDirectory directory;
    g_Logger.SetEnabled(true);
    ASSERT_NE(0, g_Logger.OpenNamedLog(directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true));
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Video);
    FillVideo(0, 1);
    FillVideo(1, 1);
    TimeOut(2);
    g_Logger.CloseLog();
    g_Logger.SetEnabled(false);
    const std::string line = "interleaver.isVideoOrAudioQueueFull()Reseting inerleave on empty  streams\r\n";
    const std::string text = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    const size_t first = text.find(line + line);
    EXPECT_NE(std::string::npos, first);
    EXPECT_EQ(std::string::npos, text.find(line, first + 2 * line.size()));
}

TEST_F(StallBreakerTest, TheNewestStartIs0WhenNothingIsQueuedAndMayBeNegative) {
    AddStream(MuxStreamKind::Video);
    EXPECT_EQ(0, interleaver.NewestStart());
    interleaver.AddPacket(MakePacket(0, -70));
    EXPECT_EQ(-70, interleaver.NewestStart());
}

} // namespace
