// What is told of each input: by its stream while it lives, and kept when it goes.
#include "mux/mux_statistics.h"

#include <gtest/gtest.h>

#include <string>

#include "log/logger.h"
#include "mux/mux_interleaver.h"
#include "tests/log/log_directory.h"
#include "tests/mux/packet_helpers.h"
#include "tests/support/watchdog.h"

namespace {

class MuxStatisticsTest : public ::testing::Test {
  protected:
    CMuxInterStream& AddStream(MuxStreamKind kind) {
        CMuxInterStream* const stream = m_interleaver.AddStream();
        stream->Attach(nullptr, kind, true);
        m_statistics.AddInput();
        return *stream;
    }
    void Begin() {
        m_statistics.BeginRun();
        for (INT32 i = 0; CMuxInterStream* const stream = m_interleaver.StreamAt(i); ++i) {
            m_statistics.Attach(i, *stream);
        }
    }
    // The start of the packet; below zero for none.
    INT64 Take() {
        std::unique_ptr<CMuxInterPacket> packet;
        const int result = m_interleaver.GetNextPacket(packet, test_support::kWatchdogMs);
        return result == kMuxOk ? packet->start : -1;
    }

    CMuxInterleaver m_interleaver;
    CMuxStatistics m_statistics;
};

TEST_F(MuxStatisticsTest, AllIsZeroBeforeTheFirstRunAndAnInputThatIsNotThereHasNone) {
    m_statistics.AddInput();
    const auto input = m_statistics.Of(0);
    ASSERT_TRUE(input);
    EXPECT_EQ(0u, input->stream.packets + input->stream.queuedPackets + input->refused + input->queueLimitBytes);
    EXPECT_FALSE(m_statistics.Of(1));
    EXPECT_FALSE(m_statistics.Of(-1));
    EXPECT_FALSE(m_statistics.GetRun().isRunning);
    EXPECT_EQ(0, m_statistics.GetRun().elapsed);
}

TEST_F(MuxStatisticsTest, WhatIsQueuedAndWhatWasTakenAreToldApartAndAnEndIsNoPacket) {
    AddStream(MuxStreamKind::Audio);
    Begin();
    m_interleaver.AddPacket(MakePacket(0, 10, 100));
    m_interleaver.AddPacket(MakePacket(0, 30, 50));
    m_interleaver.AddPacket(MakeEndOfStream(0));
    ASSERT_EQ(10, Take());
    const auto input = *m_statistics.Of(0);
    EXPECT_EQ(1u, input.stream.packets);
    EXPECT_EQ(100u, input.stream.bytes);
    EXPECT_EQ(1u, input.stream.queuedPackets);
    EXPECT_EQ(50u, input.stream.queuedBytes);
    EXPECT_EQ(10, input.stream.lastStart);
    EXPECT_EQ(10485760u, input.queueLimitBytes);
    ASSERT_EQ(30, Take());
    EXPECT_EQ(2u, m_statistics.Of(0)->stream.packets);
    EXPECT_EQ(0u, m_statistics.Of(0)->stream.queuedPackets);
    EXPECT_EQ(30, m_statistics.Of(0)->stream.lastStart);
}

TEST_F(MuxStatisticsTest, ThePeakIsTheMostThatWasEverQueued) {
    AddStream(MuxStreamKind::Audio);
    Begin();
    for (INT64 start = 0; start < 8; ++start) {
        m_interleaver.AddPacket(MakePacket(0, start, 100'000));
    }
    for (INT64 start = 0; start < 8; ++start) {
        ASSERT_EQ(start, Take());
    }
    for (INT64 start = 8; start < 40; ++start) { // as much at once is never queued again
        m_interleaver.AddPacket(MakePacket(0, start, 100'000));
        ASSERT_EQ(start, Take());
    }
    const UINT64 peak = m_statistics.Of(0)->stream.queuePeakBytes;
    EXPECT_LE(peak, 800'000u);
    EXPECT_GE(peak, 800'000u - 10485760u / 1024);
}

TEST_F(MuxStatisticsTest, AfterTheRunTheFiguresStayAndWhatWasQueuedIsRefused) {
    AddStream(MuxStreamKind::Video);
    Begin();
    m_interleaver.AddPacket(MakePacket(0, 10, 100));
    m_interleaver.AddPacket(MakePacket(0, 20, 100));
    m_interleaver.AddPacket(MakePacket(0, 30, 100));
    ASSERT_EQ(10, Take());
    EXPECT_TRUE(m_statistics.GetRun().isRunning);
    m_statistics.EndRun();
    m_interleaver.ClearStreams();
    m_statistics.EndRun(); // of no run: changes nothing
    const auto input = *m_statistics.Of(0);
    EXPECT_EQ(1u, input.stream.packets);
    EXPECT_EQ(0u, input.stream.queuedPackets);
    EXPECT_EQ(0u, input.stream.queuedBytes);
    EXPECT_EQ(2u, input.refused);
    EXPECT_EQ(104857600u, input.queueLimitBytes);
    EXPECT_FALSE(m_statistics.GetRun().isRunning);
    const INT64 elapsed = m_statistics.GetRun().elapsed;
    EXPECT_EQ(elapsed, m_statistics.GetRun().elapsed);
    m_statistics.BeginRun();
    EXPECT_EQ(0u, m_statistics.Of(0)->stream.packets);
    EXPECT_EQ(0u, m_statistics.Of(0)->refused);
}

TEST_F(MuxStatisticsTest, RefusedSamplesCountWhileTheRunLastsAlone) {
    m_statistics.AddInput();
    m_statistics.CountRefused(0);
    m_statistics.BeginRun();
    m_statistics.CountRefused(0);
    m_statistics.CountRefused(0);
    m_statistics.CountRefused(7);
    m_statistics.CountRefused(-1);
    m_statistics.EndRun();
    m_statistics.CountRefused(0);
    EXPECT_EQ(2u, m_statistics.Of(0)->refused);
}

TEST_F(MuxStatisticsTest, WhatGotLostBehindTheQueueIsTakenOffAgain) {
    CMuxInterStream& stream = AddStream(MuxStreamKind::Video);
    Begin();
    m_interleaver.AddPacket(MakePacket(0, 10, 100));
    m_interleaver.AddPacket(MakePacket(0, 20, 70));
    ASSERT_EQ(10, Take());
    ASSERT_EQ(20, Take());
    stream.CountLost(70);
    EXPECT_EQ(1u, m_statistics.Of(0)->stream.packets);
    EXPECT_EQ(100u, m_statistics.Of(0)->stream.bytes);
    EXPECT_EQ(1u, m_statistics.Of(0)->stream.lost);
}

TEST_F(MuxStatisticsTest, PacketsBehindASilenceAreLateUntilTheInputHasCaughtUp) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    Begin();
    for (const INT64 start : {0, 40, 80}) {
        m_interleaver.AddPacket(MakePacket(0, start));
    }
    m_interleaver.SuspendEmptyStreams();
    m_interleaver.SuspendEmptyStreams(); // it is silent already
    EXPECT_TRUE(m_statistics.Of(1)->stream.isSilent);
    EXPECT_EQ(1u, m_statistics.Of(1)->stream.silences);
    EXPECT_FALSE(m_statistics.Of(0)->stream.isSilent);
    ASSERT_EQ(0, Take());
    ASSERT_EQ(40, Take());
    for (const INT64 start : {10, 30, 60, 70}) {
        m_interleaver.AddPacket(MakePacket(1, start));
    }
    EXPECT_FALSE(m_statistics.Of(1)->stream.isSilent);
    for (const INT64 start : {10, 30, 60, 70}) {
        ASSERT_EQ(start, Take());
    }
    EXPECT_EQ(2u, m_statistics.Of(1)->stream.late);
    EXPECT_EQ(0u, m_statistics.Of(0)->stream.late);
    EXPECT_EQ(1u, m_statistics.Of(1)->stream.silences);
}

TEST_F(MuxStatisticsTest, PicturesThatAreShownInAnotherOrderAreNotLate) {
    AddStream(MuxStreamKind::Video);
    Begin();
    for (const INT64 start : {0, 120, 40, 80}) {
        m_interleaver.AddPacket(MakePacket(0, start));
        ASSERT_EQ(start, Take());
    }
    EXPECT_EQ(0u, m_statistics.Of(0)->stream.late);
}

TEST_F(MuxStatisticsTest, TheLogTellsWhenAStreamFallsSilentAndWhenItIsBack) {
    const LogDirectory directory;
    g_Logger.SetEnabled(true);
    ASSERT_NE(0, g_Logger.OpenNamedLog(directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true));
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    m_interleaver.AddPacket(MakePacket(0, 0));
    m_interleaver.SuspendEmptyStreams();
    m_interleaver.AddPacket(MakePacket(1, 5));
    ASSERT_EQ(0, Take());
    m_interleaver.AddPacket(MakePacket(0, 6));
    ASSERT_EQ(5, Take());
    m_interleaver.AddPacket(MakePacket(1, 7));
    ASSERT_EQ(6, Take());
    g_Logger.CloseLog();
    g_Logger.SetEnabled(false);
    const std::string log = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    const size_t silent = log.find("CMuxInterleaver::SuspendEmptyStreams stream is silent, stream=1\r\n");
    const size_t back = log.find("CMuxInterleaver::GetNextPacket stream is back, stream=1\r\n");
    EXPECT_NE(std::string::npos, silent) << log;
    EXPECT_NE(std::string::npos, back) << log;
    EXPECT_LT(silent, back);
    EXPECT_EQ(std::string::npos, log.find("stream=0"));
    EXPECT_EQ(back, log.rfind("stream is back") - std::string("CMuxInterleaver::GetNextPacket ").size());
}

} // namespace
