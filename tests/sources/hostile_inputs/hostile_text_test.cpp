#include <gmock/gmock.h>

#include "sources/text/ass_parser.h"
#include "sources/text/subtitle_reader.h"
#include "tests/sources/hostile_inputs/input_cost.h"

namespace test_hostile {
namespace {

using source::kMiB;

constexpr size_t kLargest = 64 * kMiB;
#ifdef _WIN32
constexpr size_t kFilled = 16 * kMiB;
#else
constexpr size_t kFilled = kMiB / 4; // the sanitizers take their time
#endif
// What is held of a text: its bytes, what they become, the events.
constexpr size_t kTimesHeld = 5;
// A string that grows to three times the bytes; the largest texts end sooner.
constexpr size_t kTimesHeldDecoding = 8;
constexpr std::string_view kSrtEvent = "0:00:01,0 --> 0:00:02,0\na\n";
constexpr std::string_view kAssEvent = "[Events]\nDialogue: 0,0:00:01.00,0:00:02.00,D,,0,0,0,,a\n";

// The text, filled up.
Bytes Filled(std::string_view front, BYTE filler) {
    Bytes bytes(kFilled, filler);
    std::copy(front.begin(), front.end(), bytes.begin());
    return bytes;
}

TEST(HostileText, LineEndsCostNothing) {
    const Cost srt = CostOf(OpenSrt, Filled(kSrtEvent, '\n'));
    EXPECT_LE(srt.peakBytes, kTimesHeld * kFilled);
    EXPECT_EQ(srt.packets, 1u);
    EXPECT_EQ(srt.packetBytes, 1u);
    EXPECT_FALSE(srt.isDamaged);
    const Cost ass = CostOf(OpenAss, Filled(kAssEvent, '\n'));
    EXPECT_EQ(ass.packets, 1u);
    EXPECT_LE(ass.peakBytes, kTimesHeld * kFilled);
}

// Each of them takes two bytes there.
TEST(HostileText, LineEndsInFrontOfTheEventsOfAScriptAreHeldToTheSizeOfAHeader) {
    Bytes bytes(9 * kMiB, '\n');
    bytes.insert(bytes.end(), kAssEvent.begin(), kAssEvent.end());
    const Cost cost = CostOf(OpenAss, bytes);
    EXPECT_EQ(cost.packets, 1u);
    EXPECT_TRUE(cost.isDamaged);
    const auto file = subtitles::ParseAss(std::string(bytes.begin(), bytes.end()));
    ASSERT_TRUE(file);
    EXPECT_LE(file->header.size(), source::kMaxPrivateBytes + 1024);
}

TEST(HostileText, EveryEncodingIsDecodedWithoutHoldingTheTextTwice) {
    const Bytes texts[] = {Filled(kSrtEvent, 0xe4), Filled("\xef\xbb\xbf", 0xff), Filled("\xff\xfe", 0x4e)};
    for (const Bytes& text : texts) { // Windows-1252, UTF-8 that is mended, UTF-16
        EXPECT_LE(CostOf(OpenSrt, text).peakBytes, kTimesHeldDecoding * kFilled);
    }
}

TEST(HostileText, MoreThanTheLargestSizeIsRefused) {
    EXPECT_TRUE(CostOfSparse(OpenSrt, {}, kLargest + 1).isRefused);
    EXPECT_TRUE(CostOfSparse(OpenAss, {}, UINT64{1} << 40).isRefused);
}

TEST(HostileText, EventsAboveTheirNumberAreLeftOutAndTold) {
    constexpr size_t kMost = 1024 * 1024;
    subtitles::SubtitleFile file;
    for (size_t i = 0; i < kMost; ++i) {
        file.Add({});
    }
    EXPECT_FALSE(file.isDamaged);
    file.Add({});
    EXPECT_EQ(file.events.size(), kMost);
    EXPECT_TRUE(file.isDamaged);
}

std::string ScriptOfFields(size_t fields) {
    std::string text = "[Events]\nFormat: ";
    std::string event = "\nDialogue: ";
    for (size_t i = 3; i < fields; ++i) {
        text += "x,";
        event += ",";
    }
    return text + "Start,End,Text" + event + "0:00:01.00,0:00:02.00,a\n";
}

// Each event is looked at field by field: what a script may have of them bounds what an event costs.
TEST(HostileText, AScriptHasAtMost64Fields) {
    const auto most = subtitles::ParseAss(ScriptOfFields(64));
    ASSERT_TRUE(most);
    EXPECT_EQ(most->events.size(), 1u);
    EXPECT_FALSE(most->isDamaged);
    for (const size_t fields : {size_t{65}, size_t{100'000}}) {
        const auto more = subtitles::ParseAss(ScriptOfFields(fields));
        ASSERT_TRUE(more);
        EXPECT_TRUE(more->events.empty()) << fields;
        EXPECT_TRUE(more->isDamaged) << fields;
        EXPECT_LE(more->header.size(), size_t{64} * 1024 + 256) << fields;
    }
}

TEST(HostileText, ALineAsLongAsTheFileCostsNoMoreThanShortOnes) {
    EXPECT_EQ(CostOf(OpenSrt, Filled(kSrtEvent, ':')).packets, 1u);
    EXPECT_EQ(CostOf(OpenSrt, Filled(kSrtEvent, '1')).packets, 1u);
    EXPECT_EQ(CostOf(OpenAss, Filled(kAssEvent, ',')).packets, 1u);
}

} // namespace
} // namespace test_hostile
