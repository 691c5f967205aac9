// The interleaver against the old one, which walked all streams under one lock: random schedules, every result
// compared.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

#include "mux/mux_interleaver.h"
#include "tests/mux/old_interleaver.h"
#include "tests/mux/packet_helpers.h"
#include "tests/support/watchdog.h"

namespace {

class MuxModelTest : public ::testing::TestWithParam<unsigned> {
  protected:
    size_t Below(size_t end) { return random() % end; }
    bool OneIn(size_t times) { return Below(times) == 0; }

    void MakeStreams() {
        interleaver.ClearStreams();
        model.streams.clear();
        for (size_t count = Below(9); count > 0; --count) {
            AddStream();
        }
    }
    void AddStream() {
        constexpr MuxStreamKind kKinds[] = {MuxStreamKind::Video, MuxStreamKind::Audio, MuxStreamKind::Subtitle,
                                            MuxStreamKind::Other};
        OldStream old;
        CMuxInterStream* const stream = interleaver.AddStream();
        if (!OneIn(8)) {
            old.kind = kKinds[Below(4)];
            old.interleaved = !OneIn(4);
            old.active = true;
            old.byteLimit = CMuxInterStream::ByteLimitOf(old.kind);
            stream->Attach(nullptr, old.kind, old.interleaved);
        }
        model.streams.push_back(old);
    }

    // Times go up and now and then back; many are equal.
    void AddPacket() {
        const size_t index = Below(model.streams.size() + 1); // one too many, too
        OldPacket old;
        old.number = ++m_numbers;
        old.endOfStream = OneIn(60);
        old.start = old.endOfStream ? 0 : m_time + static_cast<INT64>(Below(6)) - 3;
        m_time += static_cast<INT64>(Below(2));
        old.size = SizeOf(old);
        auto packet = std::make_unique<CMuxInterPacket>(static_cast<INT32>(index));
        packet->start = old.start;
        packet->stop = old.number; // only carried along here
        packet->size = old.size;
        packet->endOfStream = old.endOfStream;
        ASSERT_EQ(model.Add(index, old), interleaver.AddPacket(std::move(packet)));
    }
    // As counted; there is no data.
    UINT32 SizeOf(const OldPacket& packet) {
        constexpr UINT32 kSizes[] = {1, 700, 2000, 600000, 10485760, 104857600};
        return packet.endOfStream ? 0 : kSizes[Below(6)];
    }

    void Take() {
        OldPacket old;
        std::unique_ptr<CMuxInterPacket> taken;
        const int expected = model.Take(old);
        ASSERT_EQ(expected, interleaver.GetNextPacket(taken, 0));
        ASSERT_EQ(expected == kMuxOk, taken != nullptr);
        if (taken) {
            ASSERT_EQ(old.number, taken->stop);
            ASSERT_EQ(old.start, taken->start);
            interleaver.StreamAt(taken->streamIndex)->Packets().GiveBack(std::move(taken));
        }
    }

    void Step() {
        switch (Below(24)) {
        case 0:
            interleaver.SuspendEmptyStreams();
            model.SuspendEmptyStreams();
            break;
        case 1:
            interleaver.ResumeSubtitles();
            model.ResumeSubtitles();
            break;
        case 2:
            model.stopping = OneIn(4);
            model.stopping ? interleaver.SetStop() : interleaver.ResetStop();
            break;
        default:
            Below(20) < 11 ? AddPacket() : Take();
        }
    }

    void CompareStates() {
        size_t packets = 0;
        for (size_t i = 0; i < model.streams.size(); ++i) {
            SCOPED_TRACE(i);
            const OldStream& old = model.streams[i];
            const CMuxInterStream& stream = *interleaver.StreamAt(static_cast<INT32>(i));
            ASSERT_EQ(old.interleaved, stream.IsInterleaved());
            ASSERT_EQ(old.suspended, stream.IsSuspended());
            ASSERT_EQ(old.writable, stream.IsWritable());
            ASSERT_EQ(old.queuedBytes, stream.QueuedBytes());
            ASSERT_EQ(old.packets.size(), stream.QueuedPackets());
            ASSERT_EQ(old.endOfStreamSeen, stream.SawEndOfStream());
            packets += old.packets.size();
        }
        ASSERT_EQ(packets, interleaver.QueuedPacketCount());
        ASSERT_EQ(model.NewestStart(), interleaver.NewestStart());
        ASSERT_EQ(model.IsVideoOrAudioQueueFull(), interleaver.IsVideoOrAudioQueueFull());
    }

    std::mt19937 random{GetParam()};
    CMuxInterleaver interleaver;
    OldInterleaver model;

  private:
    int m_numbers = 0;
    INT64 m_time = 0;
};

TEST_P(MuxModelTest, EveryResultOfARandomScheduleIsTheOldOne) {
    for (int run = 0; run < 40; ++run) {
        MakeStreams();
        for (int step = 0; step < 400; ++step) {
            Step();
            CompareStates();
            if (HasFatalFailure()) {
                FAIL() << "run " << run << ", step " << step;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, MuxModelTest, ::testing::Range(1u, 9u));

// Producers and the worker as fast as they can, with every input waited for: then the old rule allows one order only.
TEST(MuxThreadedModel, WhatManyThreadsQueueComesOutInTheOneOrderThatTheOldRuleAllows) {
    constexpr int kInputs = 5;
    constexpr int kPackets = 20000;
    constexpr UINT32 kLargest = 900;
    CMuxInterleaver interleaver;
    OldInterleaver model;
    std::mt19937 random(7);
    std::vector<std::vector<OldPacket>> inputs(kInputs);
    for (size_t i = 0; i < kInputs; ++i) {
        OldStream old;
        old.active = true;
        old.kind = i == 0 ? MuxStreamKind::Other : MuxStreamKind::Audio; // the first one is full again and again
        interleaver.AddStream()->Attach(nullptr, old.kind, true);
        model.streams.push_back(old);
        INT64 start = 0;
        for (int n = 0; n < kPackets; ++n) {
            start += static_cast<INT64>(random() % 3);
            inputs[i].push_back({n, start, static_cast<UINT32>(1 + random() % kLargest), false});
            model.Add(i, inputs[i].back());
        }
        model.Add(i, {kPackets, 0, 0, true});
    }
    std::atomic<UINT64> mostQueued{0};
    std::vector<std::jthread> producers;
    for (int i = 0; i < kInputs; ++i) {
        producers.emplace_back([&, i] {
            std::unique_ptr<CMuxInterPacket> packet;
            for (const OldPacket& old : inputs[static_cast<size_t>(i)]) {
                ASSERT_EQ(kMuxOk, interleaver.NewPacket(i, packet));
                packet->start = old.start;
                packet->stop = old.number;
                packet->size = old.size;
                packet->data = interleaver.StreamAt(i)->Payloads().Take(old.size);
                packet->data[old.size - 1] = static_cast<BYTE>(old.number);
                interleaver.AddPacket(std::move(packet));
                if (i == 0) {
                    mostQueued = std::max<UINT64>(mostQueued, interleaver.StreamAt(0)->QueuedBytes());
                }
            }
            interleaver.AddPacket(MakeEndOfStream(i));
        });
    }
    std::unique_ptr<CMuxInterPacket> taken;
    OldPacket expected;
    while (model.Take(expected) == kMuxOk) {
        ASSERT_EQ(kMuxOk, interleaver.GetNextPacket(taken, test_support::kWatchdogMs));
        ASSERT_EQ(expected.start, taken->start);
        ASSERT_EQ(expected.number, taken->stop);
        ASSERT_EQ(static_cast<BYTE>(expected.number), taken->data[expected.size - 1]);
        interleaver.StreamAt(taken->streamIndex)->Packets().GiveBack(std::move(taken));
    }
    EXPECT_EQ(kMuxAllEnded, interleaver.GetNextPacket(taken, test_support::kWatchdogMs));
    producers.clear();
    EXPECT_LT(mostQueued, 2000u + kLargest); // one packet beyond the limit
}

// Two threads pass packets to and fro, each asleep whenever the other has nothing for it: a wake-up that got lost would
// show as an attempt that lasts as long as the watchdog.
TEST(MuxThreadedModel, NoWakeUpIsLostBetweenTwoThreadsThatWaitForEachOther) {
    CMuxInterleaver there;
    CMuxInterleaver back;
    for (CMuxInterleaver* const interleaver : {&there, &back}) {
        interleaver->AddStream()->Attach(nullptr, MuxStreamKind::Audio, true);
        interleaver->AddStream()->Attach(nullptr, MuxStreamKind::Audio, false);
    }
    constexpr INT64 kRounds = 5000;
    there.AddPacket(MakePacket(0, 0));
    std::jthread other([&] {
        std::unique_ptr<CMuxInterPacket> packet;
        for (INT64 i = 0; i < kRounds; ++i) {
            ASSERT_EQ(kMuxOk, there.GetNextPacket(packet, test_support::kWatchdogMs));
            back.AddPacket(std::move(packet));
        }
    });
    std::unique_ptr<CMuxInterPacket> packet;
    for (INT64 i = 0; i < kRounds; ++i) {
        ASSERT_EQ(kMuxOk, back.GetNextPacket(packet, test_support::kWatchdogMs));
        ASSERT_EQ(i, packet->start);
        packet->start = i + 1;
        there.AddPacket(std::move(packet));
    }
}

} // namespace
