// The times that packets have where a strict file is to be made of them.
#include <gmock/gmock.h>

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
using testing::ElementsAre;

constexpr uint32_t kCodecDelayId = 0x56aa;
constexpr uint32_t kDiscardPaddingId = 0x75a2;
constexpr uint32_t kBlockDurationId = 0x9b;
constexpr uint8_t kOpus20 = 31 << 3; // the first byte of a packet of 20 ms

// "0@10-20" for each packet, in units of 100 ns; no stop without one.
std::vector<std::string> TimesOf(const RawBytes& bytes, TimeRule rule = TimeRule::Exact) {
    auto source = std::make_unique<source::BufferedSource>(std::make_unique<test_source::MemorySource>(bytes));
    std::optional<MatroskaFile> file = ReadMatroskaFile(*source);
    if (!file) {
        return {"refused"};
    }
    MatroskaReader reader(std::move(source), std::move(*file), rule);
    std::vector<std::string> texts;
    for (const source::Packet& packet : test_source::ReadAll(reader)) {
        texts.push_back(std::to_string(packet.stream) + "@" + std::to_string(packet.start));
        texts.back() += packet.hasStop ? "-" + std::to_string(packet.stop) : "";
    }
    EXPECT_EQ(reader.Damage(), S_OK);
    return texts;
}

RawBytes Sound(uint8_t number, uint64_t codecDelayNs) {
    return TrackEntry(number, 2, "A_AC3", {RawUnsigned(kCodecDelayId, codecDelayNs)});
}

// Without a header there is no delay that the muxer would write.
RawBytes Opus(uint8_t number, uint64_t codecDelayNs = 0) {
    return TrackEntry(number, 2, "A_OPUS", {RawUnsigned(kCodecDelayId, codecDelayNs)});
}

std::string OpusPacket(uint8_t first = kOpus20) {
    return {static_cast<char>(first), 'x', 'y'};
}

RawBytes Padding(std::initializer_list<uint8_t> bytes) {
    return RawElement(kDiscardPaddingId, RawBytes(bytes));
}

TEST(ExactTimes, ACodecDelayThatNobodyWillWriteIsTakenOff) {
    const RawBytes file = FileOf({Sound(1, 0), Sound(2, 25'000'000)},
                                 {Cluster(0, {SimpleBlock(1, 100, 0, "a"), SimpleBlock(2, 100, 0, "b")})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@1000000", "1@750000"));
    EXPECT_THAT(TimesOf(file, TimeRule::AsStored), ElementsAre("0@1000000", "1@1000000"));
}

TEST(ExactTimes, AllMoveByWholeMillisecondsWhereItLeadsBelowZero) {
    const RawBytes file = FileOf({Sound(1, 0), Sound(2, 6'500'000)},
                                 {Cluster(0, {SimpleBlock(2, 0, 0, "b"), SimpleBlock(1, 0, 0, "a")})});
    EXPECT_THAT(TimesOf(file), testing::UnorderedElementsAre("1@0", "0@70000"));
    const RawBytes fine = FileOf({Sound(1, 0)}, {Master(id::kInfo, {RawUnsigned(id::kTimestampScale, 300'000)}),
                                                 Cluster(0, {SimpleBlock(1, -5, 0, "a"), SimpleBlock(1, 5, 0, "b")})});
    EXPECT_THAT(TimesOf(fine), ElementsAre("0@5000", "0@35000"));
}

TEST(ExactTimes, DelaysAreRoundedToMilliseconds) {
    const RawBytes file =
        FileOf({Sound(1, 1'083'333), Sound(2, 6'500'000), Sound(3, 21'499'999)},
               {Cluster(0, {SimpleBlock(1, 100, 0, "a"), SimpleBlock(2, 100, 0, "b"), SimpleBlock(3, 100, 0, "c")})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@990000", "1@930000", "2@790000"));
}

TEST(ExactTimes, BlocksOfLaterClustersLieBelowZeroOnlyByTheDelay) {
    const RawBytes file =
        FileOf({Sound(1, 0), Sound(2, 1'000'000'000)},
               {Cluster(0, {SimpleBlock(1, 0, 0, "a")}), Cluster(33500, {SimpleBlock(2, -32768, 0, "b")})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@2680000", "1@0"));
}

TEST(ExactTimes, ADelayOfMoreThanASecondIsDamageAndNone) {
    const RawBytes file = FileOf({Sound(1, 0), Sound(2, 1'000'000'001)},
                                 {Cluster(0, {SimpleBlock(1, 0, 0, "a"), SimpleBlock(2, 0, 0, "b")})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@0", "1@0"));
}

TEST(ExactTimes, OpusPacketsStopWhereTheyEndAndWithPaddingBefore) {
    const RawBytes file =
        FileOf({Opus(1)}, {Cluster(0, {SimpleBlock(1, 0, 0, OpusPacket()), SimpleBlock(1, 21, 0, OpusPacket()),
                                       BlockGroup(1, 40, 0, OpusPacket(),
                                                  {RawUnsigned(kBlockDurationId, 20), Padding({3, 0x2d, 0xcd})})})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@0-200000", "0@210000-410000", "0@400000-597917"));
    EXPECT_THAT(TimesOf(file, TimeRule::AsStored), ElementsAre("0@0", "0@210000", "0@400000-600000"));
}

TEST(ExactTimes, OfSeveralPacketsInABlockTheLastOneHasThePadding) {
    const RawBytes file =
        FileOf({Opus(1)}, {Cluster(0, {BlockGroup(1, 0, kFixedLacing, "\x01" + OpusPacket() + OpusPacket(16 << 3),
                                                  {Padding({0x0f, 0x42, 0x40})})})}); // 1 ms of 2.5
    EXPECT_THAT(TimesOf(file), ElementsAre("0@0-200000", "0@200000-215000"));
}

TEST(ExactTimes, APaddingInFrontIsNone) {
    const RawBytes file = FileOf({Opus(1)}, {Cluster(0, {BlockGroup(1, 0, 0, OpusPacket(), {Padding({0xf0, 0, 0})})})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@0-200000"));
}

TEST(ExactTimes, APacketThatIsPaddingAllOverStopsAtOnceAndOneThatIsDamagedNowhere) {
    const RawBytes file = FileOf({Opus(1)}, {Cluster(0, {BlockGroup(1, 0, 0, OpusPacket(), {Padding({2, 0, 0, 0})}),
                                                         SimpleBlock(1, 20, 0, OpusPacket(kOpus20 | 3))})});
    EXPECT_THAT(TimesOf(file), ElementsAre("0@0-1", "0@200000"));
}

} // namespace
} // namespace matroska
