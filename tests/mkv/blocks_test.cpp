// The blocks themselves: which kind, which flags and bytes, and which of them become cue points.
#include "tests/mkv/writer_fixture.h"

namespace {

class BlocksTest : public WriterTest {
  protected:
    std::vector<uint64_t> CueTimes() {
        std::vector<uint64_t> times;
        for (const auto& cue : File().cues) {
            times.push_back(cue.time);
        }
        return times;
    }
};

TEST_F(BlocksTest, VideoBlocksAreKeyframesWhereTheSampleIsASyncPoint) {
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    Write(0, 40 * kMs, 80 * kMs, false);
    const auto blocks = File().BlocksOf(1);
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_TRUE(blocks[0].simple);
    EXPECT_TRUE(blocks[0].keyframe);
    EXPECT_FALSE(blocks[1].keyframe);
}

TEST_F(BlocksTest, AudioAndSubtitleBlocksAreAlwaysKeyframes) {
    RegisterAudio();
    RegisterSubtitle();
    Open();
    Write(0, 0, 10 * kMs, false);
    Write(1, 0, 10 * kMs, false); // not marked as a group: a simple block
    EXPECT_TRUE(File().BlocksOf(1).at(0).keyframe);
    EXPECT_TRUE(File().BlocksOf(2).at(0).keyframe);
    EXPECT_TRUE(File().BlocksOf(2).at(0).simple);
    EXPECT_TRUE(File().cues.empty());
}

TEST_F(BlocksTest, ABlockGroupHasItsDurationAndIsAlwaysACuePoint) {
    RegisterVideo();
    RegisterSubtitle();
    Open();
    Write(0, 0, 40 * kMs, true);
    WriteGroup(1, 10 * kMs, 2010 * kMs);
    WriteGroup(1, 3000 * kMs, 3000 * kMs);
    const auto groups = File().BlocksOf(2);
    ASSERT_EQ(groups.size(), 2u);
    EXPECT_FALSE(groups[0].simple);
    EXPECT_EQ(groups[0].duration, 2000u);
    EXPECT_EQ(groups[1].duration, 0u);
    EXPECT_EQ(CueTimes(), (std::vector<uint64_t>{0, 10, 3000}));
    EXPECT_EQ(File().cues[1].track, 2u);
}

TEST_F(BlocksTest, WithoutVideoOnlyBlockGroupsAreCuePoints) {
    RegisterAudio();
    RegisterSubtitle();
    Open();
    Write(0, 0, 20 * kMs, true);
    WriteGroup(1, 5 * kMs, 500 * kMs);
    Write(0, 20 * kMs, 40 * kMs, true);
    ASSERT_EQ(File().cues.size(), 1u);
    EXPECT_EQ(File().cues[0].track, 2u);
}

TEST_F(BlocksTest, AGroupOnTheCueTrackIsOneCuePoint) {
    RegisterVideo();
    Open();
    const Bytes payload{1};
    m_writer.WritePacket({0, 40 * kMs, payload.data(), 1, true, 0, true});
    EXPECT_EQ(CueTimes(), (std::vector<uint64_t>{0}));
}

TEST_F(BlocksTest, CuesPointAtTheClustersOfTheirBlocks) {
    RegisterVideo();
    Open();
    for (INT64 frame = 0; frame < 50; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 5 == 0);
    }
    ASSERT_EQ(File().cues.size(), 10u);
    ASSERT_EQ(File().clusters.size(), 10u);
    const uint64_t dataOffset = File().Segment()->DataOffset();
    for (size_t i = 0; i < 10; ++i) {
        EXPECT_EQ(File().cues[i].time, i * 200);
        EXPECT_EQ(dataOffset + File().cues[i].clusterPosition, File().clusters[i].offset);
    }
}

TEST_F(BlocksTest, BlocksHoldOneFrameWithoutLacing) {
    RegisterAudio();
    Open();
    Write(0, 0, 10 * kMs, true, {1, 2, 3, 4});
    Write(0, 10 * kMs, 20 * kMs, true, {5});
    const auto blocks = File().BlocksOf(1);
    ASSERT_EQ(blocks.size(), 2u);
    EXPECT_EQ(blocks[0].flags, 0x80);
    ASSERT_EQ(blocks[0].frames.size(), 1u);
    EXPECT_EQ(Bytes(blocks[0].frames[0].begin(), blocks[0].frames[0].end()), (Bytes{1, 2, 3, 4}));
}

TEST_F(BlocksTest, PayloadsAreCopiedBeforeTheCallReturns) {
    RegisterAudio();
    Open();
    Bytes payload{1, 2, 3};
    Write(0, 0, 10 * kMs, true, payload);
    payload.assign(3, 9);
    const auto frame = File().BlocksOf(1).at(0).frames.at(0);
    EXPECT_EQ(Bytes(frame.begin(), frame.end()), (Bytes{1, 2, 3}));
}

TEST_F(BlocksTest, PacketsWithoutPayloadAreDroppedAndLeaveNoTrace) {
    RegisterVideo();
    Open();
    Write(0, 5000 * kMs, 6000 * kMs, true, {});
    m_writer.WritePacket({7000 * kMs, 8000 * kMs, nullptr, 100, true, 0, false});
    EXPECT_EQ(m_writer.duration(), 0.0);
    EXPECT_TRUE(File().BlocksOf(1).empty());
    EXPECT_EQ(File().clusters.size(), 1u);
}

TEST_F(BlocksTest, FramesOfTwoGibibytesAreDroppedUnread) {
    RegisterAudio();
    Open();
    const BYTE byte = 1;
    for (const UINT32 size : {0x7ffffffau, 0x80000000u, 0xffffffffu}) {
        m_writer.WritePacket({0, 10 * kMs, &byte, size, true, 0, false});
    }
    EXPECT_TRUE(File().BlocksOf(1).empty());
}

TEST_F(BlocksTest, ByteStreamsOfH264AndH265AreWrittenWithFourByteLengths) {
    const Bytes sequenceHeader{0, 0, 0, 1, 0x67, 0x42, 0, 0x1e, 0, 0, 0, 1, 0x68, 0xce};
    const Bytes sample{0, 0, 0, 1, 0x65, 0xaa, 0xbb, 0, 0, 0, 1, 0x41};
    const Bytes converted{0, 0, 0, 3, 0x65, 0xaa, 0xbb, 0, 0, 0, 1, 0x41};
    KeepFromJudges(); // the parameter sets are made up
    Register(test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, sequenceHeader, 66, 30));
    Register(test_support::Mpeg2VideoType(mediasubtype::kHevcAnnexB, {}, sequenceHeader, 1, 30));
    Register(test_support::Mpeg2VideoType(mediasubtype::kAvc1, {}, {0, 2, 0x67, 0x42}, 66, 30));
    Register(test_support::VideoInfoType(mediasubtype::kH264AnnexB));
    Open();
    for (UINT32 track = 0; track < 4; ++track) {
        Write(track, 0, 40 * kMs, true, sample);
    }
    const auto frameOf = [this](uint64_t track) {
        const auto frame = File().BlocksOf(track).at(0).frames.at(0);
        return Bytes(frame.begin(), frame.end());
    };
    EXPECT_EQ(frameOf(1), converted);
    EXPECT_EQ(frameOf(2), converted);
    EXPECT_EQ(frameOf(3), sample);
    EXPECT_EQ(frameOf(4), sample);
}

} // namespace
