// Storms: an application of three threads that changes everything at once, with eight sources that feed the filter
// whatever it does. QRX_STORM_ROUNDS makes the long one as long as it says, each round within ten seconds.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

#include "tests/log/log_directory.h"
#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/matroska_muxer/round_watchdog.h"
#include "tests/mux/hooked_sample.h"
#include "tests/support/fake_media_sample.h"
#include "tests/support/pin_lookup.h"
#include "tests/support/watchdog.h"
#include "win/bstr.h"

#ifdef QRX_NATIVE
#include "tests/native/native_hooks.h"
using native::OpenHandleCount;
#else
#include "tests/support/handle_count.h"
using test_support::OpenHandleCount;
#endif

using namespace test_support;

namespace {

constexpr size_t kInputs = 8;
constexpr int kRoundsInShort = 40;
constexpr HRESULT kFailed = -1;

// 0 where only the short form is asked for.
int RoundsAskedFor() {
    const char* const rounds = std::getenv("QRX_STORM_ROUNDS");
    return rounds == nullptr ? 0 : std::atoi(rounds);
}

MediaTypeValue TypeOf(size_t input) {
    switch (input % 4) {
    case 0:
        return VideoInfoType(mediasubtype::kVp8);
    case 1:
        return WaveType(mediasubtype::kPcm);
    case 2:
        return SubtitleType(mediasubtype::kUtf8);
    default:
        return TextType();
    }
}

class Storm : public ::testing::Test {
  protected:
    Storm() {
        for (size_t i = 0; i < kInputs; ++i) {
            m_upstreams[i] = std::make_unique<FakeUpstreamPin>(TypeOf(i));
            m_upstreams[i]->NotifyNoAllocator();
            m_pins[i] = PinNamed(m_rig.Filter(), OLESTR("In ") + ToWideDecimal(i));
            EXPECT_EQ(S_OK, m_upstreams[i]->ConnectTo(m_pins[i].Get()));
        }
        m_output = PinNamed(m_rig.Filter(), OLESTR("Out"));
        m_sink.Stream().SetRecording(false);
        EXPECT_EQ(S_OK, m_output->Connect(&m_sink, nullptr));
    }
    ~Storm() override {
        EXPECT_EQ(S_OK, m_rig.Stop());
        for (auto& upstream : m_upstreams) {
            upstream->Unplug();
        }
        m_sink.Unplug();
    }

    // A source that knows no state, asks nobody and never ends.
    void Feed(size_t input, std::atomic<bool>& isOver) {
        const auto samples = m_pins[input].Query<IMemInputPin>(IID_IMemInputPin);
        IPin& pin = *m_pins[input].Get();
        std::mt19937 random(static_cast<unsigned>(input) + 1);
        const unsigned mostBytes = input % 4 < 2 ? 3000 : 100000; // texts come to wait for room, too
        for (INT64 time = 0; !isOver; time += 400000) {
            FakeMediaSample sample(std::vector<BYTE>(random() % mostBytes, static_cast<BYTE>(input)));
            if (random() % 5 != 0) {
                sample.WithTimes(time, time + 400000);
            }
            const HRESULT hr = samples->Receive(&sample.WithSyncPoint(random() % 10 == 0));
            EXPECT_TRUE(hr == S_OK || hr == S_FALSE) << hr;
            EXPECT_EQ(0, sample.References());
            m_delivered += hr == S_OK ? 1 : 0;
            if (hr == S_FALSE) {
                time = 0;
                std::this_thread::yield();
            }
            if (random() % 400 == 0) {
                const HRESULT ended = pin.EndOfStream();
                EXPECT_TRUE(ended == S_OK || ended == kFailed) << ended;
            }
            if (random() % 200 == 0) {
                EXPECT_EQ(S_OK, pin.BeginFlush());
                EXPECT_EQ(S_OK, pin.EndFlush());
            }
        }
    }

    // The thread that plugs and unplugs, which is refused while the filter is not stopped.
    void Plug(std::atomic<bool>& isOver) {
        std::mt19937 random(77);
        while (!isOver) {
            if (const size_t which = random() % (kInputs + 1); which < kInputs) {
                FakeUpstreamPin& upstream = *m_upstreams[which];
                if (upstream.Peer() == nullptr) {
                    (void)upstream.ConnectTo(m_pins[which].Get());
                } else if (m_pins[which]->Disconnect() == S_OK) {
                    m_unplugged += upstream.Disconnect() == S_OK ? 1 : 0;
                }
            } else if (m_sink.Peer() == nullptr) {
                (void)m_output->Connect(&m_sink, nullptr);
            } else if (m_output->Disconnect() == S_OK) {
                (void)m_sink.Disconnect();
            }
            std::this_thread::yield();
        }
    }

    void AskAndSet(std::atomic<bool>& isOver) {
        std::mt19937 random(99);
        IModuleConfig& config = *m_rig.Config();
        while (!isOver) {
            VARIANT value{};
            V_UI4(&value) = static_cast<ULONG>(random() % 4);
            EXPECT_EQ(S_OK, config.SetValue(&MKVMUX_DocType, &value));
            EXPECT_EQ(S_OK, config.GetValue(&MKVMUX_Position, &value));
            EXPECT_EQ(S_OK, config.GetValue(&MKVMUX_InputCount, &value));
            EXPECT_LE(kInputs, V_UI2(&value));
            records::CTrackSettingsRow row(static_cast<INT32>(random() % 10));
            TrackSettings settings = row.Get();
            settings.bEnabled = random() % 3 == 0 ? 0 : 1;
            m_rig.SetRow(settings);
            MemoryStream saved;
            EXPECT_EQ(S_OK, config.Save(&saved, FALSE));
            EXPECT_EQ(S_OK, saved.Seek({}, STREAM_SEEK_SET, nullptr));
            EXPECT_EQ(S_OK, config.Load(&saved));
            FILTER_STATE state{};
            EXPECT_EQ(S_OK, m_rig.Filter()->GetState(0, &state));
            EXPECT_LE(kInputs + 1, PinsOf(m_rig.Filter()).size());
        }
    }

    void Change(int rounds, RoundWatchdog& watchdog) {
        std::mt19937 random(5);
        for (int round = 0; round < rounds; ++round) {
            EXPECT_EQ(S_OK, m_rig.Pause());
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 8000));
            if (random() % 2 == 0) {
                EXPECT_EQ(S_OK, m_rig.Filter()->Run(0));
                std::this_thread::sleep_for(std::chrono::microseconds(random() % 4000));
            }
            EXPECT_EQ(S_OK, m_rig.Stop());
            // The others get a turn while it is stopped.
            std::this_thread::sleep_for(std::chrono::microseconds(random() % 1000));
            const auto bytes = m_sink.Stream().Bytes();
            const MatroskaLayout layout = ReadLayout(bytes);
            EXPECT_EQ(std::vector<std::string>(), layout.problems) << "round " << round;
            EXPECT_EQ(std::vector<std::string>(), layout.cuts) << "round " << round;
            watchdog.Next();
        }
    }

    void Rage(int rounds, std::chrono::milliseconds limit) {
        // Rounds whose output is unplugged leave the file of an earlier one: there has to be one before the first.
        EXPECT_EQ(S_OK, m_rig.Pause());
        EXPECT_EQ(S_OK, m_rig.Stop());
        RoundWatchdog watchdog(limit);
        std::atomic<bool> isOver{false};
        std::vector<std::thread> threads;
        for (size_t i = 0; i < kInputs; ++i) {
            threads.emplace_back([&, i] { Feed(i, isOver); });
        }
        threads.emplace_back([&] { Plug(isOver); });
        threads.emplace_back([&] { AskAndSet(isOver); });
        Change(rounds, watchdog);
        isOver = true;
        for (auto& thread : threads) {
            thread.join();
        }
        std::printf("%d rounds, %d samples taken, %d times unplugged, the longest round %lld ms\n", rounds,
                    m_delivered.load(), m_unplugged.load(), static_cast<long long>(watchdog.Longest().count()));
    }

    MuxerRig m_rig;
    FakeSinkPin m_sink;
    std::array<std::unique_ptr<FakeUpstreamPin>, kInputs> m_upstreams;
    std::array<win::ComPtr<IPin>, kInputs> m_pins;
    win::ComPtr<IPin> m_output;
    std::atomic<int> m_delivered{0};
    std::atomic<int> m_unplugged{0};
};

TEST_F(Storm, EverythingAtOnceFromThreeThreadsAndEightSourcesEndsEachRound) {
    const int asked = RoundsAskedFor();
    if (asked > 0) {
        Rage(asked, std::chrono::seconds(10));
    } else {
        Rage(kRoundsInShort, kWatchdog);
    }
    EXPECT_GT(m_delivered, 0);
}

// ---- Sources that misbehave ----------------------------------------------------------------------------------------

class OddSource : public ::testing::Test {
  protected:
    OddSource() {
        EXPECT_EQ(S_OK, m_rig.ConnectOutput());
        EXPECT_EQ(S_OK, m_rig.ConnectInput(VideoInfoType(mediasubtype::kVp8)));
        EXPECT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
        EXPECT_EQ(S_OK, m_rig.Pause());
    }
    size_t BlocksOf(uint64_t track) { return m_rig.Layout().BlocksOf(track).size(); }

    MuxerRig m_rig;
};

TEST_F(OddSource, OneThatEndsTwiceHoldsUpNobodyAndTheRunEndsOnce) {
    ASSERT_EQ(S_OK, m_rig.Deliver(0, 0, 40));
    EXPECT_EQ(S_OK, m_rig.Input(0).DeliverEndOfStream());
    EXPECT_EQ(S_OK, m_rig.Input(0).DeliverEndOfStream());
    EXPECT_EQ(S_OK, m_rig.Deliver(1, 0, 20));
    EXPECT_EQ(S_OK, m_rig.Deliver(1, 20, 20));
    EXPECT_EQ(S_OK, m_rig.Input(1).DeliverEndOfStream());
    EXPECT_EQ(S_OK, m_rig.Input(1).DeliverEndOfStream());
    EXPECT_TRUE(m_rig.Sink().WaitForEndOfStream(kWatchdog));
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ(1, m_rig.Sink().Counts().endsOfStream);
    EXPECT_EQ(1u, BlocksOf(1));
    EXPECT_EQ(2u, BlocksOf(2));
}

TEST_F(OddSource, OneThatNeverEndsIsStoppedAndItsFileIsWhole) {
    std::atomic<bool> isOver{false};
    std::atomic<int> taken{0};
    std::thread source([&] {
        for (INT64 time = 0; !isOver; time += 40) {
            for (size_t input = 0; input < 2; ++input) {
                taken += m_rig.Deliver(input, time, 40) == S_OK ? 1 : 0;
            }
        }
    });
    VARIANT position{};
    while (taken < 200 || V_I8(&position) == 0) {
        ASSERT_EQ(S_OK, m_rig.Config()->GetValue(&MKVMUX_Position, &position));
        std::this_thread::yield();
    }
    EXPECT_EQ(S_OK, m_rig.Stop());
    isOver = true;
    source.join();
    const MatroskaLayout layout = m_rig.Layout();
    EXPECT_TRUE(layout.problems.empty());
    EXPECT_TRUE(layout.cuts.empty());
    EXPECT_GT(layout.duration.value_or(0), 0.0);
}

TEST_F(OddSource, OneThatThrowsIsToldAndTheOthersGoOn) {
    HookedSample throwing(std::vector<BYTE>(20), [] { throw std::runtime_error("not here"); });
    HookedSample throwingText(std::vector<BYTE>(20), [] { throw "CMkvWriter::nobody"; });
    EXPECT_EQ(E_UNEXPECTED, m_rig.Input(0).Deliver(throwing));
    EXPECT_EQ(E_UNEXPECTED, m_rig.Input(0).Deliver(throwingText));
    EXPECT_EQ(0, throwing.References() + throwingText.References());
    EXPECT_EQ(S_OK, m_rig.Deliver(0, 0, 40));
    EXPECT_EQ(S_OK, m_rig.Deliver(1, 0, 40));
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ(1u, BlocksOf(1));
    EXPECT_EQ(1u, BlocksOf(2));
}

// ---- Many filters --------------------------------------------------------------------------------------------------

void ConnectAll(MuxerRig& rig) {
    ASSERT_EQ(S_OK, rig.ConnectOutput());
    ASSERT_EQ(S_OK, rig.ConnectInput(VideoInfoType(mediasubtype::kVp8)));
    ASSERT_EQ(S_OK, rig.ConnectInput(WaveType(mediasubtype::kPcm)));
}

// A file of so many packets of each of two inputs.
void WriteAFile(MuxerRig& rig, INT64 packets) {
    ASSERT_EQ(S_OK, rig.Pause());
    for (INT64 packet = 0; packet < packets; ++packet) {
        ASSERT_EQ(S_OK, rig.Deliver(0, packet * 40, 40));
        ASSERT_EQ(S_OK, rig.Deliver(1, packet * 40, 40));
    }
    ASSERT_TRUE(rig.EndAll());
    ASSERT_EQ(S_OK, rig.Stop());
    ASSERT_EQ(static_cast<size_t>(packets), rig.Layout().BlocksOf(2).size());
}

void UseAFilter() {
    MuxerRig rig;
    ConnectAll(rig);
    WriteAFile(rig, 1);
}

TEST(ManyFilters, TwoHundredOneAfterTheOtherLeaveNothingBehind) {
    UseAFilter(); // what a first one makes for all
    const size_t before = OpenHandleCount();
    for (int i = 0; i < 200; ++i) {
        UseAFilter();
    }
    EXPECT_EQ(before, OpenHandleCount());
}

void SetLogDirectory(const MuxerRig& rig, BSTR path) {
    VARIANT value{};
    V_BSTR(&value) = path;
    ASSERT_EQ(S_OK, rig.Config()->SetValue(&MKVMUX_LogDirectory, &value));
}

// How often the text stands in the log, which then holds it no more.
size_t Remove(std::string& log, std::string_view text) {
    size_t count = 0;
    for (size_t at = log.find(text); at != std::string::npos; at = log.find(text, at)) {
        log.erase(at, text.size());
        ++count;
    }
    return count;
}

TEST(ManyFilters, TwoAtOnceShareTheLogAndNoInsertionIsTornOrLost) {
    constexpr INT64 kPackets = 300;
    const LogDirectory directory;
    const win::Bstr path{directory.Path()};
    {
        MuxerRig one; // both live until both are done: each closes the log when it goes
        ConnectAll(one);
        MuxerRig other;
        ConnectAll(other);
        SetLogDirectory(one, path.Get());
        std::thread first([&] { WriteAFile(one, kPackets); });
        std::thread second([&] { WriteAFile(other, kPackets); });
        first.join();
        second.join();
        SetLogDirectory(one, nullptr);
    }
    std::string log = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    // The lock is held for one insertion, so lines of two threads may be in each other.
    EXPECT_EQ(4u * kPackets, Remove(log, "CMkvWriter::WritePacket stream="));
    EXPECT_EQ(4u * kPackets, Remove(log, " start="));
    EXPECT_EQ(4u * kPackets, Remove(log, " stop="));
    EXPECT_EQ(4u * kPackets, Remove(log, " size="));
    EXPECT_EQ(2u, Remove(log, "CMatroskaMuxer::OnStopStreaming\r\n"));
    EXPECT_EQ(4u, Remove(log, "CBaseMux::EndOfStream pin="));
}

} // namespace
