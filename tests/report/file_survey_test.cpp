// What a report is made of, from files made by hand: whole, damaged, cut, hostile.
#include "report/file_survey.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/sources/base/memory_source.h"
#include "tests/sources/matroska/matroska_builder.h"

namespace report {
namespace {

using namespace test_matroska;
using test_support::Concatenate;
using test_support::RawElement;
using test_support::RawText;
using test_support::RawUnsigned;

FileFacts Survey(const RawBytes& file) {
    const test_source::MemorySource source(std::vector<BYTE>(file.begin(), file.end()));
    return FileSurvey(source, [](UINT64, UINT64) {}).Read();
}

RawBytes Video() {
    return TrackEntry(1, 1, "V_VP8");
}

RawBytes Audio() {
    return TrackEntry(2, 2, "A_OPUS");
}

RawBytes KeyPicture(int16_t ticks) {
    return SimpleBlock(1, ticks, kKeyframe, "picture");
}

RawBytes Sound(int16_t ticks) {
    return SimpleBlock(2, ticks, kKeyframe, "snd");
}

const Node* Find(const std::vector<Node>& nodes, const std::string& name) {
    const auto found = std::find_if(nodes.begin(), nodes.end(), [&](const Node& node) { return node.name == name; });
    return found == nodes.end() ? nullptr : &*found;
}

TEST(FileSurvey, CountsBlocksKeyframesAndBytesOfEachTrack) {
    const FileFacts facts =
        Survey(FileOf({Video(), Audio()}, {Cluster(0, {KeyPicture(0), Sound(5), SimpleBlock(1, 40, 0, "pic")}),
                                           Cluster(80, {KeyPicture(0)})}));
    ASSERT_EQ(2u, facts.tracks.size());
    EXPECT_EQ(1u, facts.tracks[0].number);
    EXPECT_EQ("V_VP8", facts.tracks[0].codecId);
    EXPECT_EQ(3u, facts.tracks[0].blocks);
    EXPECT_EQ(2u, facts.tracks[0].keyframes);
    EXPECT_EQ(17u, facts.tracks[0].bytes);
    EXPECT_EQ(80u, facts.tracks[0].end);
    EXPECT_EQ(1u, facts.tracks[1].blocks);
    EXPECT_EQ(2u, facts.clusters);
    EXPECT_EQ(0u, facts.damageCount);
    EXPECT_EQ(1u, facts.timeline.Row(0)[80].blocks);
    EXPECT_EQ(7u, facts.timeline.Row(facts.tracks[0].row)[80].bytes);
    EXPECT_EQ("matroska", facts.docType);
}

TEST(FileSurvey, PausesAreFoundAndSubtitlesHaveNone) {
    std::vector<RawBytes> blocks;
    const auto pictures = [](uint64_t ticks) {
        return Cluster(ticks, {KeyPicture(0), KeyPicture(40), KeyPicture(80), KeyPicture(120)});
    };
    const FileFacts facts = Survey(FileOf({Video(), TrackEntry(3, 17, "S_TEXT/UTF8")},
                                          {pictures(0), Cluster(150, {BlockGroup(3, 0, 0, "one")}), pictures(3000),
                                           pictures(3160), Cluster(9000, {BlockGroup(3, 0, 0, "two")})}));
    ASSERT_EQ(1u, facts.tracks[0].gapCount);
    EXPECT_EQ(120u, facts.tracks[0].gaps[0].from);
    EXPECT_EQ(3000u, facts.tracks[0].gaps[0].to);
    EXPECT_EQ(0u, facts.tracks[1].gapCount);
}

TEST(FileSurvey, ABlockLagsBehindOthersByWhatStandsBeforeIt) {
    const FileFacts facts = Survey(FileOf(
        {Video(), Audio()}, {Cluster(0, {KeyPicture(0), KeyPicture(40), KeyPicture(400), Sound(10), Sound(390)})}));
    EXPECT_EQ(390u, facts.tracks[1].lag);
    EXPECT_EQ(0u, facts.tracks[0].lag);
    EXPECT_EQ(390u, facts.timeline.Row(facts.tracks[1].row)[10].lag);
}

TEST(FileSurvey, PicturesInTheOrderOfTheirCodingLagBehindNobody) {
    const FileFacts facts =
        Survey(FileOf({Video(), Audio()}, {Cluster(0, {Sound(0), KeyPicture(0), SimpleBlock(1, 120, 0, "p"),
                                                       SimpleBlock(1, 40, 0, "b"), SimpleBlock(1, 80, 0, "b")})}));
    EXPECT_EQ(0u, facts.tracks[0].lag);
    EXPECT_EQ(0u, facts.tracks[0].gapCount);
}

TEST(FileSurvey, OfATornClusterTheBlocksAreReadAndTheRestIsDamage) {
    RawBytes file = FileOf({Video()}, {Cluster(0, {KeyPicture(0)}), Cluster(80, {KeyPicture(0), KeyPicture(40)})});
    const size_t tornAt = file.size() - 5;
    file.resize(tornAt);
    const FileFacts facts = Survey(file);
    EXPECT_EQ(2u, facts.tracks[0].blocks);
    EXPECT_EQ(2u, facts.clusters);
    ASSERT_GE(facts.damageCount, 1u);
    EXPECT_LT(facts.damages[0].from, tornAt);
    EXPECT_GT(facts.damages[0].from, tornAt - 20);
    EXPECT_EQ(tornAt, facts.damages[0].to);
    EXPECT_EQ("damaged", facts.pieces.back().name);
}

TEST(FileSurvey, BehindDamageItGoesOnAtTheNextCluster) {
    RawBytes file = FileOf({Video()}, {Cluster(0, {KeyPicture(0)})});
    const size_t damaged = file.size();
    file.insert(file.end(), 100, 0);
    const RawBytes more = Cluster(80, {KeyPicture(0)});
    file.insert(file.end(), more.begin(), more.end());
    // The Segment takes in all of it: its size field of eight bytes begins behind its identifier.
    const std::vector<uint8_t> id{0x18, 0x53, 0x80, 0x67};
    const auto segment = std::search(file.begin(), file.end(), id.begin(), id.end());
    std::fill(segment + 4, segment + 12, uint8_t{0xff});
    *(segment + 4) = 0x01;
    const FileFacts facts = Survey(file);
    EXPECT_EQ(2u, facts.tracks[0].blocks);
    ASSERT_EQ(1u, facts.damageCount);
    EXPECT_EQ(damaged, facts.damages[0].from);
    EXPECT_EQ(damaged + 100, facts.damages[0].to);
}

TEST(FileSurvey, ClustersOfUnknownSizeEndWhereTheNextBegins) {
    const FileFacts facts = Survey(
        Concatenate({Head("webm"),
                     UnknownMaster(id::kSegment,
                                   {Master(id::kTracks, {Video()}),
                                    UnknownMaster(id::kCluster, {RawUnsigned(id::kTimestamp, 0), KeyPicture(0)}),
                                    UnknownMaster(id::kCluster, {RawUnsigned(id::kTimestamp, 80), KeyPicture(0)})})}));
    EXPECT_EQ(2u, facts.clusters);
    EXPECT_EQ(2u, facts.tracks[0].blocks);
    EXPECT_EQ(80u, facts.tracks[0].end);
    EXPECT_EQ(0u, facts.damageCount);
    EXPECT_EQ("webm", facts.docType);
}

TEST(FileSurvey, TheTreeHasTheFirstOfEachNameAndCountsTheRest) {
    std::vector<RawBytes> rest;
    RawBytes clusters;
    for (uint64_t i = 0; i < 30; ++i) {
        const RawBytes cluster = Cluster(i * 4, {KeyPicture(0)});
        clusters.insert(clusters.end(), cluster.begin(), cluster.end());
    }
    const FileFacts facts = Survey(FileOf({Video()}, {clusters, Master(id::kCues, {})}));
    const Node* const segment = Find(facts.tree, "Segment");
    ASSERT_NE(nullptr, segment);
    const auto of = [&](bool kept) {
        return std::count_if(segment->children.begin(), segment->children.end(),
                             [&](const Node& node) { return node.name == "Cluster" && (node.more == 0) == kept; });
    };
    EXPECT_EQ(static_cast<std::ptrdiff_t>(ElementTree::kMostOfAName), of(true));
    ASSERT_EQ(1, of(false));
    const auto more = std::find_if(segment->children.begin(), segment->children.end(),
                                   [](const Node& node) { return node.more != 0; });
    EXPECT_EQ(6u, more->more);
    EXPECT_EQ(6 * clusters.size() / 30, more->size);
    EXPECT_NE(nullptr, Find(segment->children, "Cues")); // what comes behind them is not lost
    const Node* const tracks = Find(segment->children, "Tracks");
    ASSERT_NE(nullptr, tracks);
    const Node* const entry = Find(tracks->children, "TrackEntry");
    ASSERT_NE(nullptr, entry);
    EXPECT_EQ("V_VP8", Find(entry->children, "CodecID")->value);
}

TEST(FileSurvey, ElementsThatNobodyKnowsAreInTheTree) {
    const FileFacts facts =
        Survey(FileOf({Video()}, {Cluster(0, {KeyPicture(0)}), Master(id::kInfo, {RawElement(0x4321, {1, 2, 3})})}));
    const Node* const info = Find(Find(facts.tree, "Segment")->children, "Info");
    ASSERT_NE(nullptr, info);
    ASSERT_EQ(1u, info->children.size());
    EXPECT_EQ("unknown", info->children[0].name);
    EXPECT_EQ("0x4321", info->children[0].value);
}

TEST(FileSurvey, WhatIsNoMatroskaFileIsRefused) {
    EXPECT_THROW((void)Survey(RawBytes(100, 0)), NoMatroskaFile);
    EXPECT_THROW((void)Survey(RawBytes{0x1a}), NoMatroskaFile);
}

TEST(FileSurvey, ManyTracksAndDamagesStayWithinBounds) {
    RawBytes blocks;
    for (int i = 0; i < 2000; ++i) {
        const RawBytes block = SimpleBlock(static_cast<uint8_t>(i % 127 + 1), 0, kKeyframe, "x");
        blocks.insert(blocks.end(), block.begin(), block.end());
    }
    const FileFacts facts = Survey(FileOf({Video()}, {Cluster(0, {blocks})}));
    EXPECT_EQ(127u, facts.tracks.size());
    EXPECT_EQ(0u, facts.tracks[5].type);
}

TEST(FileSurvey, AnyByteOfAFileMayBeAnotherOne) {
    const RawBytes rich = RichFile();
    for (size_t i = 0; i < rich.size(); i += 7) {
        RawBytes damaged = rich;
        damaged[i] = static_cast<uint8_t>(damaged[i] ^ 0xff);
        try {
            const FileFacts facts = Survey(damaged);
            EXPECT_EQ(rich.size(), facts.bytes);
            EXPECT_LE(facts.timeline.Cells(), Timeline::kMostCells);
        } catch (const NoMatroskaFile&) {
            EXPECT_LT(i, Head().size());
        }
    }
}

TEST(FileSurvey, AFileMayEndAnywhere) {
    const RawBytes rich = RichFile();
    for (size_t size = Head().size(); size < rich.size(); size += 5) {
        RawBytes cut = rich;
        cut.resize(size);
        EXPECT_EQ(size, Survey(cut).bytes);
    }
}

TEST(FileSurvey, ProgressIsToldAndMayEndIt) {
    const RawBytes rich = RichFile();
    const test_source::MemorySource source(std::vector<BYTE>(rich.begin(), rich.end()));
    UINT64 last = 0;
    (void)FileSurvey(source, [&](UINT64 done, UINT64 all) {
        EXPECT_GE(done, last);
        EXPECT_EQ(rich.size(), all);
        last = done;
    }).Read();
    EXPECT_EQ(rich.size(), last);
    struct Stop {};
    EXPECT_THROW((void)FileSurvey(source, [](UINT64, UINT64) { throw Stop(); }).Read(), Stop);
}

} // namespace
} // namespace report
