// What the samples of a codec have, and blocks have not, or have beside their frames.
#include <cstring>

#include <gtest/gtest.h>

#include "codecs/webvtt_cue.h"
#include "dshow/media_subtypes.h"
#include "sources/base/buffered_source.h"
#include "sources/matroska/matroska_reader.h"
#include "tests/sources/base/memory_source.h"
#include "tests/sources/base/packet_checks.h"
#include "tests/sources/matroska/matroska_builder.h"

namespace matroska {
namespace {

using namespace test_matroska;
using test_support::RawElement;
using test_support::RawUnsigned;

constexpr uint32_t kBlockAdditions = 0x75a1;
constexpr uint32_t kBlockMore = 0xa6;
constexpr uint32_t kBlockAdditional = 0xa5;
constexpr uint32_t kBlockAddId = 0xee;
constexpr uint32_t kUncompressedFourCc = 0x2eb524;

std::unique_ptr<MatroskaReader> ReaderOf(const RawBytes& bytes) {
    auto source = std::make_unique<source::BufferedSource>(std::make_unique<test_source::MemorySource>(bytes));
    MatroskaFile file = ReadMatroskaFile(*source).value();
    return std::make_unique<MatroskaReader>(std::move(source), std::move(file));
}

std::vector<std::string> FramesOf(const RawBytes& bytes) {
    const auto reader = ReaderOf(bytes);
    std::vector<std::string> frames;
    for (const source::Packet& packet : test_source::ReadAll(*reader)) {
        frames.emplace_back(packet.data.begin(), packet.data.end());
    }
    return frames;
}

RawBytes Picture(std::initializer_list<RawBytes> more = {}) {
    RawBytes fields = test_support::Concatenate({RawUnsigned(id::kPixelWidth, 16), RawUnsigned(id::kPixelHeight, 8)});
    for (const RawBytes& one : more) {
        fields.insert(fields.end(), one.begin(), one.end());
    }
    return Master(id::kVideo, {fields});
}

// ---- ProRes

RawBytes ProResFile(std::initializer_list<RawBytes> blocks) {
    const RawBytes kind = RawElement(id::kCodecPrivate, Text("apch"));
    return FileOf({TrackEntry(1, 1, "V_PRORES", {kind, Picture()})}, {Cluster(0, blocks)});
}

TEST(WrappedFrames, ProResFramesGetTheirHead) {
    const auto frames =
        FramesOf(ProResFile({SimpleBlock(1, 0, kKeyframe, "abcd"), SimpleBlock(1, 40, kKeyframe, "zzzzicpfabcd")}));
    ASSERT_EQ(frames.size(), 2u);
    EXPECT_EQ(frames[0], std::string("\0\0\0\x0cicpfabcd", 12));
    EXPECT_EQ(frames[1], "zzzzicpfabcd"); // it has one
    const auto reader = ReaderOf(ProResFile({}));
    EXPECT_EQ(reader->Streams()[0].types.at(0).subtype, SubtypeFromFourCC('a', 'p', 'c', 'h'));
}

// ---- Pictures that are not compressed

std::string FourCcSubtypeOf(const RawBytes& fourCc) {
    const auto reader = ReaderOf(FileOf(
        {TrackEntry(1, 1, "V_UNCOMPRESSED", {Picture({RawElement(kUncompressedFourCc, fourCc)})})}, {Cluster(0, {})}));
    const auto& stream = reader->Streams()[0];
    return stream.types.empty() ? stream.problem : std::to_string(stream.types[0].subtype.Data1);
}

TEST(WrappedFrames, AnUncompressedPictureIsWhatItsFourCcSays) {
    EXPECT_EQ(FourCcSubtypeOf(Text("NV12")), std::to_string(0x3231564e));
    for (const char* other : {"", "NV1", "NV123", "\xff\xff\xff\xff"}) {
        EXPECT_EQ(FourCcSubtypeOf(Text(other)), "V_UNCOMPRESSED: no media type carries this codec") << other;
    }
}

// ---- WebVTT

RawBytes Addition(std::string_view text, std::initializer_list<RawBytes> identifier = {}) {
    RawBytes more = Master(kBlockAdditional, {Text(text)}); // its size may be large
    for (const RawBytes& one : identifier) {
        more.insert(more.end(), one.begin(), one.end());
    }
    return Master(kBlockAdditions, {Master(kBlockMore, {more})});
}

// "text|settings|identifier|comments" of each cue.
std::vector<std::string> CuesOf(std::initializer_list<RawBytes> blocks) {
    const RawBytes header = RawElement(id::kCodecPrivate, Text("WEBVTT"));
    std::vector<std::string> cues;
    for (const std::string& frame :
         FramesOf(FileOf({TrackEntry(1, 17, "S_TEXT/WEBVTT", {header})}, {Cluster(0, blocks)}))) {
        const auto cue = codecs::CueOfBoxes({reinterpret_cast<const uint8_t*>(frame.data()), frame.size()});
        cues.push_back(cue.text + "|" + cue.settings + "|" + cue.identifier + "|" + cue.comments);
    }
    return cues;
}

TEST(WrappedFrames, ACueBringsWhatStandsBesideItsBlock) {
    using Cues = std::vector<std::string>;
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi", {Addition("line:1\nid\nNOTE a\nb")})}), Cues{"Hi|line:1|id|NOTE a\nb"});
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi", {Addition("line:1")})}), Cues{"Hi|line:1||"});
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi", {Addition("\nid\n", {RawUnsigned(kBlockAddId, 1)})})}),
              Cues{"Hi||id|"});
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi", {Addition("line:1", {RawUnsigned(kBlockAddId, 4)})})}), Cues{"Hi|||"});
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi")}), Cues{"Hi|||"});
    EXPECT_EQ(CuesOf({SimpleBlock(1, 0, kKeyframe, "Hi")}), Cues{"Hi|||"});
}

TEST(WrappedFrames, AnAdditionThatIsTooLargeIsNone) {
    const std::string fits(64 * 1024, 'x');
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi", {Addition(fits)})}), std::vector{"Hi|" + fits + "||"});
    EXPECT_EQ(CuesOf({BlockGroup(1, 0, 0, "Hi", {Addition(fits + "x")})}), std::vector<std::string>{"Hi|||"});
}

TEST(WrappedFrames, ACueGoesBackAsItCame) {
    for (const char* addition : {"line:1\nid\nNOTE a\nb", "line:1\n\n", "\nid\n", "\n\nNOTE"}) {
        codecs::WebVttCue cue;
        cue.text = "Hi";
        codecs::ReadCueAddition({reinterpret_cast<const uint8_t*>(addition), std::strlen(addition)}, cue);
        EXPECT_EQ(codecs::CueAddition(codecs::CueOfBoxes(codecs::BoxesOfCue(cue))), addition);
    }
}

} // namespace
} // namespace matroska
