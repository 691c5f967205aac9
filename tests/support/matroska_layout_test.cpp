#include "tests/support/matroska_layout.h"

#include <gtest/gtest.h>

#include "tests/support/byte_builder.h"
#include "tests/support/checksum.h"
#include "tests/support/golden_file.h"
#include "tests/support/layout_check.h"
#include "tests/support/layout_dump.h"
#include "tests/support/layout_json.h"
#include "tests/support/sample_files.h"
#include "tests/support/text_format.h"

namespace test_support {
namespace {

using namespace ebml_id;
using Lines = std::vector<std::string>;

// The one finding of a sample file bent in one place.
std::string OnlyFinding(const SampleFileOptions& options) {
    const RawBytes file = MakeSampleFile(options);
    const Lines findings = CheckLayout(file);
    EXPECT_EQ(findings.size(), 1u) << (findings.empty() ? "none" : findings.back());
    return findings.empty() ? "" : findings.front();
}

testing::AssertionResult Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos
               ? testing::AssertionSuccess()
               : testing::AssertionFailure() << "'" << text << "' lacks '" << part << "'";
}

TEST(LayoutReading, AWellFormedFileHasNoFindings) {
    const RawBytes file = MakeSampleFile();
    EXPECT_EQ(CheckLayout(file), Lines());
}

TEST(LayoutReading, RecordsHoldWhatTheFileSays) {
    const RawBytes file = MakeSampleFile();
    const MatroskaLayout layout = ReadLayout(file);
    EXPECT_EQ(layout.docType, "matroska");
    EXPECT_EQ(layout.timestampScaleNs, 1000000u);
    EXPECT_EQ(layout.duration, 1500.0);
    EXPECT_EQ(layout.muxingApp, "by hand");
    ASSERT_EQ(layout.seekEntries.size(), 3u);
    EXPECT_EQ(layout.seekEntries[2].targetId, kCues);
    ASSERT_EQ(layout.tracks.size(), 2u);
    EXPECT_EQ(layout.tracks[0].codecId, "V_VP8");
    EXPECT_EQ(layout.tracks[0].language, "eng");
    EXPECT_EQ(layout.tracks[0].name, std::nullopt);
    EXPECT_EQ(layout.tracks[1].type, 17u);
    EXPECT_EQ(layout.tracks[1].name, "Titles \"1\"");
    EXPECT_EQ(layout.tracks[1].flagDefault, 0u);
    ASSERT_EQ(layout.clusters.size(), 2u);
    ASSERT_EQ(layout.clusters[0].blocks.size(), 2u);
    EXPECT_EQ(layout.clusters[0].blocks[0].relativeTime, -50);
    EXPECT_EQ(layout.clusters[0].blocks[0].time, 0);
    EXPECT_TRUE(layout.clusters[0].blocks[0].keyframe);
    EXPECT_FALSE(layout.clusters[0].blocks[1].keyframe);
    ASSERT_EQ(layout.BlocksOf(2).size(), 1u);
    EXPECT_EQ(layout.BlocksOf(2)[0].duration, 500u);
    ASSERT_EQ(layout.cues.size(), 1u);
    EXPECT_EQ(layout.cues[0].time, 40u);
}

TEST(LayoutReading, LacedBlocksGiveTheirFrames) {
    std::string problem;
    const auto frameSizes = [&problem](const RawBytes& data) {
        problem.clear();
        std::vector<size_t> sizes;
        const std::optional<LayoutBlock> block = ReadBlock(data, problem);
        for (const ByteView frame : block ? block->frames : std::vector<ByteView>()) {
            sizes.push_back(frame.size());
        }
        return sizes;
    };
    const RawBytes xiph = Concatenate({{0x81, 0, 0, 0x02, 1, 255, 1}, RawBytes(256 + 2, 7)});
    EXPECT_EQ(frameSizes(xiph), (std::vector<size_t>{256, 2}));
    EXPECT_EQ(frameSizes({0x81, 0, 0, 0x04, 2, 1, 2, 3, 4, 5, 6}), (std::vector<size_t>{2, 2, 2}));
    EXPECT_EQ(frameSizes({0x81, 0, 0, 0x06, 2, 0x83, 0xbe, 1, 1, 1, 2, 2, 3}), (std::vector<size_t>{3, 2, 1}));
    EXPECT_EQ(problem, "");
    frameSizes({0x81, 0, 0, 0x04, 1, 1, 2, 3});
    EXPECT_NE(problem, "") << "three bytes in two equal frames";
    frameSizes({0x81, 0, 0, 0x06, 1, 0x9f, 1});
    EXPECT_NE(problem, "") << "a frame that is longer than the block";
}

TEST(LayoutCheck, SeekEntriesThatMissAreFound) {
    EXPECT_TRUE(Contains(OnlyFinding({.seekPositionError = 1}), "the seek head puts Info at position 101, where no"));
}

TEST(LayoutCheck, ElementsMissingInTheSeekHeadAreFound) {
    EXPECT_TRUE(Contains(OnlyFinding({.listCues = false}), "Cues is not listed in the seek head"));
}

TEST(LayoutCheck, CuesThatMissTheirClusterAreFound) {
    EXPECT_TRUE(Contains(OnlyFinding({.cuePositionError = -1}), "where no Cluster begins"));
}

TEST(LayoutCheck, CuesWithAnotherTimeOrTrackAreFound) {
    EXPECT_TRUE(Contains(OnlyFinding({.cueTime = 41}), "points at this Cluster, which has no such block"));
    EXPECT_TRUE(Contains(OnlyFinding({.cueTrack = 2}), "points at this Cluster, which has no such block"));
    EXPECT_TRUE(Contains(OnlyFinding({.cueRelativeError = 1}), "where no such block begins"));
    EXPECT_TRUE(Contains(OnlyFinding({.cueBlockNumber = 1}), "names block 1, which is another"));
}

TEST(LayoutCheck, SegmentSizesThatAreTooSmallOrTooLargeAreFound) {
    const RawBytes small = MakeSampleFile({.segmentSizeError = -1});
    EXPECT_FALSE(CheckLayout(small).empty());
    const RawBytes large = MakeSampleFile({.segmentSizeError = 1});
    EXPECT_FALSE(CheckLayout(large).empty());
}

TEST(LayoutCheck, BlocksOfUnknownTracksAreFound) {
    const RawBytes file = MakeSampleFile({.secondBlockTrack = 3});
    const Lines findings = CheckLayout(file);
    ASSERT_EQ(findings.size(), 2u) << "the block, and the cue that now misses it";
    EXPECT_TRUE(Contains(findings[0], "a block of the unknown track 3"));
}

TEST(LayoutCheck, ClustersThatGoBackAreFoundUnlessExpected) {
    EXPECT_TRUE(Contains(OnlyFinding({.secondClusterTime = 20}), "is before the one of the Cluster before it"));
    const RawBytes file = MakeSampleFile({.secondClusterTime = 20});
    EXPECT_EQ(CheckLayout(file, {.clustersMayGoBack = true}), Lines());
}

TEST(LayoutCheck, ADurationThatIsTooShortIsFound) {
    EXPECT_TRUE(Contains(OnlyFinding({.durationMs = 1400}), "Duration ends before the last block does"));
}

TEST(LayoutCheck, ChecksumsAreCompared) {
    const RawBytes covered = RawUnsigned(kTimestampScale, 1000000);
    const uint32_t crc = Crc32(covered);
    RawBytes stored{static_cast<uint8_t>(crc), static_cast<uint8_t>(crc >> 8), static_cast<uint8_t>(crc >> 16),
                    static_cast<uint8_t>(crc >> 24)};
    const auto findingsAboutIt = [&covered](const RawBytes& value) {
        const RawBytes info = RawElement(kInfo, Concatenate({RawElement(kCrc32, value), covered}));
        Lines findings = CheckLayout(RawElement(kSegment, info));
        std::erase_if(findings, [](const std::string& line) { return line.find("CRC-32") == std::string::npos; });
        return findings.size();
    };
    EXPECT_EQ(findingsAboutIt(stored), 0u);
    stored[3] ^= 1;
    EXPECT_EQ(findingsAboutIt(stored), 1u);
}

TEST(Checksum, KnownValue) {
    const RawBytes digits{'1', '2', '3', '4', '5', '6', '7', '8', '9'};
    EXPECT_EQ(Crc32(digits), 0xcbf43926u);
}

TEST(LayoutDump, MatchesItsGoldenFile) {
    const RawBytes file = MakeSampleFile();
    EXPECT_TRUE(MatchesGolden("support", "sample_file", DumpLayout(file)));
    EXPECT_TRUE(MatchesGolden("support", "sample_file_offsets", DumpLayout(file, {.offsets = true, .masked = {}})));
}

TEST(LayoutDump, TextsAreQuoted) {
    EXPECT_EQ(Quote("a\"b\\\n\xc3\xa9"), "\"a\\\"b\\\\\\x0a\\xc3\\xa9\"");
    EXPECT_EQ(FormatDouble(1500), "1500");
    EXPECT_EQ(FormatDouble(0.1), "0.1");
}

// ---- Damaged files: whatever is cut off or changed, the reader answers ----------------------------------------------

TEST(DamagedFiles, TruncatedAtEveryByteIsFoundAndNothingBreaks) {
    const RawBytes file = MakeSampleFile();
    for (size_t length = 0; length < file.size(); ++length) {
        const RawBytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(length));
        const MatroskaLayout layout = ReadLayout(cut);
        EXPECT_FALSE(CheckLayout(layout).empty()) << length;
        EXPECT_FALSE(DumpLayout(layout).empty() && length > 0) << length;
    }
}

TEST(DamagedFiles, EveryBitFlippedBreaksNothing) {
    const RawBytes file = MakeSampleFile();
    for (size_t bit = 0; bit < 8 * file.size(); ++bit) {
        RawBytes changed = file;
        changed[bit / 8] ^= static_cast<uint8_t>(1 << bit % 8);
        const MatroskaLayout layout = ReadLayout(changed);
        const Lines findings = CheckLayout(layout);
        if (bit % 8 == 0) { // the slow part, once a byte
            EXPECT_FALSE(DescribeAsJson(layout, findings).empty());
        }
    }
}

TEST(DamagedFiles, EveryByteAtItsExtremesBreaksNothing) {
    const RawBytes file = MakeSampleFile();
    for (size_t i = 0; i < file.size(); ++i) {
        for (const uint8_t value : {uint8_t{0x00}, uint8_t{0x01}, uint8_t{0x7f}, uint8_t{0x80}, uint8_t{0xff}}) {
            RawBytes changed = file;
            changed[i] = value;
            const MatroskaLayout layout = ReadLayout(changed);
            (void)CheckLayout(layout);
            EXPECT_FALSE(DumpLayout(layout).empty());
        }
    }
}

// A recording that was cut off has an open Segment; its last element may be cut, too.
TEST(DamagedFiles, ACutRecordingIsWellFormedAsSuch) {
    RawBytes file = MakeSampleFile();
    const MatroskaLayout whole = ReadLayout(file);
    const EbmlElement& segment = *whole.Segment();
    const std::vector<const EbmlElement*> clusters = segment.Children(kCluster);
    const RawBytes head(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(segment.offset));
    const auto content = [&file](uint64_t from, uint64_t to) {
        return RawBytes(file.begin() + static_cast<std::ptrdiff_t>(from),
                        file.begin() + static_cast<std::ptrdiff_t>(to));
    };
    const RawBytes open{0x0f, 0xff, 0xff, 0xff, 0xff};
    for (uint64_t end = clusters[0]->End(); end <= clusters[1]->End(); ++end) {
        const RawBytes cut = Concatenate({head, RawId(kSegment), open, content(segment.DataOffset(), end)});
        const MatroskaLayout layout = ReadLayout(cut);
        EXPECT_EQ(CheckLayout(layout, {.cut = true}), Lines()) << end;
        EXPECT_EQ(layout.BlocksOf(1).size(), 2u) << end;
        EXPECT_FALSE(CheckLayout(layout).empty()) << "it is not finished";
    }
}

} // namespace
} // namespace test_support
