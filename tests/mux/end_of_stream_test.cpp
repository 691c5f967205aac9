// End of stream of one input, and of all of them.
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>

#include "log/logger.h"
#include "tests/log/log_directory.h"
#include "tests/mux/mux_test_fixture.h"

namespace {

using std::chrono::milliseconds;
using test_support::FakeUpstreamPin;

constexpr auto kSoon = test_support::kWatchdog;
constexpr auto kLong = test_support::kWatchdog;

class EndOfStreamTest : public MuxTest {
  protected:
    // An input of kind Other whose queue is full, and an empty one that keeps it full.
    FakeUpstreamPin& StartFullOther() {
        FakeUpstreamPin& other = ConnectOther();
        ConnectAudio();
        EXPECT_EQ(S_OK, mux->Pause());
        HoldTheWorker();
        EXPECT_EQ(S_OK, other.Deliver(Data(2000), 0, 1));
        EXPECT_EQ(S_OK, other.Deliver(Data(1), 1, 2));
        EXPECT_FALSE(mux->Interleaver().StreamAt(0)->IsWritable());
        return other;
    }
    static std::future<HRESULT> EndElsewhere(FakeUpstreamPin& upstream) {
        return std::async(std::launch::async, [&upstream] { return upstream.DeliverEndOfStream(); });
    }
};

// Collects what the log says; the muxer's destructor closes it.
class EndOfStreamLogTest : public EndOfStreamTest {
  protected:
    EndOfStreamLogTest() {
        g_Logger.SetEnabled(true);
        g_Logger.OpenNamedLog(m_directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true);
        const auto number = static_cast<INT64>(reinterpret_cast<intptr_t>(&mux->InputPin(0)));
        m_pin = std::to_string(number) + "\r\n";
    }
    ~EndOfStreamLogTest() override { g_Logger.SetEnabled(false); }
    // Closes the muxer first.
    bool LogHolds(const std::string& lines) {
        CloseMuxer();
        return ReadWholeFile(m_directory.Path() + OLESTR("\\QRX_MKVMuxer.log")).find(lines) != std::string::npos;
    }

    LogDirectory m_directory;
    std::string m_pin; // the number of the first input, with the line's end
};

TEST_F(EndOfStreamTest, OneInputThatEndsWithoutASampleEndsTheRunAtOnceDownstream) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_TRUE(sink.WaitForEndOfStream(kLong));
    EXPECT_EQ(0, graph.EventCount(EC_COMPLETE));
    EXPECT_TRUE(mux->Seen().empty());
}

TEST_F(EndOfStreamTest, WithoutAConnectedOutputTheEndIsTheEventComplete) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    ASSERT_TRUE(graph.WaitForEvent(EC_COMPLETE, kLong));
    const auto events = graph.Events();
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(S_OK, static_cast<HRESULT>(events[0].parameter1));
}

class EndOfStreamWithoutOutputTest : public MuxTest {
  protected:
    EndOfStreamWithoutOutputTest() : MuxTest(TestMuxer::Output::Absent) {}
};

TEST_F(EndOfStreamWithoutOutputTest, WithoutAnOutputPinTheEndIsTheEventComplete) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kLong));
}

TEST_F(EndOfStreamTest, WithTwoInputsNothingIsDeliveredDownstreamUntilBothHaveEnded) {
    FakeUpstreamPin& video = ConnectVideo();
    FakeUpstreamPin& audio = ConnectAudio();
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_FALSE(sink.WaitForEndOfStream(milliseconds(200)));
    EXPECT_EQ(S_OK, audio.DeliverEndOfStream());
    EXPECT_TRUE(sink.WaitForEndOfStream(kLong));
    mux->Stop();
    EXPECT_EQ(1, sink.Counts().endsOfStream); // exactly once a run
}

TEST_F(EndOfStreamTest, AfterAllHaveEndedNothingMoreIsWrittenUntilTheNextRun) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    ASSERT_TRUE(sink.WaitForEndOfStream(kLong));
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.Deliver({2}, 1, 2));
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_FALSE(mux->WaitForPackets(1, milliseconds(150)));
    EXPECT_TRUE(mux->ThreadExists());
    EXPECT_EQ(0, mux->stops); // the file is finished by Stop, not by the end
    mux->Stop();
    EXPECT_EQ(1, sink.Counts().endsOfStream);
    EXPECT_EQ(1, mux->stops);
}

TEST_F(EndOfStreamTest, TheEndNeverOvertakesDataAndTheLastFrameComesUnmerged) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.Deliver({1}, 10, 20));
    EXPECT_EQ(S_OK, video.DeliverUntimed({2}));
    EXPECT_EQ(S_OK, video.DeliverUntimed({3}));
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    ASSERT_TRUE(sink.WaitForEndOfStream(kLong));
    const auto seen = mux->Seen();
    ASSERT_EQ(3u, seen.size());
    for (size_t i = 0; i < seen.size(); ++i) {
        EXPECT_EQ(std::vector<BYTE>{static_cast<BYTE>(i + 1)}, seen[i].bytes);
        EXPECT_FALSE(seen[i].endOfStream);
    }
    EXPECT_EQ(10, seen[0].start);
    EXPECT_EQ(0, seen[1].start);
}

TEST_F(EndOfStreamTest, WhileThePinIsFlushingItFailsAndQueuesNothing) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, video.DeliverBeginFlush());
    EXPECT_EQ(kMuxFailedResult, video.DeliverEndOfStream());
    EXPECT_EQ(0u, mux->Interleaver().QueuedPacketCount());
    EXPECT_EQ(S_OK, video.DeliverEndFlush());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kLong));
    EXPECT_EQ(1u, mux->Seen().size());
}

TEST_F(EndOfStreamTest, AfterStopItFails) {
    FakeUpstreamPin& video = ConnectVideo();
    EXPECT_EQ(kMuxFailedResult, video.DeliverEndOfStream()); // never started
    ASSERT_EQ(S_OK, mux->Pause());
    ASSERT_EQ(S_OK, mux->Stop());
    EXPECT_EQ(kMuxFailedResult, video.DeliverEndOfStream());
    EXPECT_EQ(kMuxFailedResult, mux->EndOfStream(nullptr));
}

TEST_F(EndOfStreamTest, StopDuringALongWaitMakesItFailSoon) {
    FakeUpstreamPin& other = StartFullOther();
    auto result = EndElsewhere(other);
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(100)));
    EXPECT_EQ(S_OK, mux->Stop());
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxFailedResult, result.get());
}

TEST_F(EndOfStreamTest, AFlushDuringALongWaitMakesItFailSoon) {
    FakeUpstreamPin& other = StartFullOther();
    auto result = EndElsewhere(other);
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(50)));
    EXPECT_EQ(S_OK, other.DeliverBeginFlush());
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxFailedResult, result.get());
    EXPECT_EQ(1u, mux->Interleaver().QueuedPacketCount());
}

TEST_F(EndOfStreamTest, TheEndWaitsForRoomInTheQueueBehindTheData) {
    FakeUpstreamPin& other = StartFullOther();
    auto result = EndElsewhere(other);
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(100)));
    EXPECT_EQ(S_OK, upstreams[1]->DeliverEndOfStream());
    LetTheWorkerGo();
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(S_OK, result.get());
    EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kLong));
    EXPECT_EQ(2u, mux->Seen().size());
}

TEST_F(EndOfStreamLogTest, LogsAnEndThatFoundRoomAndTheDeliveryDownstream) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    ASSERT_TRUE(sink.WaitForEndOfStream(kLong));
    EXPECT_TRUE(LogHolds("CBaseMux::EndOfStream pin=" + m_pin + "CBaseMux::EndOfStream wait WaitStreamWritable pin=" +
                         m_pin + "CBaseMux::EndOfStream wait dw == WAIT_OBJECT_0 pin=" + m_pin +
                         "CBaseMux::ThreadProc output->DeliverEndOfStream\r\n"));
}

TEST_F(EndOfStreamLogTest, LogsAnEndWhileFlushing) {
    FakeUpstreamPin& video = ConnectVideo();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, video.DeliverBeginFlush());
    EXPECT_EQ(kMuxFailedResult, video.DeliverEndOfStream());
    EXPECT_TRUE(LogHolds("CBaseMux::EndOfStream wait WaitStreamWritable pin=" + m_pin +
                         "CBaseMux::EndOfStream (pin->IsFlushing())" + m_pin));
}

TEST_F(EndOfStreamLogTest, LogsAnEndThatTheStopEventEnds) {
    FakeUpstreamPin& other = StartFullOther();
    mux->Interleaver().SetStop(); // as Stop does first, before it sets the abort flag
    EXPECT_EQ(kMuxFailedResult, other.DeliverEndOfStream());
    EXPECT_TRUE(LogHolds("CBaseMux::EndOfStream wait WaitStreamWritable pin=" + m_pin +
                         "CBaseMux::EndOfStream wait (return -1) pin=" + m_pin));
}

} // namespace
