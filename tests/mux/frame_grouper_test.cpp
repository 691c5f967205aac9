#include "mux/frame_grouper.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tests/support/media_types.h"

namespace {

using test_support::MediaTypeValue;

class FrameGrouperTest : public ::testing::Test {
  protected:
    static std::unique_ptr<CMuxInterPacket> Packet(std::vector<BYTE> bytes) {
        auto packet = std::make_unique<CMuxInterPacket>(4);
        packet->size = static_cast<UINT32>(bytes.size());
        if (!bytes.empty()) {
            packet->data = std::make_unique<BYTE[]>(bytes.size());
            std::copy(bytes.begin(), bytes.end(), packet->data.get());
        }
        return packet;
    }
    CFrameGrouper::Packets AddTimed(INT64 start, std::vector<BYTE> bytes, bool syncPoint = false) {
        auto packet = Packet(std::move(bytes));
        packet->hasTime = true;
        packet->start = start;
        packet->stop = start + 5;
        packet->syncPoint = syncPoint;
        return grouper.Add(std::move(packet), video.Get());
    }
    CFrameGrouper::Packets AddUntimed(std::vector<BYTE> bytes) {
        return grouper.Add(Packet(std::move(bytes)), video.Get());
    }
    static std::vector<BYTE> BytesOf(const CMuxInterPacket& packet) {
        return {packet.data.get(), packet.data.get() + packet.size};
    }

    const MediaTypeValue video = test_support::VideoInfoType(mediasubtype::kVp8);
    CFrameGrouper grouper;
};

TEST_F(FrameGrouperTest, AFrameIsReadyWhenTheNextTimedPacketComes) {
    EXPECT_TRUE(AddTimed(10, {1}).empty());
    const auto ready = AddTimed(20, {2});
    ASSERT_EQ(1u, ready.size());
    EXPECT_EQ(10, ready.front()->start);
    EXPECT_EQ((std::vector<BYTE>{1}), BytesOf(*ready.front()));
}

TEST_F(FrameGrouperTest, UntimedPacketsAreAppendedToTheTimedOneBeforeThem) {
    AddTimed(10, {1, 2}, true);
    EXPECT_TRUE(AddUntimed({3}).empty());
    EXPECT_TRUE(AddUntimed({}).empty());
    EXPECT_TRUE(AddUntimed({4, 5}).empty());
    const auto ready = AddTimed(20, {6});
    ASSERT_EQ(1u, ready.size());
    const CMuxInterPacket& merged = *ready.front();
    EXPECT_EQ((std::vector<BYTE>{1, 2, 3, 4, 5}), BytesOf(merged));
    EXPECT_EQ(10, merged.start);
    EXPECT_EQ(15, merged.stop);
    EXPECT_TRUE(merged.syncPoint);
    EXPECT_TRUE(merged.hasTime);
    EXPECT_EQ(4, merged.streamIndex);
}

TEST_F(FrameGrouperTest, UntimedPacketsBeforeTheFirstTimedOneFormAFrameOfTheirOwn) {
    AddUntimed({1});
    AddUntimed({2});
    const auto ready = AddTimed(20, {3});
    ASSERT_EQ(1u, ready.size());
    EXPECT_FALSE(ready.front()->hasTime);
    EXPECT_EQ(0, ready.front()->start);
    EXPECT_EQ((std::vector<BYTE>{1, 2}), BytesOf(*ready.front()));
}

TEST_F(FrameGrouperTest, TakingAllGivesTheHeldPacketsInOrderAndUnmerged) {
    AddTimed(10, {1});
    AddUntimed({2});
    auto held = grouper.TakeAll();
    ASSERT_EQ(2u, held.size());
    EXPECT_EQ((std::vector<BYTE>{1}), BytesOf(*held[0]));
    EXPECT_EQ((std::vector<BYTE>{2}), BytesOf(*held[1]));
    EXPECT_TRUE(grouper.TakeAll().empty());
    EXPECT_TRUE(AddTimed(20, {3}).empty());
}

TEST_F(FrameGrouperTest, ClearingForgetsPacketsAndRunningTime) {
    const MediaTypeValue mp3 = test_support::WaveType(mediasubtype::kMp3, {.averageBytesPerSecond = 16000});
    EXPECT_TRUE(grouper.Add(Packet({1}), mp3.Get()).empty());
    grouper.Clear();
    EXPECT_TRUE(grouper.TakeAll().empty());
    EXPECT_TRUE(grouper.Add(Packet({1}), mp3.Get()).empty());
    EXPECT_EQ(0, grouper.TakeAll().front()->start);
}

TEST_F(FrameGrouperTest, StampedAudioPacketsAreFramesOfTheirOwn) {
    const MediaTypeValue mp3 = test_support::WaveType(mediasubtype::kMp3, {.averageBytesPerSecond = 16000});
    EXPECT_TRUE(grouper.Add(Packet({1}), mp3.Get()).empty());
    const auto ready = grouper.Add(Packet({2}), mp3.Get());
    ASSERT_EQ(1u, ready.size());
    EXPECT_TRUE(ready.front()->hasTime);
}

// An input that never sends a time must not fill the memory.
TEST_F(FrameGrouperTest, AFrameThatNeverEndsIsGivenAwayInPieces) {
    const std::vector<BYTE> piece(8 * 1024 * 1024, 7);
    UINT64 held = 0;
    for (int i = 0; i < 12; ++i) {
        ASSERT_TRUE(AddUntimed(piece).empty()) << i;
        held += piece.size();
    }
    EXPECT_LT(held, CFrameGrouper::kMaxFrameBytes);
    EXPECT_EQ(104857600u, CFrameGrouper::kMaxFrameBytes);
    const auto pieces = AddUntimed(piece);
    EXPECT_EQ(13u, pieces.size());
    EXPECT_TRUE(grouper.TakeAll().empty());
}

TEST_F(FrameGrouperTest, OneLargeTimedPacketIsAFrameLikeAnyOther) {
    AddTimed(10, std::vector<BYTE>(CFrameGrouper::kMaxFrameBytes + 1));
    const auto ready = AddTimed(20, {1});
    ASSERT_EQ(1u, ready.size());
    EXPECT_EQ(CFrameGrouper::kMaxFrameBytes + 1, ready.front()->size);
}

TEST_F(FrameGrouperTest, EndlessEmptyPacketsDoNotFillTheMemoryEither) {
    constexpr size_t kPackets = 100;
    CFrameGrouper tight(kPackets * sizeof(CMuxInterPacket));
    for (size_t i = 0; i < kPackets; ++i) {
        ASSERT_TRUE(tight.Add(Packet({}), video.Get()).empty()) << i;
    }
    EXPECT_EQ(kPackets + 1, tight.Add(Packet({}), video.Get()).size());
}

} // namespace
