// What a strict file tells of how much of each track it holds.
#include <gmock/gmock.h>

#include <map>

#include "mkv/file_origin.h"
#include "mkv/track_statistics.h"
#include "tests/mkv/writer_fixture.h"

namespace {

using namespace test_support::ebml_id;
using test_support::EbmlElement;
using test_support::StreamOperation;
using testing::IsEmpty;

constexpr uint32_t kTag = 0x7373;
constexpr uint32_t kTargets = 0x63c0;
constexpr uint32_t kTagTrackUid = 0x63c5;
constexpr uint32_t kSimpleTag = 0x67c8;
constexpr uint32_t kTagName = 0x45a3;
constexpr uint32_t kTagString = 0x4487;

class TrackStatisticsTest : public WriterTest {
  protected:
    struct Texts {
        UINT64 uid = 0;
        std::vector<std::string> names;
        std::map<std::string, std::string> of;
    };

    static records::FileOptions Strict() {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = 3;
        return options;
    }

    static std::string TextOf(const Layout& layout, const EbmlElement& parent, uint32_t id) {
        const auto data = test_support::DataOf(layout.file, *parent.Child(id));
        return {data.begin(), data.end()};
    }

    // The tags of the finished file.
    std::vector<Texts> Tags() {
        std::vector<Texts> tags;
        const EbmlElement* const element = Element({kTags});
        for (const EbmlElement& tag : element == nullptr ? std::vector<EbmlElement>() : element->children) {
            EXPECT_EQ(tag.id, kTag);
            Texts& texts = tags.emplace_back();
            EXPECT_EQ(tag.children.at(0).children.size(), 1u) << "the target's type is the default";
            texts.uid = *test_support::UnsignedOf(File().file, *tag.Child(kTargets)->Child(kTagTrackUid));
            for (const EbmlElement* const simple : tag.Children(kSimpleTag)) {
                EXPECT_EQ(simple->children.size(), 2u) << "the language is the default";
                texts.names.push_back(TextOf(File(), *simple, kTagName));
                texts.of[texts.names.back()] = TextOf(File(), *simple, kTagString);
            }
        }
        return tags;
    }
};

TEST_F(TrackStatisticsTest, EachTrackHasItsTagBehindTheCues) {
    RegisterVideo();
    RegisterAudio();
    Open(Strict());
    for (INT64 frame = 0; frame < 30; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 10 == 0, Bytes(100, 1));
        Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, true, Bytes(7, 2));
    }
    const std::vector<Texts> tags = Tags();
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[0].names, (std::vector<std::string>{"BPS", "DURATION", "NUMBER_OF_FRAMES", "NUMBER_OF_BYTES",
                                                       "_STATISTICS_WRITING_APP", "_STATISTICS_WRITING_DATE_UTC",
                                                       "_STATISTICS_TAGS"}));
    EXPECT_EQ(tags[0].uid, File().tracks[0].uid);
    EXPECT_EQ(tags[0].of.at("BPS"), "20000");
    EXPECT_EQ(tags[0].of.at("DURATION"), "00:00:01.200000000");
    EXPECT_EQ(tags[0].of.at("NUMBER_OF_FRAMES"), "30");
    EXPECT_EQ(tags[0].of.at("NUMBER_OF_BYTES"), "3000");
    EXPECT_EQ(tags[0].of.at("_STATISTICS_WRITING_APP"), File().writingApp);
    EXPECT_EQ(tags[0].of.at("_STATISTICS_WRITING_DATE_UTC"), "2001-01-01 00:00:00");
    EXPECT_EQ(tags[0].of.at("_STATISTICS_TAGS"), "BPS DURATION NUMBER_OF_FRAMES NUMBER_OF_BYTES");
    EXPECT_EQ(tags[1].uid, File().tracks[1].uid);
    EXPECT_EQ(tags[1].of.at("NUMBER_OF_BYTES"), "210");
    const auto& children = File().Segment()->children;
    EXPECT_EQ(children.back().id, kTags);
    EXPECT_EQ(children[children.size() - 2].id, kCues);
    EXPECT_EQ(File().seekEntries.back().targetId, kTags);
}

TEST_F(TrackStatisticsTest, ATrackWithoutABlockHasNumbersOfZero) {
    RegisterVideo();
    RegisterSubtitle();
    Open(Strict());
    Write(0, 0, 40 * kMs, true);
    const std::vector<Texts> tags = Tags();
    ASSERT_EQ(tags.size(), 2u);
    EXPECT_EQ(tags[1].of.at("BPS"), "0");
    EXPECT_EQ(tags[1].of.at("DURATION"), "00:00:00.000000000");
    EXPECT_EQ(tags[1].of.at("NUMBER_OF_FRAMES"), "0");
    EXPECT_EQ(tags[1].of.at("NUMBER_OF_BYTES"), "0");
}

TEST_F(TrackStatisticsTest, AClusterThatAFailedWriteLostCountsNowhere) {
    RegisterVideo();
    Open(Strict());
    m_stream.FailNth(StreamOperation::Write, 2, STG_E_MEDIUMFULL); // of four clusters
    for (INT64 frame = 0; frame < 4; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, true, Bytes(10 + static_cast<size_t>(frame), 1));
    }
    const std::vector<Texts> tags = Tags();
    ASSERT_EQ(File().BlocksOf(1).size(), 3u);
    ASSERT_EQ(tags.size(), 1u);
    EXPECT_EQ(tags[0].of.at("NUMBER_OF_FRAMES"), "3");
    EXPECT_EQ(tags[0].of.at("NUMBER_OF_BYTES"), "35");
}

TEST_F(TrackStatisticsTest, ThereAreNoneWhenTheyAreSwitchedOffNorInWebmNorInACompatibleFile) {
    records::FileOptions off = Strict();
    off.trackStatistics = false;
    for (const records::FileOptions& options : {off, records::FileOptions()}) {
        RegisterVideo();
        Open(options);
        Write(0, 0, 40 * kMs, true);
        EXPECT_THAT(Tags(), IsEmpty());
    }
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    KeepFromJudges(); // there is no picture in it
    Register(test_support::VideoInfoType(SubtypeFromFourCC('V', 'P', '8', '0')));
    Open(Strict());
    Write(0, 0, 40 * kMs, true);
    EXPECT_THAT(Tags(), IsEmpty());
}

TEST_F(TrackStatisticsTest, WhoIsNoTrackIsNotCounted) {
    mkv::CTrackStatistics statistics;
    statistics.setTracks({77});
    statistics.blockWritten({.track = 0, .payloadBytes = 1, .timeNs = 0, .endNs = 1});
    statistics.blockWritten({.track = 2, .payloadBytes = 1, .timeNs = 0, .endNs = 1});
    ASSERT_EQ(statistics.tracks().size(), 1u);
    EXPECT_EQ(statistics.tracks()[0].blocks, 0u);
}

TEST_F(TrackStatisticsTest, TheSpanReachesFromTheEarliestStartToTheLatestEndAndBitsAreRoundedDown) {
    mkv::CTrackStatistics statistics;
    statistics.setTracks({77});
    statistics.blockWritten({.track = 1, .payloadBytes = 3, .timeNs = 2000000000, .endNs = 2500000000});
    statistics.blockWritten({.track = 1, .payloadBytes = 2, .timeNs = 1750000000, .endNs = 2000000000});
    statistics.blockWritten({.track = 1, .payloadBytes = 0, .timeNs = 1900000000, .endNs = 1950000000});
    EXPECT_EQ(statistics.tracks()[0].durationNs(), 750000000u);
    EXPECT_EQ(statistics.tracks()[0].bitsPerSecond(), 53u); // of 53.3
}

TEST_F(TrackStatisticsTest, ADateIsWrittenInUtcWithAllItsDigits) {
    EXPECT_EQ(mkv::DateText(0), "1970-01-01 00:00:00");
    EXPECT_EQ(mkv::DateText(1795360483), "2026-11-22 15:14:43");
    EXPECT_EQ(mkv::DateText(951782399), "2000-02-28 23:59:59");
    EXPECT_EQ(mkv::DateText(951782400), "2000-02-29 00:00:00");
}

} // namespace
