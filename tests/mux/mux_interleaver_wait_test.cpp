// Sleeping and waking: nobody sleeps for what already holds, and nobody oversleeps.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <future>
#include <thread>

#include "mux/mux_interleaver.h"
#include "tests/mux/packet_helpers.h"
#include "tests/support/watchdog.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
#endif

namespace {

using std::chrono::milliseconds;

constexpr DWORD kLongMs = 2 * test_support::kWatchdogMs; // so that what comes in time was woken
constexpr auto kSoon = test_support::kWatchdog;

class MuxInterleaverWaitTest : public ::testing::Test {
  protected:
    CMuxInterStream& AddStream(MuxStreamKind kind) {
        CMuxInterStream* const stream = interleaver.AddStream();
        stream->Attach(nullptr, kind, true);
        return *stream;
    }
    // Lets the other thread fall asleep; if it has not yet, the test is only less sharp.
    static void LetItSleep() { std::this_thread::sleep_for(milliseconds(30)); }

    std::future<int> TakeElsewhere(DWORD timeoutMs) {
        return std::async(std::launch::async, [this, timeoutMs] {
            std::unique_ptr<CMuxInterPacket> packet;
            return interleaver.GetNextPacket(packet, timeoutMs);
        });
    }

#ifdef QRX_NATIVE
    // The same, and asleep when this returns, unless it found something at once.
    std::future<int> TakeAsleepElsewhere(DWORD timeoutMs) {
        const auto waitsBefore = native::CountedKernelCalls().waits;
        auto result = TakeElsewhere(timeoutMs);
        while (native::CountedKernelCalls().waits == waitsBefore &&
               result.wait_for(milliseconds(0)) != std::future_status::ready) {
            std::this_thread::yield();
        }
        return result;
    }
#endif

    CMuxInterleaver interleaver;
};

TEST_F(MuxInterleaverWaitTest, APacketWakesTheSleepingWorker) {
    AddStream(MuxStreamKind::Video);
    auto result = TakeElsewhere(kLongMs);
    LetItSleep();
    interleaver.AddPacket(MakePacket(0, 0));
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxOk, result.get());
}

TEST_F(MuxInterleaverWaitTest, ThePacketOfTheLastEmptyStreamWakesTheSleepingWorker) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    auto result = TakeElsewhere(kLongMs);
    LetItSleep();
    interleaver.AddPacket(MakePacket(0, 0));
    LetItSleep();
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(0)));
    interleaver.AddPacket(MakePacket(1, 0));
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxOk, result.get());
}

TEST_F(MuxInterleaverWaitTest, TheLastEndOfStreamWakesTheSleepingWorker) {
    AddStream(MuxStreamKind::Video);
    auto result = TakeElsewhere(kLongMs);
    LetItSleep();
    interleaver.AddPacket(MakeEndOfStream(0));
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxAllEnded, result.get());
}

TEST_F(MuxInterleaverWaitTest, StopWakesTheSleepingWorker) {
    AddStream(MuxStreamKind::Video);
    auto result = TakeElsewhere(kLongMs);
    LetItSleep();
    interleaver.SetStop();
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxStopping, result.get());
}

TEST_F(MuxInterleaverWaitTest, StopWakesAProducerThatWaitsWithoutLimit) {
    AddStream(MuxStreamKind::Other);
    interleaver.AddPacket(MakePacket(0, 0, 2000));
    auto result = std::async(std::launch::async, [this] {
        std::unique_ptr<CMuxInterPacket> packet;
        return interleaver.NewPacket(0, packet);
    });
    LetItSleep();
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(0)));
    interleaver.SetStop();
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxFailed, result.get());
}

TEST_F(MuxInterleaverWaitTest, RoomWakesAProducerThatWaitsWithoutLimit) {
    AddStream(MuxStreamKind::Other);
    interleaver.AddPacket(MakePacket(0, 0, 2000));
    auto result = std::async(std::launch::async, [this] {
        std::unique_ptr<CMuxInterPacket> packet;
        return interleaver.NewPacket(0, packet);
    });
    LetItSleep();
    EXPECT_EQ(std::future_status::timeout, result.wait_for(milliseconds(0)));
    std::unique_ptr<CMuxInterPacket> taken;
    EXPECT_EQ(kMuxOk, interleaver.GetNextPacket(taken, kLongMs));
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxOk, result.get());
}

// The look of its own that a producer takes now and then is out of the way here: it asks for longer than the test
// lasts.
TEST_F(MuxInterleaverWaitTest, NoWakeUpIsLostBetweenAFullQueueAndItsProducer) {
    CMuxInterStream& stream = AddStream(MuxStreamKind::Other);
    constexpr INT64 kPackets = 5000;
    std::jthread producer([&] {
        for (INT64 i = 0; i < kPackets; ++i) {
            const auto begin = std::chrono::steady_clock::now();
            while (interleaver.WaitForRoom(stream, kLongMs) != CMuxInterleaver::RoomWait::Writable) {
                ASSERT_LT(std::chrono::steady_clock::now() - begin, kSoon); // or it was woken for nothing
            }
            interleaver.AddPacket(MakePacket(0, i, 700)); // the third fills the queue
        }
    });
    std::unique_ptr<CMuxInterPacket> packet;
    for (INT64 i = 0; i < kPackets; ++i) {
        ASSERT_EQ(kMuxOk, interleaver.GetNextPacket(packet, kLongMs));
        ASSERT_EQ(i, packet->start);
    }
}

TEST_F(MuxInterleaverWaitTest, AWorkerThatFallsAsleepWakesAProducerThatHasALittleRoom) {
    CMuxInterStream& stream = AddStream(MuxStreamKind::Other);
    AddStream(MuxStreamKind::Audio);
    for (const INT64 start : {0, 10, 20}) {
        interleaver.AddPacket(MakePacket(0, start, 700));
    }
    interleaver.AddPacket(MakePacket(1, 5));
    auto room = std::async(std::launch::async, [&] { return interleaver.WaitForRoom(stream, kLongMs); });
    LetItSleep();
    std::unique_ptr<CMuxInterPacket> packet;
    EXPECT_EQ(kMuxOk, interleaver.GetNextPacket(packet, kLongMs)); // leaves more than half of what the queue may hold
    EXPECT_EQ(kMuxOk, interleaver.GetNextPacket(packet, kLongMs));
    auto result = TakeElsewhere(kLongMs); // must wait for the second stream
    ASSERT_EQ(std::future_status::ready, room.wait_for(kSoon));
    EXPECT_EQ(CMuxInterleaver::RoomWait::Writable, room.get());
    interleaver.SetStop();
    EXPECT_EQ(kMuxStopping, result.get());
}

TEST_F(MuxInterleaverWaitTest, AnAttemptThatFailsGivesNoPacketWhateverWasThereBefore) {
    AddStream(MuxStreamKind::Video);
    auto packet = MakePacket(0, 0);
    EXPECT_EQ(kMuxFailed, interleaver.GetNextPacket(packet, 0));
    EXPECT_EQ(nullptr, packet);
    packet = MakePacket(0, 0);
    EXPECT_EQ(kMuxFailed, interleaver.NewPacket(1, packet)); // there is no such stream
    EXPECT_EQ(nullptr, packet);
}

// Or every producer would go on asking whom to wake.
TEST_F(MuxInterleaverWaitTest, NoStreamIsAwaitedWhileTheWorkerDoesNotSleep) {
    const auto awaited = [this] {
        return interleaver.StreamAt(0)->IsAwaited() || interleaver.StreamAt(1)->IsAwaited();
    };
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    std::unique_ptr<CMuxInterPacket> packet;
    EXPECT_EQ(kMuxFailed, interleaver.GetNextPacket(packet, 1)); // for whatever comes first
    EXPECT_FALSE(awaited());
    interleaver.AddPacket(MakePacket(0, 0));
    EXPECT_EQ(kMuxFailed, interleaver.GetNextPacket(packet, 1)); // for the second stream
    EXPECT_FALSE(awaited());
    auto result = TakeElsewhere(kLongMs);
    LetItSleep();
    interleaver.AddPacket(MakePacket(1, 0));
    ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
    EXPECT_EQ(kMuxOk, result.get());
    EXPECT_FALSE(awaited());
}

TEST_F(MuxInterleaverWaitTest, StopEndsAPollAndRoomComesBeforeStop) {
    CMuxInterStream& stream = AddStream(MuxStreamKind::Other);
    interleaver.SetStop();
    EXPECT_EQ(CMuxInterleaver::RoomWait::Writable, interleaver.WaitForRoom(stream, kLongMs));
    interleaver.AddPacket(MakePacket(0, 0, 2000));
    EXPECT_EQ(CMuxInterleaver::RoomWait::Stopping, interleaver.WaitForRoom(stream, kLongMs));
}

TEST_F(MuxInterleaverWaitTest, EveryPacketOfEightHurriedProducersArrivesInOrder) {
    constexpr int kProducers = 8;
    constexpr int kPackets = 2000;
    for (int i = 0; i < kProducers; ++i) {
        AddStream(i % 2 == 0 ? MuxStreamKind::Other : MuxStreamKind::Audio);
    }
    std::vector<std::thread> producers;
    for (int i = 0; i < kProducers; ++i) {
        producers.emplace_back([this, i] {
            std::unique_ptr<CMuxInterPacket> packet;
            for (int n = 0; n < kPackets && interleaver.NewPacket(i, packet) == kMuxOk; ++n) {
                packet->start = n;
                packet->size = 700; // the third blocks a stream of kind Other
                packet->data = std::make_unique<BYTE[]>(packet->size);
                interleaver.AddPacket(std::move(packet));
            }
            interleaver.AddPacket(MakeEndOfStream(i));
        });
    }
    std::vector<std::int64_t> next(kProducers, 0);
    INT64 latest = 0;
    int result = kMuxOk;
    std::unique_ptr<CMuxInterPacket> packet;
    while ((result = interleaver.GetNextPacket(packet, kLongMs)) == kMuxOk) {
        EXPECT_EQ(next[static_cast<size_t>(packet->streamIndex)]++, packet->start);
        EXPECT_LE(latest, packet->start);
        latest = packet->start;
    }
    EXPECT_EQ(kMuxAllEnded, result);
    EXPECT_EQ(std::vector<std::int64_t>(kProducers, kPackets), next);
    for (auto& producer : producers) {
        producer.join();
    }
}

#ifdef QRX_NATIVE

TEST_F(MuxInterleaverWaitTest, PacketsFlowWithoutAKernelCallWhenNobodyMustSleep) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    interleaver.AddPacket(MakePacket(1, 0));
    const native::KernelCalls before = native::CountedKernelCalls();
    for (INT64 i = 1; i <= 1000; ++i) {
        for (const INT32 stream : {0, 1}) {
            std::unique_ptr<CMuxInterPacket> packet;
            ASSERT_EQ(kMuxOk, interleaver.NewPacket(stream, packet));
            packet->start = i;
            ASSERT_EQ(kMuxOk, interleaver.AddPacket(std::move(packet)));
        }
        std::unique_ptr<CMuxInterPacket> taken;
        ASSERT_EQ(kMuxOk, interleaver.GetNextPacket(taken, kLongMs));
        ASSERT_EQ(kMuxOk, interleaver.GetNextPacket(taken, kLongMs));
    }
    EXPECT_EQ(0u, (native::CountedKernelCalls() - before).Total());
}

TEST_F(MuxInterleaverWaitTest, AFullAndEmptyingQueueCostsNoKernelCallWhileNobodySleepsForIt) {
    AddStream(MuxStreamKind::Other);
    const native::KernelCalls before = native::CountedKernelCalls();
    std::unique_ptr<CMuxInterPacket> taken;
    for (INT64 i = 0; i < 1000; ++i) {
        interleaver.AddPacket(MakePacket(0, i, 3000));
        ASSERT_EQ(kMuxOk, interleaver.GetNextPacket(taken, kLongMs));
    }
    EXPECT_EQ(0u, (native::CountedKernelCalls() - before).Total());
}

TEST_F(MuxInterleaverWaitTest, AStarvedAttemptSleepsOnceAndIsNotWokenByStreamsThatDoNotHelp) {
    AddStream(MuxStreamKind::Video);
    AddStream(MuxStreamKind::Audio);
    interleaver.AddPacket(MakePacket(0, 0));
    auto result = TakeAsleepElsewhere(kLongMs);
    const native::KernelCalls before = native::CountedKernelCalls();
    for (INT64 i = 0; i < 1000; ++i) {
        interleaver.AddPacket(MakePacket(0, i));
    }
    const native::KernelCalls calls = native::CountedKernelCalls() - before;
    EXPECT_EQ(0u, calls.sets);
    EXPECT_EQ(0u, calls.waits);
    interleaver.SetStop();
    EXPECT_EQ(kMuxStopping, result.get());
}

// The clock stands still but for what the test makes of it; how long the attempt really lasts is all the same.
TEST_F(MuxInterleaverWaitTest, APacketThatWakesTheWorkerAtTheDeadlineIsTakenAndOneThatComesLaterIsNot) {
    constexpr std::uint64_t kBeginMs = 1000;
    AddStream(MuxStreamKind::Video);
    for (const unsigned lateMs : {0U, 1U}) {
        native::ScopedTickCount ticks(kBeginMs);
        auto result = TakeAsleepElsewhere(kLongMs);
        ticks.Set(kBeginMs + kLongMs + lateMs);
        interleaver.AddPacket(MakePacket(0, 0));
        ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
        EXPECT_EQ(lateMs == 0 ? kMuxOk : kMuxFailed, result.get());
    }
}

// Four streams that are waited for, one that is not and one that has packets already.
TEST_F(MuxInterleaverWaitTest, WhateverOrderTheStreamsComeInOnlyTheLastOneWakesTheWorker) {
    std::array<INT32, 4> order = {0, 2, 3, 5};
    do {
        interleaver.ClearStreams();
        for (int i = 0; i < 6; ++i) {
            interleaver.AddStream()->Attach(nullptr, MuxStreamKind::Audio, i != 1);
        }
        interleaver.AddPacket(MakePacket(4, 7));
        auto result = TakeAsleepElsewhere(kLongMs);
        const native::KernelCalls before = native::CountedKernelCalls();
        for (const INT32 stream : order) {
            EXPECT_EQ(0u, (native::CountedKernelCalls() - before).sets) << "before stream " << stream;
            interleaver.AddPacket(MakePacket(stream, 8));
            interleaver.AddPacket(MakePacket(stream, 9));
        }
        EXPECT_EQ(1u, (native::CountedKernelCalls() - before).sets);
        ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
        EXPECT_EQ(kMuxOk, result.get());
    } while (std::next_permutation(order.begin(), order.end()));
}

TEST_F(MuxInterleaverWaitTest, AnyPacketWakesAWorkerThatWaitsForNoStreamInParticular) {
    for (const INT32 stream : {0, 1, 2}) {
        interleaver.ClearStreams();
        for (int i = 0; i < 3; ++i) {
            interleaver.AddStream()->Attach(nullptr, MuxStreamKind::Audio, false);
        }
        auto result = TakeAsleepElsewhere(kLongMs);
        const native::KernelCalls before = native::CountedKernelCalls();
        interleaver.AddPacket(MakePacket(stream, 8));
        EXPECT_EQ(1u, (native::CountedKernelCalls() - before).sets);
        ASSERT_EQ(std::future_status::ready, result.wait_for(kSoon));
        EXPECT_EQ(kMuxOk, result.get());
        const native::KernelCalls awake = native::CountedKernelCalls();
        interleaver.AddPacket(MakePacket(stream, 9)); // nobody sleeps any more
        interleaver.AddPacket(MakePacket(2 - stream, 9));
        EXPECT_EQ(0u, (native::CountedKernelCalls() - awake).sets);
    }
}

#endif

} // namespace
