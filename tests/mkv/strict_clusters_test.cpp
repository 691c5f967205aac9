// The strict profile's clusters: when they begin, and which times their blocks get.
#include <limits>

#include "mkv/cluster_rule.h"
#include "mkv/matroska_file.h"
#include "tests/mkv/strict_fixture.h"

namespace {

constexpr size_t kMiB = size_t{1} << 20;

using StrictClustersTest = StrictTest;

// ---- Times ---------------------------------------------------------------------------------------------------------

TEST_F(StrictClustersTest, ANegativeStartOfOneTrackShiftsAllAlike) {
    RegisterVideo();
    RegisterAudio();
    OpenStrict();
    Write(1, -80 * kMs, -40 * kMs);
    Write(1, -40 * kMs, 0);
    Write(0, 0, 40 * kMs, true);
    Write(1, 0, 40 * kMs);
    Write(0, 40 * kMs, 80 * kMs, true);
    EXPECT_EQ(BlockTimes(1), (Times{80, 120}));
    EXPECT_EQ(BlockTimes(2), (Times{0, 40, 80}));
    EXPECT_EQ(File().duration, 160.0);
}

TEST_F(StrictClustersTest, TheShiftGrowsUntilTheFirstClusterIsWritten) {
    RegisterVideo();
    RegisterAudio();
    OpenStrict();
    Write(1, -20 * kMs, 0);
    Write(1, 0, 20 * kMs);
    Write(0, 0, 40 * kMs, true);
    Write(0, -80 * kMs, -40 * kMs); // pictures that lead the first one
    Write(0, -40 * kMs, 0);
    Write(0, 40 * kMs, 80 * kMs, true); // here it is
    Write(1, -200 * kMs, -180 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 0}));
    EXPECT_EQ(BlockTimes(1), (Times{80, 0, 40, 120}));
    EXPECT_EQ(BlockTimes(2), (Times{60, 80, 0}));
    EXPECT_EQ(File().duration, 160.0);
}

TEST_F(StrictClustersTest, ThePacketThatEndsTheFirstClusterMayStillShiftIt) {
    Expect({.clustersMayGoBack = true});
    KeepFromJudges();
    RegisterAudio();
    RegisterAudio();
    OpenStrict();
    Write(0, 4000 * kMs, 4040 * kMs);
    Write(1, -1000 * kMs, -960 * kMs); // 5 s before
    EXPECT_EQ(BlockTimes(1), (Times{5000}));
    EXPECT_EQ(BlockTimes(2), (Times{0}));
    EXPECT_EQ(File().clusters.size(), 2u);
    EXPECT_EQ(File().duration, 5040.0) << "of the cluster that was shifted at the last moment";
}

TEST_F(StrictClustersTest, StartsAndEndsAreRounded) {
    constexpr INT64 kFrame = 417083; // 23.976 frames a second
    RegisterVideo();
    RegisterSubtitle();
    OpenStrict();
    for (INT64 frame = 0; frame < 6; ++frame) {
        Write(0, frame * kFrame, (frame + 1) * kFrame, frame % 2 == 0);
    }
    WriteGroup(1, 250 * kMs + 4999, 260 * kMs + 5000);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 83, 167}));
    EXPECT_EQ(BlockTimes(1), (Times{0, 42, 83, 125, 167, 209}));
    EXPECT_EQ(BlockTimes(2), (Times{250}));
    EXPECT_EQ(File().BlocksOf(2)[0].duration, 11u);
    EXPECT_EQ(File().duration, 261.0);
}

TEST_F(StrictClustersTest, APacketWithoutAByteDecidesNothing) {
    RegisterAudio();
    OpenStrict();
    Write(0, -40 * kMs, 0, true, {});
    Write(0, 10 * kMs, 40 * kMs);
    EXPECT_EQ(BlockTimes(1), (Times{10}));
}

TEST_F(StrictClustersTest, ATextWithoutAStopTimeHasNoDuration) {
    RegisterSubtitle();
    OpenStrict();
    WriteGroup(0, 10 * kMs, 10 * kMs);
    WriteGroup(0, 20 * kMs, 21 * kMs);
    ASSERT_EQ(BlockTimes(1), (Times{10, 20}));
    EXPECT_EQ(File().BlocksOf(1)[0].duration, std::nullopt);
    EXPECT_EQ(File().BlocksOf(1)[1].duration, 1u) << "the least that is told";
    EXPECT_FALSE(File().BlocksOf(1)[0].simple);
    EXPECT_FALSE(File().BlocksOf(1)[1].simple);
}

TEST_F(StrictClustersTest, ExtremeTimesAreWrittenWithoutWrapping) {
    constexpr INT64 kMin = std::numeric_limits<INT64>::min();
    constexpr INT64 kMax = std::numeric_limits<INT64>::max();
    KeepFromJudges(); // 292 years are more than the judges' players like
    RegisterVideo();
    RegisterSubtitle();
    OpenStrict();
    Write(0, kMin, kMax, true);
    Write(0, kMax, kMin, true);
    WriteGroup(1, kMax, kMax);
    const auto latest = BlockTimes(1).at(1);
    EXPECT_GT(latest, int64_t{292} * 365 * 24 * 3600 * 1000);
    EXPECT_EQ(BlockTimes(1), (Times{0, latest}));
    EXPECT_EQ(BlockTimes(2), (Times{latest}));
}

// ---- Clusters ------------------------------------------------------------------------------------------------------

TEST_F(StrictClustersTest, AFileWithoutPacketsHasNoCluster) {
    RegisterVideo();
    OpenStrict();
    EXPECT_TRUE(File().clusters.empty());
    EXPECT_FALSE(File().duration.has_value());
}

TEST_F(StrictClustersTest, AClusterHasTheTimeOfItsEarliestBlockAndBeginsAtAKeyframe) {
    RegisterVideo();
    OpenStrict();
    Write(0, 80 * kMs, 120 * kMs, true);
    Write(0, 120 * kMs, 160 * kMs);
    Write(0, 280 * kMs, 320 * kMs, true); // an open group: those that follow lie before it
    Write(0, 160 * kMs, 200 * kMs);
    Write(0, 200 * kMs, 240 * kMs);
    Write(0, 320 * kMs, 360 * kMs, true);
    ASSERT_EQ(ClusterTimes(), (ClusterTimeList{80, 160, 320}));
    EXPECT_EQ(BlocksOfClusters(), (Counts{2, 3, 1}));
    EXPECT_EQ(BlockTimes(1), (Times{80, 120, 280, 160, 200, 320}));
    EXPECT_EQ(File().clusters[1].blocks[0].relativeTime, 120);
    EXPECT_TRUE(File().clusters[1].blocks[0].keyframe);
    EXPECT_EQ(File().clusters[1].blocks[1].relativeTime, 0);
    EXPECT_FALSE(File().clusters[1].blocks[1].keyframe);
}

TEST_F(StrictClustersTest, OnlyTheFirstVideoTrackBeginsClusters) {
    RegisterAudio();
    RegisterVideo();
    RegisterVideo();
    OpenStrict();
    for (INT64 frame = 0; frame < 4; ++frame) {
        Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame == 2);
        Write(2, frame * 40 * kMs, (frame + 1) * 40 * kMs, true);
    }
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 80}));
    EXPECT_EQ(BlocksOfClusters(), (Counts{4, 4}));
}

TEST_F(StrictClustersTest, WhatComesInFrontOfTheFirstPictureStaysWithItInTheFirstClusterAlone) {
    RegisterVideo();
    RegisterAudio();
    OpenStrict();
    Write(1, 0, 20 * kMs);
    Write(1, 20 * kMs, 40 * kMs);
    Write(0, 33 * kMs, 66 * kMs, true);
    Write(0, 5100 * kMs, 5140 * kMs, true);
    Write(1, 10200 * kMs, 10220 * kMs);       // more than 5 s later
    Write(0, 10210 * kMs, 10220 * kMs, true); // begins one of its own all the same
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{0, 5100, 10200, 10210}));
    EXPECT_EQ(BlocksOfClusters(), (Counts{3, 1, 1, 1}));
}

TEST_F(StrictClustersTest, AClusterLastsFiveSecondsAtMost) {
    RegisterAudio();
    OpenStrict();
    Write(0, 100 * kMs, 120 * kMs);
    Write(0, 5099 * kMs, 6000 * kMs);
    Write(0, 5100 * kMs, 6000 * kMs);
    Write(0, 10099 * kMs + 4999, 10100 * kMs);
    Write(0, 10099 * kMs + 5000, 10100 * kMs); // 10100 when it is rounded
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{100, 5100, 10100}));
    EXPECT_EQ(BlocksOfClusters(), (Counts{2, 2, 1}));
}

TEST_F(StrictClustersTest, ABlockFiveSecondsBeforeAClustersLatestBeginsAnother) {
    Expect({.clustersMayGoBack = true});
    KeepFromJudges();
    RegisterAudio();
    RegisterSubtitle();
    OpenStrict();
    Write(0, 10000 * kMs, 10020 * kMs);
    Write(0, 14000 * kMs, 14020 * kMs);
    WriteGroup(1, 9001 * kMs, 90000 * kMs); // 4999 ms before the latest one
    WriteGroup(1, 9000 * kMs, 90000 * kMs);
    EXPECT_EQ(ClusterTimes(), (ClusterTimeList{9001, 9000}));
    EXPECT_EQ(BlocksOfClusters(), (Counts{3, 1}));
}

TEST_F(StrictClustersTest, AClusterHasFiveMebibytesAtMost) {
    RegisterAudio();
    OpenStrict();
    for (INT64 i = 0; i < 11; ++i) {
        Write(0, i * 10 * kMs, (i + 1) * 10 * kMs, true, Bytes(kMiB / 2 - 20));
    }
    Write(0, 110 * kMs, 120 * kMs, true, Bytes(6 * kMiB)); // a block alone may be larger
    Write(0, 120 * kMs, 130 * kMs, true, Bytes(1));
    EXPECT_EQ(BlocksOfClusters(), (Counts{10, 1, 1, 1}));
    EXPECT_LE(File().Segment()->Children(test_support::ebml_id::kCluster)[0]->dataSize, 5 * kMiB);
}

TEST_F(StrictClustersTest, TheLastByteDecides) {
    constexpr UINT64 kOthers = 64; // the room that is left for heads
    EXPECT_FALSE(mkv::ExceedsStrictCluster(4999, 5 * kMiB, 2));
    EXPECT_TRUE(mkv::ExceedsStrictCluster(0, 5 * kMiB + 1, 2));
    EXPECT_TRUE(mkv::ExceedsStrictCluster(5000, 0, 2));
    EXPECT_FALSE(mkv::ExceedsStrictCluster(0, 0, 65536));
    EXPECT_TRUE(mkv::ExceedsStrictCluster(0, 0, 65537));
    EXPECT_FALSE(mkv::ExceedsStrictCluster(5000, 5 * kMiB + 1, 1)) << "a block alone";
    constexpr size_t kHeadBytes = 8; // of a simple block with a size of three bytes
    RegisterAudio();
    OpenStrict();
    Write(0, 0, 10 * kMs, true, Bytes(kMiB));
    Write(0, 10 * kMs, 20 * kMs, true, Bytes(4 * kMiB - kHeadBytes - kOthers));
    Write(0, 20 * kMs, 30 * kMs, true, Bytes(kMiB));
    Write(0, 30 * kMs, 40 * kMs, true, Bytes(4 * kMiB - kHeadBytes - kOthers + 1));
    EXPECT_EQ(BlocksOfClusters(), (Counts{2, 1, 1}));
}

TEST_F(StrictClustersTest, TheLastBlockDecides) {
    KeepFromJudges(); // of sound that nobody records
    RegisterAudio();
    OpenStrict();
    for (INT64 i = 0; i < 65537; ++i) {
        Write(0, i / 20 * kMs, (i / 20 + 1) * kMs, true); // twenty in a millisecond
    }
    EXPECT_EQ(BlocksOfClusters(), (Counts{65536, 1}));
}

TEST_F(StrictClustersTest, LargePayloadsAreTakenOverAndTheirOffsetsAreRightAllTheSame) {
    RegisterVideo();
    OpenStrict();
    const UINT32 size = 100000;
    for (INT64 frame = 0; frame < 5; ++frame) {
        auto owner = win::OwnedBytes(std::make_unique<BYTE[]>(size));
        std::fill_n(owner.get(), size, static_cast<BYTE>(frame));
        const INT64 start = (frame % 2 == 0 ? frame : frame + 2) * 40 * kMs;
        mkv::Packet packet{start, start, owner.get(), size, frame == 0, 0, false};
        packet.owned = &owner;
        m_writer.WritePacket(packet);
        EXPECT_EQ(owner, nullptr);
    }
    EXPECT_EQ(BlockTimes(1), (Times{0, 120, 80, 200, 160}));
    EXPECT_EQ(File().BlocksOf(1)[4].frames[0][size - 1], 4);
}

// ---- Payloads ------------------------------------------------------------------------------------------------------

// Of a byte stream: a parameter set and a picture, behind a start code of four bytes and one of three.
const std::vector<BYTE> kTwoUnits{0, 0, 0, 1, 0x67, 0x42, 0, 0, 1, 0x65, 0x88, 0};
const std::vector<BYTE> kTwoUnitsWithLengths{0, 0, 0, 2, 0x67, 0x42, 0, 0, 0, 2, 0x65, 0x88};

TEST_F(StrictClustersTest, UnitsBehindStartCodesOfEitherLengthGetLengths) {
    const Bytes header{0,    0,    0,    1, 0x67, 0x64, 0, 0x1e, 0xac, 0xd9, 0x40, 0xa0, 0x2f,
                       0xf9, 0x61, 0,    0, 3,    0,    1, 0,    0,    3,    0,    0x32, 0x0f,
                       0x16, 0x2d, 0x96, 0, 0,    0,    1, 0x68, 0xeb, 0xe3, 0xcb, 0x22, 0xc0};
    Register(test_support::Mpeg2VideoType(mediasubtype::kH264AnnexB, {}, header, 100, 30));
    OpenStrict();
    Write(0, 0, 40 * kMs, true, kTwoUnits);
    auto owner = win::OwnedBytes(std::make_unique<BYTE[]>(kTwoUnits.size()));
    std::copy(kTwoUnits.begin(), kTwoUnits.end(), owner.get());
    mkv::Packet owned{40 * kMs, 80 * kMs, owner.get(), static_cast<UINT32>(kTwoUnits.size()), true, 0, false};
    owned.owned = &owner;
    m_writer.WritePacket(owned);
    KeepFromJudges(); // there is no picture in it
    const auto blocks = File().BlocksOf(1);
    ASSERT_EQ(blocks.size(), 2u);
    for (const auto& block : blocks) {
        EXPECT_EQ(Bytes(block.frames[0].begin(), block.frames[0].end()), kTwoUnitsWithLengths);
    }
}

TEST_F(StrictClustersTest, PlainTextIsUtf8) {
    Register(test_support::TextType());
    OpenStrict();
    WriteGroup(0, 0, 40 * kMs, {'n', 0xe9, 'e'});
    const auto frame = File().BlocksOf(1).at(0).frames[0];
    EXPECT_EQ(Bytes(frame.begin(), frame.end()), (Bytes{'n', 0xc3, 0xa9, 'e'}));
}

// ---- What is not to be heard ---------------------------------------------------------------------------------------

constexpr uint32_t kDiscardPadding = 0x75a2;

class StrictOpusTest : public StrictTest {
  protected:
    static test_support::MediaTypeValue OpusType() {
        return test_support::WaveType(
            mediasubtype::kOpus, {},
            {'O', 'p', 'u', 's', 'H', 'e', 'a', 'd', 1, 2, 0x38, 1, 0x80, 0xbb, 0, 0, 0, 0, 0});
    }
    static Bytes Packet() { return {31 << 3, 1, 2, 3}; } // 20 ms

    // The DiscardPadding of each block group, in nanoseconds; 0 without one.
    std::vector<int64_t> Paddings() {
        std::vector<int64_t> paddings;
        for (const auto* const cluster : File().Segment()->Children(test_support::ebml_id::kCluster)) {
            for (const auto* const group : cluster->Children(test_support::ebml_id::kBlockGroup)) {
                const auto* const padding = group->Child(kDiscardPadding);
                const auto bytes = padding == nullptr ? test_support::ByteView() : DataOf(File().file, *padding);
                int64_t value = !bytes.empty() && bytes[0] >= 0x80 ? -1 : 0;
                for (const uint8_t byte : bytes) {
                    value = value * 256 + byte;
                }
                paddings.push_back(value);
            }
        }
        return paddings;
    }
};

TEST_F(StrictOpusTest, APacketThatStopsBeforeItsFramesEndIsABlockGroupWithItsPadding) {
    Register(OpusType());
    OpenStrict();
    Write(0, 0, 20 * kMs, true, Packet());
    Write(0, 20 * kMs, 33 * kMs + 4999, true, Packet());
    ASSERT_EQ(BlockTimes(1), (Times{0, 20}));
    const auto blocks = File().BlocksOf(1);
    EXPECT_TRUE(blocks[0].simple);
    EXPECT_FALSE(blocks[1].simple);
    EXPECT_TRUE(blocks[1].keyframe);
    EXPECT_EQ(blocks[1].duration, 13u);
    EXPECT_EQ(Paddings(), (std::vector<int64_t>{6500000}));
    EXPECT_EQ(File().duration, 33.0);
}

// Its first byte would else be taken for a sign.
TEST_F(StrictOpusTest, APaddingWhoseHighestBitIsSetIsPositive) {
    Register(OpusType());
    OpenStrict();
    Write(0, 0, 3 * kMs, true, Packet());
    Write(0, 20 * kMs, 20 * kMs + 100000 - 5, true, Packet()); // 10 ms: 0x989680
    Write(0, 40 * kMs, 40 * kMs + 197917, true, Packet());     // ten samples
    EXPECT_EQ(Paddings(), (std::vector<int64_t>{17000000, 10000000, 208333}));
}

TEST_F(StrictOpusTest, WithoutAStopTimeOrBehindTheFramesThereIsNone) {
    Register(OpusType());
    RegisterAudio();
    OpenStrict();
    Write(0, 0, 0, true, Packet());
    Write(0, 20 * kMs, 40 * kMs, true, Packet());
    Write(0, 40 * kMs, 70 * kMs, true, Packet());
    Write(1, 40 * kMs, 41 * kMs, true, Packet()); // other sound has none
    EXPECT_TRUE(Paddings().empty());
    EXPECT_EQ(File().BlocksOf(1).size() + File().BlocksOf(2).size(), 4u);
}

// ---- Observers -----------------------------------------------------------------------------------------------------

class BlockList final : public mkv::CBlockObserver {
  public:
    void blockWritten(const mkv::WrittenBlock& block) noexcept override { blocks.push_back(block); }
    std::vector<mkv::WrittenBlock> blocks;
};

TEST_F(StrictClustersTest, ObserversAreToldOfWrittenBlocksWithTheirFinalTimes) {
    CMkvIO io;
    io.setStream(&m_stream);
    records::FileOptions options;
    options.profile = MuxProfile_Strict;
    mkv::TrackList tracks;
    tracks.push_back({CMediaType(PcmType().Get()), Row()});
    BlockList list;
    {
        mkv::CMatroskaFile file(io, options);
        file.writeHead(mkv::DocType::matroska);
        file.writeTracks(tracks);
        file.clusters().observe(&list);
        const Bytes payload(7);
        (void)file.clusters().addFrameToCurrentCluster({0, 20 * kMs, payload.data(), 7, true, 0, false});
        (void)file.clusters().addFrameToCurrentCluster({-30 * kMs, -10 * kMs, payload.data(), 5, true, 0, false});
        EXPECT_TRUE(list.blocks.empty());
        file.clusters().flushCluster();
    }
    io.releaseStream();
    ASSERT_EQ(list.blocks.size(), 2u);
    EXPECT_EQ(list.blocks[0].track, 1);
    EXPECT_EQ(list.blocks[0].payloadBytes, 7u);
    EXPECT_EQ(list.blocks[0].timeNs, 30000000u);
    EXPECT_EQ(list.blocks[0].endNs, 50000000u);
    EXPECT_EQ(list.blocks[1].timeNs, 0u);
    EXPECT_EQ(list.blocks[1].payloadBytes, 5u);
}

TEST_F(StrictClustersTest, TheFirstKeyframeOfEachTrackIsToldOnce) {
    CMkvIO io;
    io.setStream(&m_stream);
    records::FileOptions options;
    options.profile = MuxProfile_Strict;
    mkv::TrackList tracks;
    tracks.push_back({CMediaType(CinepakType().Get()), Row()});
    tracks.push_back({CMediaType(PcmType().Get()), Row()});
    std::vector<std::pair<UINT32, size_t>> told;
    {
        mkv::CMatroskaFile file(io, options);
        file.writeHead(mkv::DocType::matroska);
        file.writeTracks(tracks);
        file.clusters().onFirstKeyframes(
            [&told](UINT32 stream, std::span<const BYTE> frame) { told.emplace_back(stream, frame.size()); });
        const Bytes payload(7);
        const auto add = [&](UINT32 stream, INT64 start, UINT32 size, bool isSync) {
            (void)file.clusters().addFrameToCurrentCluster(
                {start * kMs, start * kMs + 1, payload.data(), size, isSync, stream, false});
        };
        add(0, 0, 3, false);
        add(0, 20, 0, true); // leaves no frame
        add(0, 40, 4, true);
        add(1, 40, 5, false); // sound has keyframes alone
        add(0, 60, 6, true);
        add(1, 60, 7, true);
    }
    io.releaseStream();
    EXPECT_EQ(told, (std::vector<std::pair<UINT32, size_t>>{{0, 4}, {1, 5}}));
}

} // namespace
