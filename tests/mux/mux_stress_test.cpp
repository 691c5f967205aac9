// Many upstream threads, and a state change whenever it suits the application. Seeds are fixed, times are bounded.
#include <gtest/gtest.h>

#include <atomic>
#include <random>
#include <thread>

#include "tests/mux/mux_test_fixture.h"

namespace {

using std::chrono::microseconds;
using test_support::FakeUpstreamPin;

constexpr int kInputs = 8;

class MuxStressTest : public MuxTest {
  protected:
    MuxStressTest() {
        for (int i = 0; i < kInputs; ++i) {
            switch (i % 4) {
            case 0:
                ConnectVideo();
                break;
            case 1:
                ConnectAudio();
                break;
            case 2:
                ConnectSubtitle();
                break;
            default:
                ConnectOther();
                break;
            }
        }
    }

    // Delivers packets of all sizes, some without a time, until told to stop or refused with a failure.
    static void DeliverUntil(FakeUpstreamPin& upstream, unsigned seed, const std::atomic<bool>& done,
                             std::atomic<int>& delivered) {
        std::mt19937 random(seed);
        INT64 time = 0;
        while (!done) {
            const auto size = static_cast<size_t>(random() % 1500);
            const HRESULT hr =
                random() % 5 == 0 ? upstream.DeliverUntimed(Data(size)) : upstream.Deliver(Data(size), time, time + 10);
            ASSERT_TRUE(SUCCEEDED(hr));
            ++delivered;
            time += 10;
            if (hr == S_FALSE) { // stopped: begin again
                time = 0;
                std::this_thread::yield();
            }
            if (random() % 500 == 0) {
                upstream.DeliverEndOfStream();
            }
            if (random() % 300 == 0) {
                upstream.DeliverBeginFlush();
                upstream.DeliverEndFlush();
            }
        }
    }
};

TEST_F(MuxStressTest, StopAtRandomTimesUnderEightHurriedInputsLeavesNothingBehind) {
    std::atomic<bool> done{false};
    std::atomic<int> delivered{0};
    std::vector<std::thread> threads;
    for (int i = 0; i < kInputs; ++i) {
        threads.emplace_back([&, i] {
            DeliverUntil(*upstreams[static_cast<size_t>(i)], static_cast<unsigned>(i) + 1, done, delivered);
        });
    }
    std::mt19937 random(20240501);
    for (int round = 0; round < 60 || delivered <= 1000; ++round) {
        ASSERT_EQ(S_OK, mux->Pause());
        std::this_thread::sleep_for(microseconds(random() % 15000));
        if (random() % 2 == 0) {
            ASSERT_EQ(S_OK, mux->Run(0));
            std::this_thread::sleep_for(microseconds(random() % 5000));
        }
        ASSERT_EQ(S_OK, mux->Stop());
        ASSERT_EQ(nullptr, mux->InputPin(0).Stream());
    }
    done = true;
    for (auto& thread : threads) {
        thread.join();
    }
    CloseMuxer();
}

TEST_F(MuxStressTest, EveryPacketOfEightInputsArrivesOnceAndInOrder) {
    constexpr INT64 kPackets = 1000;
    ASSERT_EQ(S_OK, ConnectOutput());
    ASSERT_EQ(S_OK, mux->Pause());
    std::vector<std::thread> threads;
    for (int i = 0; i < kInputs; ++i) {
        threads.emplace_back([this, i] {
            FakeUpstreamPin& upstream = *upstreams[static_cast<size_t>(i)];
            for (INT64 n = 0; n < kPackets; ++n) {
                ASSERT_EQ(S_OK, upstream.Deliver(Data(300, static_cast<BYTE>(i)), n * 10, n * 10 + 10));
            }
            ASSERT_EQ(S_OK, upstream.DeliverEndOfStream());
        });
    }
    for (auto& thread : threads) {
        thread.join();
    }
    ASSERT_TRUE(sink.WaitForEndOfStream(test_support::kWatchdog));
    const auto seen = mux->Seen();
    ASSERT_EQ(static_cast<size_t>(kInputs * kPackets), seen.size());
    for (size_t i = 0; i < seen.size(); ++i) {
        // Equal times go by the input's place, so the whole order is known.
        ASSERT_EQ(static_cast<INT64>(i / kInputs) * 10, seen[i].start);
        ASSERT_EQ(static_cast<INT32>(i % kInputs), seen[i].streamIndex);
        ASSERT_EQ(Data(300, static_cast<BYTE>(i % kInputs)), seen[i].bytes);
    }
}

} // namespace
