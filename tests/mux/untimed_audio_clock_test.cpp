#include "mux/untimed_audio_clock.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "tests/mux/packet_helpers.h"
#include "tests/support/media_types.h"

namespace {

using test_support::MediaTypeValue;

MediaTypeValue Mp3(DWORD bytesPerSecond) {
    return test_support::WaveType(mediasubtype::kMp3, {.averageBytesPerSecond = bytesPerSecond});
}

class UntimedAudioClockTest : public ::testing::Test {
  protected:
    std::unique_ptr<CMuxInterPacket> Stamp(UINT32 size, const MediaTypeValue& type) {
        auto packet = std::make_unique<CMuxInterPacket>(0);
        packet->size = size; // the data itself does not matter
        clock.Stamp(*packet, type.Get());
        return packet;
    }
    void PassTimed(INT64 start, INT64 stop, const MediaTypeValue& type) {
        auto packet = MakePacket(0, start);
        packet->stop = stop;
        clock.Stamp(*packet, type.Get());
        EXPECT_EQ(start, packet->start);
        EXPECT_EQ(stop, packet->stop);
    }

    CUntimedAudioClock clock;
};

TEST_F(UntimedAudioClockTest, AnUntimedMp3SampleOf417BytesAt16000BytesASecondLasts260625Units) {
    const auto packet = Stamp(417, Mp3(16000));
    EXPECT_TRUE(packet->hasTime);
    EXPECT_EQ(0, packet->start);
    EXPECT_EQ(260625, packet->stop);
}

TEST_F(UntimedAudioClockTest, DurationsAreTruncated) {
    // 1e9 / 3 * 1 = 333333333.33 ns, 3333333.33 units
    EXPECT_EQ(3333333, Stamp(1, Mp3(3))->stop);
}

TEST_F(UntimedAudioClockTest, Mp3RunsOnFromThePacketBefore) {
    const MediaTypeValue type = Mp3(16000);
    PassTimed(1000, 5000, type);
    EXPECT_EQ(5000, Stamp(417, type)->start);
    const auto next = Stamp(417, type);
    EXPECT_EQ(5000 + 260625, next->start);
    EXPECT_EQ(5000 + 2 * 260625, next->stop);
}

TEST_F(UntimedAudioClockTest, VorbisGetsTheRunningTimeAndNoDuration) {
    const MediaTypeValue type(MEDIATYPE_Audio, mediasubtype::kVorbis, GUID_NULL);
    PassTimed(100, 700, type);
    const auto packet = Stamp(10, type);
    EXPECT_TRUE(packet->hasTime);
    EXPECT_EQ(700, packet->start);
    EXPECT_EQ(700, packet->stop);
}

TEST_F(UntimedAudioClockTest, OtherAudioStaysUntimedAndSetsTheRunningTimeTo0) {
    const MediaTypeValue pcm = test_support::WaveType(mediasubtype::kPcm);
    PassTimed(100, 700, pcm);
    const auto packet = Stamp(10, pcm);
    EXPECT_FALSE(packet->hasTime);
    EXPECT_EQ(0, packet->start);
    EXPECT_EQ(0, Stamp(10, Mp3(16000))->start);
}

TEST_F(UntimedAudioClockTest, Mp3OutsideTheAudioMajorTypeStaysUntimed) {
    const MediaTypeValue type(MEDIATYPE_Video, mediasubtype::kMp3, GUID_NULL);
    EXPECT_FALSE(Stamp(10, type)->hasTime);
}

TEST_F(UntimedAudioClockTest, ResetGoesBackTo0) {
    PassTimed(100, 700, Mp3(16000));
    clock.Reset();
    EXPECT_EQ(0, Stamp(1, Mp3(16000))->start);
}

TEST_F(UntimedAudioClockTest, AFormatBlockThatTellsNoBitRateGivesNoDuration) {
    const MediaTypeValue whole = Mp3(16000);
    constexpr size_t kRateEnd = offsetof(WAVEFORMATEX, nAvgBytesPerSec) + sizeof(DWORD);
    for (size_t bytes = 0; bytes < kRateEnd; ++bytes) {
        const auto packet = Stamp(417, whole.CutTo(bytes));
        EXPECT_TRUE(packet->hasTime) << bytes;
        EXPECT_EQ(packet->start, packet->stop) << bytes;
    }
    EXPECT_EQ(0, Stamp(417, Mp3(0))->stop);
}

TEST_F(UntimedAudioClockTest, AFormatBlockWithoutASizeFieldTellsItsBitRate) {
    const auto packet = Stamp(16000, Mp3(16000).CutTo(16));
    EXPECT_EQ(10000000, packet->stop - packet->start);
}

TEST_F(UntimedAudioClockTest, HugeSizesAndTimesDoNotOverflow) {
    PassTimed(0, INT64_MAX - 1, Mp3(1));
    const auto packet = Stamp(UINT32_MAX, Mp3(1));
    EXPECT_EQ(INT64_MAX - 1, packet->start);
    EXPECT_EQ(INT64_MAX, packet->stop);
}

} // namespace
