#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/support/byte_builder.h"
#include "tests/support/layout_check.h"

namespace test_support {
namespace {

using namespace ebml_id;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr uint8_t kKeyframe = 0x80;
constexpr uint8_t kPictures = 1;
constexpr uint8_t kSubtitles = 2;
constexpr uint8_t kMorePictures = 3;

// A part of the cues: where the wanted block is, counted from the cluster's data, and what is said of it.
struct Cue {
    uint64_t time = 0;
    uint8_t track = kPictures;
    std::vector<RawBytes> more;
};

RawBytes Track(uint8_t number, uint8_t type) {
    RawBytes content = Concatenate({RawUnsigned(kTrackNumber, number), RawUnsigned(kTrackUid, number),
                                    RawUnsigned(kTrackType, type), RawText(kCodecId, "X")});
    if (type == kPictures) {
        const RawBytes size = Concatenate({RawUnsigned(kPixelWidth, 320), RawUnsigned(kPixelHeight, 240)});
        content = Concatenate({content, RawElement(kVideo, size)});
    }
    return RawElement(kTrackEntry, content);
}

RawBytes Text(int8_t time, uint16_t duration) {
    const RawBytes block = RawElement(kBlock, {0x80 | kSubtitles, 0, static_cast<uint8_t>(time), 0, 'h'});
    return RawElement(kBlockGroup, Concatenate({block, RawUnsigned(kBlockDuration, duration)}));
}

// One cluster at 1000, of 14 bytes of pictures before the text: Timestamp 4, blocks of 10 bytes.
struct Scene {
    uint64_t clusterTime = 1000;
    std::vector<RawBytes> blocks = {RawSimpleBlock(kPictures, 0, kKeyframe, {1, 2, 3}), Text(40, 100)};
    std::vector<Cue> cues = {
        {1000, kPictures, {RawUnsigned(kCueRelativePosition, 4)}},
        {1040, kSubtitles, {RawUnsigned(kCueRelativePosition, 14), RawUnsigned(kCueDuration, 100)}}};
    std::vector<uint8_t> trackTypes = {kPictures, 17, kPictures};
    bool infoLast = false;
    RawBytes beforeSeekHead;
};

RawBytes CuesOf(const Scene& scene, uint64_t clusterPosition) {
    RawBytes points;
    for (const Cue& cue : scene.cues) {
        RawBytes positions =
            Concatenate({RawUnsigned(kCueTrack, cue.track), RawUnsigned(kCueClusterPosition, clusterPosition)});
        for (const RawBytes& element : cue.more) {
            positions = Concatenate({positions, element});
        }
        points = Concatenate({points, RawElement(kCuePoint, Concatenate({RawUnsigned(kCueTime, cue.time),
                                                                         RawElement(kCueTrackPositions, positions)}))});
    }
    return RawElement(kCues, points);
}

RawBytes FileOf(const Scene& scene) {
    const RawBytes head = RawElement(kHead, RawText(kDocType, "matroska"));
    const RawBytes info = RawElement(kInfo, Concatenate({RawUnsigned(kTimestampScale, 1000000),
                                                         RawText(kMuxingApp, "m"), RawText(kWritingApp, "w")}));
    RawBytes entries;
    for (size_t i = 0; i < scene.trackTypes.size(); ++i) {
        entries = Concatenate({entries, Track(static_cast<uint8_t>(i + 1), scene.trackTypes[i])});
    }
    RawBytes cluster = RawUnsigned(kTimestamp, scene.clusterTime);
    for (const RawBytes& block : scene.blocks) {
        cluster = Concatenate({cluster, block});
    }
    const RawBytes tracks = RawElement(kTracks, entries, 2);
    const RawBytes clusters = RawElement(kCluster, cluster, 4);
    // An empty seek head: that its entries are complete is another check's business, and not asked of a cut file.
    const RawBytes seekHead = RawElement(kSeekHead, RawBytes());
    const uint64_t position =
        scene.beforeSeekHead.size() + seekHead.size() + tracks.size() + (scene.infoLast ? 0 : info.size());
    const RawBytes cues = CuesOf(scene, position);
    const RawBytes content = Concatenate({scene.beforeSeekHead, seekHead, scene.infoLast ? RawBytes() : info, tracks,
                                          clusters, cues, scene.infoLast ? info : RawBytes()});
    return Concatenate({head, RawElement(kSegment, content, 5)});
}

// But for the seek head's entries.
std::vector<std::string> FindingsOf(const Scene& scene, bool strict = true) {
    const RawBytes file = FileOf(scene);
    std::vector<std::string> findings = CheckLayout(file, {.strict = strict});
    std::erase_if(findings, [](const std::string& text) { return text.ends_with("is not listed in the seek head"); });
    return findings;
}

TEST(StrictLayout, WhatItAsksOfAFileCanBeHad) {
    EXPECT_THAT(FindingsOf({}), IsEmpty());
}

TEST(StrictLayout, ACompatibleFileIsNotAskedForIt) {
    Scene scene;
    scene.cues = {{1000, kPictures, {}}};
    EXPECT_THAT(FindingsOf(scene, false), IsEmpty());
    EXPECT_THAT(FindingsOf(scene), testing::SizeIs(2)); // a relative position, and the subtitle's cue
}

TEST(StrictLayout, AClusterBeginsWithItsEarliestBlock) {
    Scene scene;
    scene.clusterTime = 1010;
    scene.blocks[0] = RawSimpleBlock(kPictures, -10, kKeyframe, {1, 2, 3});
    scene.blocks[1] = Text(30, 100);
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("is not the one of its earliest block, which is -10 away")));
    scene.clusterTime = 990;
    scene.blocks[0] = RawSimpleBlock(kPictures, 10, kKeyframe, {1, 2, 3});
    scene.blocks[1] = Text(50, 100);
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("is not the one of its earliest block, which is 10 away")));
}

TEST(StrictLayout, AClusterLastsFiveSeconds) {
    Scene scene;
    scene.blocks.push_back(RawSimpleBlock(kMorePictures, 5000, 0, {1}));
    EXPECT_THAT(FindingsOf(scene), IsEmpty());
    scene.blocks.back() = RawSimpleBlock(kMorePictures, 5001, 0, {1});
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("a Cluster of more than 5 s")));
}

TEST(StrictLayout, AClusterHasFiveMebibytesUnlessItHasOneBlock) {
    Scene scene;
    scene.trackTypes = {kPictures};
    scene.cues.pop_back();
    RawBytes large(6 << 20, 0);
    large[0] = 0x80 | kPictures;
    large[3] = kKeyframe;
    scene.blocks = {RawElement(kSimpleBlock, large, 4)};
    EXPECT_THAT(FindingsOf(scene), IsEmpty());
    scene.blocks.push_back(RawSimpleBlock(kPictures, 1, 0, {1}));
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("a Cluster of more than 5 MiB")));
}

TEST(StrictLayout, AClusterHasABlock) {
    Scene scene;
    scene.blocks.clear();
    scene.cues.clear();
    EXPECT_THAT(FindingsOf(scene), testing::Contains(EndsWith("a Cluster without a block")));
}

TEST(StrictLayout, ACueIsForAKeyframe) {
    Scene scene;
    scene.blocks[0] = RawSimpleBlock(kPictures, 0, 0, {1, 2, 3});
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("at 1000 leads to a block that is no keyframe")));
}

// A compatible file's cue is rounded down, its block sometimes is not.
TEST(StrictLayout, ACueHasTheVeryTimeOfItsBlock) {
    Scene scene;
    scene.cues[0].time = 999;
    EXPECT_THAT(FindingsOf(scene), testing::Contains(EndsWith("points at this Cluster, which has no such block")));
    scene.cues.pop_back();
    scene.cues[0].more.clear();
    EXPECT_THAT(FindingsOf(scene, false), IsEmpty());
}

TEST(StrictLayout, ACueOfASubtitleLastsAsLongAsItsBlock) {
    Scene scene;
    scene.cues[1].more[1] = RawUnsigned(kCueDuration, 99);
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("at 1040 has another duration than its block")));
    scene.cues[1].more.pop_back();
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("at 1040 has another duration than its block")));
}

TEST(StrictLayout, EachKeyframeOfTheFirstVideoTrackAndEachSubtitleHasACue) {
    Scene scene;
    scene.blocks.push_back(RawSimpleBlock(kPictures, 80, kKeyframe, {1}));
    scene.blocks.push_back(RawSimpleBlock(kPictures, 90, 0, {1}));
    scene.blocks.push_back(RawSimpleBlock(kMorePictures, 90, kKeyframe, {1}));
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("the block at 1080 of track 1 has no cue")));
    scene.blocks.resize(2);
    scene.cues.pop_back();
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("the block at 1040 of track 2 has no cue")));
}

TEST(StrictLayout, AnotherVideoTrackNeedsNoCue) {
    Scene scene;
    scene.blocks.push_back(RawSimpleBlock(kMorePictures, 0, kKeyframe, {1}));
    scene.cues.push_back({1000, kMorePictures, {RawUnsigned(kCueRelativePosition, 4)}});
    EXPECT_THAT(FindingsOf(scene), testing::Contains(EndsWith("a cue for track 3, which needs none")));
}

TEST(StrictLayout, SoundAloneHasACueEveryTwoSeconds) {
    Scene scene;
    scene.trackTypes = {2};
    scene.blocks = {RawSimpleBlock(1, 0, kKeyframe, {1, 2, 3}), RawSimpleBlock(1, 1999, kKeyframe, {1}),
                    RawSimpleBlock(1, 2000, kKeyframe, {1})};
    scene.cues.pop_back();
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("the block at 3000 of track 1 has no cue")));
    scene.blocks.pop_back();
    EXPECT_THAT(FindingsOf(scene), IsEmpty());
}

TEST(StrictLayout, TheHeadHasItsOrder) {
    Scene scene;
    scene.infoLast = true;
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("there is no Info before the first Cluster")));
    scene = {};
    scene.beforeSeekHead = RawElement(kVoid, {0});
    EXPECT_THAT(FindingsOf(scene), ElementsAre(EndsWith("the Segment does not begin with its seek head")));
}

// It has an Info from its start.
TEST(StrictLayout, ARecordingThatWasCutOffHasItsInfoAndNeedsNoSeekHead) {
    const RawBytes open{0x0f, 0xff, 0xff, 0xff, 0xff};
    const RawBytes head = RawElement(kHead, RawText(kDocType, "matroska"));
    const RawBytes padding = RawElement(kVoid, {0});
    const RawBytes info = RawElement(kInfo, Concatenate({RawUnsigned(kTimestampScale, 1000000),
                                                         RawText(kMuxingApp, "m"), RawText(kWritingApp, "w")}));
    const RawBytes with = Concatenate({head, RawId(kSegment), open, padding, info});
    EXPECT_THAT(CheckLayout(with, {.cut = true, .strict = true}), IsEmpty());
    const RawBytes without = Concatenate({head, RawId(kSegment), open, padding});
    EXPECT_THAT(CheckLayout(without, {.cut = true}), IsEmpty());
    EXPECT_THAT(CheckLayout(without, {.cut = true, .strict = true}), ElementsAre(EndsWith("there is no Info")));
}

} // namespace
} // namespace test_support
