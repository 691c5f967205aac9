// Receive: from an upstream filter's sample to a queued packet, and what becomes of samples that are not welcome.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <future>

#include "tests/mux/hooked_sample.h"
#include "tests/mux/mux_test_fixture.h"
#include "tests/mux/recorded_sleeps.h"

namespace {

using std::chrono::milliseconds;
using test_support::FakeMediaSample;
using test_support::FakeUpstreamPin;
using test_support::MediaTypeValue;

constexpr auto kSoon = test_support::kWatchdog;

class ReceiveTest : public MuxTest {
  protected:
    // One input whose packets the worker sees as soon as they are queued.
    void StartWith(FakeUpstreamPin& upstream) {
        input = &upstream;
        ASSERT_EQ(S_OK, mux->Pause());
    }
    void StartVideo() { StartWith(ConnectVideo()); }

    [[nodiscard]] size_t Queued() const { return mux->Interleaver().QueuedPacketCount(); }

    // Ends the stream and gives what the muxer saw.
    std::vector<SeenPacket> Finish() {
        EXPECT_EQ(S_OK, input->DeliverEndOfStream());
        EXPECT_TRUE(graph.WaitForEvent(EC_COMPLETE, kSoon));
        return mux->Seen();
    }
    // Fills the queue of an input of kind Other, so that the next sample must wait.
    void StartFullOther() {
        FakeUpstreamPin& other = ConnectOther();
        ConnectAudio(); // stays empty
        StartWith(other);
        HoldTheWorker();
        EXPECT_EQ(S_OK, other.Deliver(Data(2000), 0, 1));
        EXPECT_EQ(S_OK, other.Deliver(Data(1), 1, 2)); // makes the first one a finished frame
        EXPECT_FALSE(mux->Interleaver().StreamAt(0)->IsWritable());
    }
    std::future<HRESULT> DeliverElsewhere(FakeUpstreamPin& upstream) {
        return std::async(std::launch::async, [&upstream] { return upstream.Deliver(Data(1), 2, 3); });
    }

    FakeUpstreamPin* input = nullptr;
};

TEST_F(ReceiveTest, ASampleReceivedWhileStoppedGivesSFalse) {
    FakeUpstreamPin& video = ConnectVideo();
    EXPECT_EQ(S_FALSE, video.Deliver(Data(1), 0, 1));
    mux->Pause();
    mux->Stop();
    EXPECT_EQ(S_FALSE, video.Deliver(Data(1), 0, 1));
}

TEST_F(ReceiveTest, ASampleForAnInputThatIsNotActiveGivesSFalse) {
    FakeUpstreamPin& video = ConnectVideo();
    mux->activeOf = [](int) { return false; };
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_FALSE, video.Deliver(Data(1), 0, 1));
    EXPECT_EQ(kMuxFailedResult, video.DeliverEndOfStream());
}

TEST_F(ReceiveTest, NoSampleIsAPointerError) {
    StartVideo();
    EXPECT_EQ(E_POINTER, input->Input()->Receive(nullptr));
}

TEST_F(ReceiveTest, AStreamsRecordedResultIsReturnedWithoutLookingAtTheSample) {
    StartVideo();
    mux->InputPin(0).Stream()->SetStreamResult(STG_E_MEDIUMFULL);
    EXPECT_EQ(STG_E_MEDIUMFULL, input->Deliver(Data(1), 0, 1));
    mux->InputPin(0).Stream()->SetStreamResult(S_FALSE); // any value but zero
    EXPECT_EQ(S_FALSE, input->Deliver(Data(1), 0, 1));
    mux->InputPin(0).Stream()->SetStreamResult(S_OK);
    EXPECT_EQ(S_OK, input->Deliver(Data(1), 0, 1));
    EXPECT_EQ(1u, Finish().size());
}

TEST_F(ReceiveTest, APacketCarriesTimesDataAndSyncPointAndNothingOfTheSampleIsKept) {
    StartVideo();
    FakeMediaSample sample({1, 2, 3});
    sample.WithTimes(100, 250).WithSyncPoint();
    EXPECT_EQ(S_OK, input->Deliver(sample));
    EXPECT_EQ(0, sample.References());
    const auto seen = Finish();
    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ(100, seen[0].start);
    EXPECT_EQ(250, seen[0].stop);
    EXPECT_TRUE(seen[0].hasTime);
    EXPECT_TRUE(seen[0].syncPoint);
    EXPECT_EQ((std::vector<BYTE>{1, 2, 3}), seen[0].bytes);
    EXPECT_EQ(0, seen[0].streamIndex);
    EXPECT_EQ(0, seen[0].pinIndex);
}

TEST_F(ReceiveTest, WithoutAStopTimeThePacketStopsWhereItStarts) {
    StartVideo();
    FakeMediaSample sample({1});
    EXPECT_EQ(S_OK, input->Deliver(sample.WithStartOnly(70)));
    const auto seen = Finish();
    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ(70, seen[0].start);
    EXPECT_EQ(70, seen[0].stop);
    EXPECT_TRUE(seen[0].hasTime);
    EXPECT_FALSE(seen[0].syncPoint);
}

TEST_F(ReceiveTest, WithoutATimeThePacketHasNone) {
    StartVideo();
    EXPECT_EQ(S_OK, input->DeliverUntimed({1}));
    const auto seen = Finish();
    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ(0, seen[0].start);
    EXPECT_EQ(0, seen[0].stop);
    EXPECT_FALSE(seen[0].hasTime);
}

TEST_F(ReceiveTest, TwoTimedSamplesThenTwoUntimedOnesGiveOnePacketATimedSampleWithTheUntimedBytesInTheSecond) {
    ConnectAudio(); // In 0 stays empty
    StartWith(ConnectVideo());
    HoldTheWorker();
    EXPECT_EQ(S_OK, input->Deliver({1}, 10, 20));
    EXPECT_EQ(0u, Queued());
    EXPECT_EQ(S_OK, input->Deliver({2}, 20, 30));
    EXPECT_EQ(1u, Queued());
    EXPECT_EQ(S_OK, input->DeliverUntimed({3}));
    EXPECT_EQ(S_OK, input->DeliverUntimed({4, 5}));
    EXPECT_EQ(1u, Queued());
    EXPECT_EQ(S_OK, input->Deliver({6}, 30, 40));
    EXPECT_EQ(2u, Queued());
    LetTheWorkerGo();
    EXPECT_EQ(S_OK, upstreams[0]->DeliverEndOfStream());
    const auto seen = Finish();
    ASSERT_EQ(3u, seen.size());
    EXPECT_EQ((std::vector<BYTE>{1}), seen[0].bytes);
    EXPECT_EQ((std::vector<BYTE>{2, 3, 4, 5}), seen[1].bytes);
    EXPECT_EQ(20, seen[1].start);
    EXPECT_EQ(30, seen[1].stop);
    EXPECT_EQ((std::vector<BYTE>{6}), seen[2].bytes);
}

TEST_F(ReceiveTest, AnUntimedMp3SampleOf417BytesGets260625Units) {
    StartWith(ConnectInput(test_support::WaveType(mediasubtype::kMp3, {.averageBytesPerSecond = 16000})));
    EXPECT_EQ(S_OK, input->DeliverUntimed(Data(417)));
    EXPECT_EQ(S_OK, input->DeliverUntimed(Data(417)));
    const auto seen = Finish();
    ASSERT_EQ(2u, seen.size());
    EXPECT_EQ(0, seen[0].start);
    EXPECT_EQ(260625, seen[0].stop);
    EXPECT_EQ(260625, seen[1].start);
    EXPECT_EQ(521250, seen[1].stop);
}

TEST_F(ReceiveTest, TheRunningAudioTimeBeginsAt0WithEveryRun) {
    StartWith(ConnectInput(test_support::WaveType(mediasubtype::kMp3, {.averageBytesPerSecond = 16000})));
    EXPECT_EQ(S_OK, input->DeliverUntimed(Data(417)));
    mux->Stop();
    ASSERT_EQ(S_OK, mux->Pause());
    EXPECT_EQ(S_OK, input->DeliverUntimed(Data(417)));
    const auto seen = Finish();
    ASSERT_EQ(1u, seen.size()); // what was held is gone with the first run
    EXPECT_EQ(0, seen[0].start);
}

TEST_F(ReceiveTest, ASampleWithZeroDataLengthGivesNoQueuedPacket) {
    StartVideo();
    EXPECT_EQ(S_OK, input->Deliver({}, 10, 20));
    EXPECT_EQ(S_OK, input->Deliver({}, 20, 30));
    EXPECT_EQ(S_OK, input->Deliver({7}, 30, 40));
    EXPECT_EQ(S_OK, input->Deliver({}, 40, 50));
    const auto seen = Finish();
    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ(30, seen[0].start);
}

TEST_F(ReceiveTest, SamplesThatLieAboutTheirDataGiveNoQueuedPacket) {
    StartVideo();
    FakeMediaSample negative({1, 2});
    EXPECT_EQ(S_OK, input->Deliver(negative.WithTimes(0, 1).WithClaimedLength(-5)));
    FakeMediaSample unreachable({1, 2});
    EXPECT_EQ(S_OK, input->Deliver(unreachable.WithTimes(1, 2).WithPointerFailure(E_FAIL)));
    EXPECT_TRUE(Finish().empty());
}

TEST_F(ReceiveTest, OddTimesAreTakenAsTheyAre) {
    StartVideo();
    EXPECT_EQ(S_OK, input->Deliver({1}, -500, -100));
    EXPECT_EQ(S_OK, input->Deliver({2}, 900, 400)); // stops before it starts
    EXPECT_EQ(S_OK, input->Deliver({3}, INT64_MAX, INT64_MIN));
    const auto seen = Finish();
    ASSERT_EQ(3u, seen.size());
    EXPECT_EQ(-500, seen[0].start);
    EXPECT_EQ(400, seen[1].stop);
    EXPECT_EQ(INT64_MAX, seen[2].start);
    EXPECT_EQ(INT64_MIN, seen[2].stop);
}

TEST_F(ReceiveTest, AFullQueueHoldsTheProducerUntilThereIsRoom) {
    StartFullOther();
    auto result = DeliverElsewhere(*input);
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(100)));
    EXPECT_EQ(S_OK, upstreams[1]->DeliverEndOfStream());
    LetTheWorkerGo();
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(S_OK, result.get());
}

TEST_F(ReceiveTest, StopReleasesAProducerThatWaitsForRoomAndDropsItsSample) {
    StartFullOther();
    auto result = DeliverElsewhere(*input);
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(50)));
    EXPECT_EQ(S_OK, mux->Stop());
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(S_OK, result.get());
    EXPECT_TRUE(mux->Seen().empty());
}

TEST_F(ReceiveTest, AFlushReleasesAProducerThatWaitsForRoomAndDropsItsSample) {
    StartFullOther();
    auto result = DeliverElsewhere(*input);
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(50)));
    EXPECT_EQ(S_OK, input->DeliverBeginFlush());
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(S_OK, result.get());
    EXPECT_EQ(S_OK, input->DeliverEndFlush());
    EXPECT_EQ(1u, Queued());
}

#ifndef QRX_NATIVE
// Flushes are seen by polling only, so how long a producer sleeps is how late it may see one.
TEST_F(ReceiveTest, AProducerThatWaitsForRoomSleeps20MsAtATime) {
    StartFullOther();
    RecordedSleeps sleeps;
    auto result = std::async(std::launch::async, [&] {
        const RecordedSleeps::OfThisThread recording(sleeps);
        return input->Deliver(Data(1), 2, 3);
    });
    ASSERT_TRUE(sleeps.WaitFor(1, kSoon));
    EXPECT_EQ(S_OK, input->DeliverBeginFlush());
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    for (const DWORD timeoutMs : sleeps.TimeoutsMs()) {
        EXPECT_EQ(20u, timeoutMs);
    }
    EXPECT_EQ(S_OK, input->DeliverEndFlush());
}
#endif

TEST_F(ReceiveTest, SamplesAreDroppedWhileFlushingAndTakenAfterwards) {
    ASSERT_EQ(S_OK, ConnectOutput());
    StartVideo();
    EXPECT_EQ(S_OK, input->DeliverBeginFlush());
    EXPECT_EQ(S_OK, input->Deliver({1}, 0, 1));
    EXPECT_EQ(S_OK, input->DeliverEndFlush());
    EXPECT_EQ(S_OK, input->Deliver({2}, 1, 2));
    EXPECT_EQ(S_OK, input->DeliverEndOfStream());
    ASSERT_TRUE(sink.WaitForEndOfStream(kSoon));
    const auto seen = mux->Seen();
    ASSERT_EQ(1u, seen.size());
    EXPECT_EQ((std::vector<BYTE>{2}), seen[0].bytes);
    EXPECT_EQ(0, sink.Counts().beginFlushes); // nothing is flushed downstream
    EXPECT_EQ(0, sink.Counts().endFlushes);
}

TEST_F(ReceiveTest, SeveralSamplesAtOnceAreTakenInOrder) {
    StartVideo();
    FakeMediaSample first({1});
    FakeMediaSample second({2});
    IMediaSample* samples[] = {&first.WithTimes(0, 1), &second.WithTimes(1, 2)};
    LONG processed = 0;
    EXPECT_EQ(S_OK, input->Input()->ReceiveMultiple(samples, 2, &processed));
    EXPECT_EQ(2, processed);
    EXPECT_EQ(2u, Finish().size());
}

TEST_F(ReceiveTest, TheInterleaverOrdersTheInputsByStartTime) {
    FakeUpstreamPin& video = ConnectVideo();
    FakeUpstreamPin& audio = ConnectAudio();
    ASSERT_EQ(S_OK, mux->Pause());
    HoldTheWorker();
    for (const INT64 start : {0, 40, 80}) {
        EXPECT_EQ(S_OK, video.Deliver({1}, start, start + 40));
    }
    for (const INT64 start : {0, 20, 60}) {
        EXPECT_EQ(S_OK, audio.Deliver({2}, start, start + 20));
    }
    LetTheWorkerGo();
    EXPECT_EQ(S_OK, video.DeliverEndOfStream());
    EXPECT_EQ(S_OK, audio.DeliverEndOfStream());
    ASSERT_TRUE(graph.WaitForEvent(EC_COMPLETE, kSoon));
    std::vector<std::pair<std::int64_t, std::int32_t>> order;
    for (const auto& packet : mux->Seen()) {
        order.emplace_back(packet.start, packet.streamIndex);
    }
    EXPECT_EQ((std::vector<std::pair<std::int64_t, std::int32_t>>{{0, 0}, {0, 1}, {20, 1}, {40, 0}, {60, 1}, {80, 0}}),
              order);
}

TEST_F(ReceiveTest, LackOfMemoryIsAnsweredAndHoldsUpNothing) {
    StartVideo();
    HookedSample exhausting({1, 2}, [] { throw std::bad_alloc(); });
    EXPECT_EQ(E_OUTOFMEMORY, input->Deliver(exhausting));
    HookedSample throwing({1, 2}, [] { throw "a plain text"; });
    EXPECT_EQ(E_UNEXPECTED, input->Deliver(throwing));
    EXPECT_EQ(0, exhausting.References());
    EXPECT_EQ(S_OK, input->Deliver({3}, 5, 6));
    EXPECT_EQ(1u, Finish().size());
}

// The stream that the sample goes to lives as long as somebody may still use it.
TEST_F(ReceiveTest, StopWaitsForASampleThatIsStillBeingRead) {
    StartVideo();
    std::promise<void> reading;
    std::promise<void> goOn;
    HookedSample slow({1, 2}, [&] {
        reading.set_value();
        goOn.get_future().wait();
    });
    auto received = std::async(std::launch::async, [&] { return input->Deliver(slow); });
    reading.get_future().wait();
    auto stopped = std::async(std::launch::async, [&] { return mux->Stop(); });
    EXPECT_EQ(std::future_status::timeout, stopped.wait_for(milliseconds(100)));
    goOn.set_value();
    ASSERT_EQ(std::future_status::ready, received.wait_for(kSoon));
    ASSERT_EQ(std::future_status::ready, stopped.wait_for(kSoon));
    EXPECT_EQ(S_OK, received.get());
    EXPECT_EQ(S_OK, stopped.get());
    ASSERT_EQ(S_OK, mux->Pause()); // and nothing of that sample comes along
    EXPECT_TRUE(Finish().empty());
}

#ifdef QRX_NATIVE
// The worker is held, and goes to its one wait for a request meanwhile.
TEST_F(ReceiveTest, QueuesASampleWithoutAKernelCallWhileThereIsRoom) {
    FakeUpstreamPin& video = ConnectVideo();
    ConnectAudio();
    StartWith(video);
    HoldTheWorker();
    EXPECT_EQ(S_OK, video.Deliver({1}, 0, 1));
    const native::KernelCalls before = native::CountedKernelCalls();
    for (INT64 i = 1; i <= 2000; ++i) {
        ASSERT_EQ(S_OK, video.Deliver({1}, i, i + 1));
    }
    const native::KernelCalls calls = native::CountedKernelCalls() - before;
    EXPECT_LE(calls.waits, 1u);
    EXPECT_EQ(0u, calls.Total() - calls.waits);
    EXPECT_EQ(2000u, Queued());
}
#endif

} // namespace
