// What is going on, read as an application does: before, during and after runs, in both profiles.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <limits>
#include <string>
#include <thread>

#include "tests/matroska_muxer/muxer_rig.h"
#include "tests/support/watchdog.h"

using namespace test_support;

namespace {

class StatisticsParameters : public ::testing::TestWithParam<MuxProfile> {
  protected:
    void SetUp() override {
        VARIANT value{};
        V_UI4(&value) = GetParam();
        ASSERT_EQ(S_OK, m_rig.Config()->SetValue(&MKVMUX_Profile, &value));
    }
    void Connect() {
        ASSERT_EQ(S_OK, m_rig.ConnectInput(VideoInfoType(SubtypeFromFourCC('c', 'v', 'i', 'd'))));
        ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
        ASSERT_EQ(S_OK, m_rig.ConnectOutput());
    }
    void Disable(INT32 index) {
        TrackSettings row{};
        row.index = index;
        row.trackType = MuxTrackType_Unknown;
        m_rig.SetRow(row);
    }
    [[nodiscard]] MuxStatistics File() const {
        MuxStatistics record{};
        record.size = sizeof(record);
        EXPECT_EQ(S_OK, Get(MKVMUX_Statistics, &record));
        EXPECT_EQ(56u, record.size);
        return record;
    }
    [[nodiscard]] MuxInputStatistics Input(INT32 index) const {
        MuxInputStatistics record{};
        record.size = sizeof(record);
        record.index = index;
        EXPECT_EQ(S_OK, Get(MKVMUX_InputStatistics, &record));
        EXPECT_EQ(88u, record.size);
        EXPECT_EQ(index, record.index);
        return record;
    }
    HRESULT Get(const GUID& key, void* record) const {
        VARIANT value{};
        V_BYREF(&value) = record;
        return m_rig.Config()->GetValue(&key, &value);
    }
    // Packets of 16 bytes of both inputs, 40 ms each.
    void DeliverBoth(INT64 packets) {
        for (INT64 i = 0; i < packets; ++i) {
            ASSERT_EQ(S_OK, m_rig.Deliver(0, i * 40, 40));
            ASSERT_EQ(S_OK, m_rig.Deliver(1, i * 40, 40));
        }
    }

    MuxerRig m_rig;
};

TEST_P(StatisticsParameters, AreZeroBeforeTheFirstRun) {
    const MuxStatistics file = File();
    EXPECT_EQ(0u, file.isRunning + file.bytesWritten + file.writes + file.clusters);
    EXPECT_EQ(0, file.writeTime + file.longestWrite + file.elapsed);
    const MuxInputStatistics input = Input(0);
    EXPECT_EQ(0u, input.packets + input.bytes + input.queueLimit + input.dropped + input.late + input.silences);
}

TEST_P(StatisticsParameters, OfARunStayAfterItAndBeginAnewWithTheNext) {
    Connect();
    ASSERT_EQ(S_OK, m_rig.Pause());
    EXPECT_EQ(1u, File().isRunning);
    EXPECT_EQ(104857600u, Input(0).queueLimit);
    EXPECT_EQ(10485760u, Input(1).queueLimit);
    DeliverBoth(10);
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    const MuxStatistics file = File();
    EXPECT_EQ(0u, file.isRunning);
    EXPECT_EQ(m_rig.Layout().clusters.size(), file.clusters);
    EXPECT_GE(file.bytesWritten, m_rig.File().size());
    EXPECT_EQ(m_rig.Sink().Stream().Calls(StreamOperation::Write).size(), file.writes);
    EXPECT_GT(file.elapsed, 0);
    EXPECT_LE(file.longestWrite, file.writeTime);
    EXPECT_LE(file.writeTime, file.elapsed);
    for (const INT32 index : {0, 1}) {
        const MuxInputStatistics input = Input(index);
        EXPECT_EQ(10u, input.packets);
        EXPECT_EQ(160u, input.bytes);
        EXPECT_EQ(0u, input.queuedPackets + input.queuedBytes + input.dropped + input.late);
        EXPECT_EQ(9 * 400000, input.lastPacket);
    }
    ASSERT_EQ(S_OK, m_rig.Pause());
    EXPECT_EQ(0u, Input(0).packets);
    EXPECT_LT(File().bytesWritten, file.bytesWritten);
    EXPECT_EQ(0u, File().clusters);
}

TEST_P(StatisticsParameters, SamplesOfADisabledInputAreDropped) {
    Connect();
    Disable(1);
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Deliver(0, 0, 40));
    EXPECT_EQ(S_FALSE, m_rig.Deliver(1, 0, 40));
    EXPECT_EQ(S_FALSE, m_rig.Deliver(1, 40, 40));
    EXPECT_EQ(2u, Input(1).dropped);
    EXPECT_EQ(0u, Input(1).queueLimit);
    EXPECT_EQ(0u, Input(0).dropped);
    ASSERT_TRUE(m_rig.EndAll());
    ASSERT_EQ(S_OK, m_rig.Stop());
    EXPECT_EQ(S_FALSE, m_rig.Deliver(1, 80, 40)); // not during a run
    EXPECT_EQ(2u, Input(1).dropped);
    EXPECT_EQ(1u, Input(0).packets);
}

TEST_P(StatisticsParameters, WithoutAFileAllPacketsAreDropped) {
    ASSERT_EQ(S_OK, m_rig.ConnectInput(WaveType(mediasubtype::kPcm)));
    ASSERT_EQ(S_OK, m_rig.Pause());
    ASSERT_EQ(S_OK, m_rig.Deliver(0, 0, 40));
    ASSERT_EQ(S_OK, m_rig.Deliver(0, 40, 40));
    m_rig.Input(0).DeliverEndOfStream();
    const auto giveUp = std::chrono::steady_clock::now() + kWatchdog;
    while (Input(0).dropped < 2 && std::chrono::steady_clock::now() < giveUp) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    EXPECT_EQ(2u, Input(0).dropped);
    EXPECT_EQ(0u, Input(0).packets);
    EXPECT_EQ(0u, File().writes);
}

TEST_P(StatisticsParameters, OfInputsThatAreNotThereAndRecordsThatAreTooShortAreRefused) {
    Connect(); // two, and the spare one
    for (const INT32 index : {-1, 3, std::numeric_limits<INT32>::min(), std::numeric_limits<INT32>::max()}) {
        MuxInputStatistics record{};
        record.size = sizeof(record);
        record.index = index;
        EXPECT_EQ(E_INVALIDARG, Get(MKVMUX_InputStatistics, &record));
        EXPECT_EQ(sizeof(record), record.size);
    }
    EXPECT_EQ(0u, Input(2).packets);
    UINT32 size = 55;
    EXPECT_EQ(E_INVALIDARG, Get(MKVMUX_Statistics, &size));
    size = 87;
    EXPECT_EQ(E_INVALIDARG, Get(MKVMUX_InputStatistics, &size));
    EXPECT_EQ(E_POINTER, Get(MKVMUX_Statistics, nullptr));
    EXPECT_EQ(E_POINTER, Get(MKVMUX_InputStatistics, nullptr));
    VARIANT value{};
    EXPECT_EQ(E_FAIL, m_rig.Config()->SetValue(&MKVMUX_Statistics, &value));
    EXPECT_EQ(E_FAIL, m_rig.Config()->SetValue(&MKVMUX_InputStatistics, &value));
}

TEST_P(StatisticsParameters, OfARecordThatIsLongerTheRestIsLeftAloneAndTheSizeTellsIt) {
    struct {
        MuxStatistics known{};
        UINT64 beyond = 0x1234567890abcdef;
    } record;
    record.known.size = sizeof(record);
    ASSERT_EQ(S_OK, Get(MKVMUX_Statistics, &record));
    EXPECT_EQ(sizeof(MuxStatistics), record.known.size);
    EXPECT_EQ(0x1234567890abcdefu, record.beyond);
}

// A display beside a recording: what it reads never goes back, and the reading holds nothing up.
TEST_P(StatisticsParameters, AreReadByAThreadOfTheirOwnWhileRunsComeAndGo) {
    Connect();
    std::atomic<bool> done{false};
    std::thread display([&] {
        while (!done) {
            const MuxStatistics file = File();
            EXPECT_LE(file.longestWrite, file.writeTime);
            for (const INT32 index : {0, 1, 2}) {
                const MuxInputStatistics input = Input(index);
                EXPECT_GE(input.bytes, input.packets * 16) << "of input " << index; // one may just be taken
                EXPECT_LE(input.queuedPackets, 200u);
            }
        }
    });
    for (int run = 0; run < 5; ++run) {
        EXPECT_EQ(S_OK, m_rig.Pause());
        DeliverBoth(100);
        EXPECT_TRUE(m_rig.EndAll());
        EXPECT_EQ(S_OK, m_rig.Stop());
        EXPECT_EQ(100u, Input(0).packets);
    }
    done = true;
    display.join();
}

INSTANTIATE_TEST_SUITE_P(Profiles, StatisticsParameters, ::testing::Values(MuxProfile_Compatible, MuxProfile_Strict),
                         [](const auto& profile) {
                             return std::string(profile.param == MuxProfile_Strict ? "Strict" : "Compatible");
                         });

} // namespace
