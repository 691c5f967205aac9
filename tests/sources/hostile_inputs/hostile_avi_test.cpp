#include <gmock/gmock.h>

#include "sources/avi/avi_media_type.h"
#include "sources/avi/avi_reader.h"
#include "tests/sources/avi/avi_builder.h"
#include "tests/sources/hostile_inputs/input_cost.h"

namespace test_hostile {
namespace {

using namespace test_avi;
using source::kMiB;

constexpr UINT32 kKeyframe = 0x10;

Bytes BytesOf(const std::string& text) {
    return {text.begin(), text.end()};
}

// One good picture, then a chunk that claims so many bytes; nothing of them is there but their number.
Bytes FrontOfHugeChunk(UINT32 size) {
    std::string file = AviFileOf(Chunk("00dc", "good") + Chunk("00dc", ""));
    const size_t chunk = file.rfind("00dc");
    const size_t movie = file.rfind("movi");
    file.replace(chunk + 4, 4, Dword(size));
    const auto claim = [&](size_t at, size_t from) {
        file.replace(at, 4, Dword(static_cast<UINT32>(std::min<UINT64>(chunk + 8 + size - from, UINT32_MAX))));
    };
    claim(movie - 4, movie);
    claim(4, 8);
    return BytesOf(file);
}

TEST(HostileAvi, AChunkAboveTheLargestPacketIsNotEvenAskedFor) {
    for (const UINT32 size : {0x0800'0001U, 0x5000'0000U, 0x7f70'0000U, 0x9000'0000U, 0xffff'ff00U}) {
        const Bytes front = FrontOfHugeChunk(size);
        const Cost cost = CostOfSparse(OpenAvi, front, front.size() + UINT64{size});
        EXPECT_EQ(cost.packets, 1u) << size;
        EXPECT_TRUE(cost.isDamaged) << size;
        EXPECT_LE(cost.peakBytes, kMiB) << size;
        EXPECT_LE(cost.readBytes, kMiB) << size;
    }
}

TEST(HostileAvi, WhatAStreamClaimsBeforehandIsNoMoreThanTheLargestPacket) {
    const Bytes front = FrontOfHugeChunk(0x5000'0000);
    const auto reader = OpenAvi(std::make_unique<CountingSource>(front, front.size() + UINT64{0x5000'0000},
                                                                 std::make_shared<CountingSource::Counts>()));
    EXPECT_LE(reader->Streams()[0].largestPacket, source::kMaxPacketBytes);
}

TEST(HostileAvi, OnlyTheFirstIndexOfASegmentIsRead) {
    constexpr int kChunks = 2000;
    std::string movie;
    std::string indexes = Chunk("idx1", IndexEntry("00dc", 0));
    for (int i = 0; i < kChunks; ++i) {
        movie += Chunk("00dc", "x");
        indexes += Chunk("idx1", IndexEntry("00dc", kKeyframe) + IndexEntry("00dc", 0) + IndexEntry("09dc", 0));
    }
    const Bytes file = BytesOf(AviFileOf(movie, indexes));
    const auto counts = std::make_shared<CountingSource::Counts>();
    const auto parsed = avi::ReadAviFile(CountingSource(file, file.size(), counts));
    ASSERT_TRUE(parsed);
    ASSERT_EQ(parsed->chunks.size(), size_t{kChunks});
    EXPECT_FALSE(parsed->chunks[0].keyframe) << "as the first index says";
    EXPECT_TRUE(parsed->chunks[1].keyframe) << "of which the second one says nothing";
    EXPECT_LE(counts->calls, 2U * kChunks + 100) << "one look at each chunk and each index";
}

TEST(HostileAvi, EachSegmentHasAnIndexOfItsOwn) {
    const std::string first = AviFileOf(Chunk("00dc", "a"), Chunk("idx1", IndexEntry("00dc", 0)));
    const std::string second = Riff("AVIX", List("movi", Chunk("00dc", "b")) + Chunk("idx1", IndexEntry("00dc", 0)));
    const MemorySource bytes(first + second);
    const auto parsed = avi::ReadAviFile(bytes);
    ASSERT_TRUE(parsed);
    ASSERT_EQ(parsed->chunks.size(), 2u);
    EXPECT_FALSE(parsed->chunks[0].keyframe);
    EXPECT_FALSE(parsed->chunks[1].keyframe);
}

Bytes WithTimeBase(UINT32 scale, UINT32 rate, int pictures) {
    std::string movie;
    for (int i = 0; i < pictures; ++i) {
        movie += Chunk("00dc", "picture!");
    }
    std::string file = AviFileOf(movie);
    const size_t header = file.find("vids");
    file.replace(header + 20, 4, Dword(scale));
    file.replace(header + 24, 4, Dword(rate));
    return BytesOf(file);
}

TEST(HostileAvi, TimesThatCannotBeAreLeftOutAndTold) {
    const Cost cost = CostOf(OpenAvi, WithTimeBase(0xffff'ffff, 1, 300));
    EXPECT_EQ(cost.packets, 0u) << "a picture of 136 years";
    EXPECT_TRUE(cost.isDamaged);
    const Cost partly = CostOf(OpenAvi, WithTimeBase(600'000'000, 1, 10));
    EXPECT_EQ(partly.packets, 3u) << "19 years each, and time ends after 73";
    EXPECT_TRUE(partly.isDamaged);
}

TEST(HostileAvi, ADurationThatCannotBeIsNotOffered) {
    const Bytes file = WithTimeBase(0xffff'ffff, 1, 1);
    const auto parsed = avi::ReadAviFile(CountingSource(file, file.size(), std::make_shared<CountingSource::Counts>()));
    const CMediaType type = avi::MediaTypeOf(parsed->streams.at(0));
    ASSERT_EQ(type.formattype, FORMAT_VideoInfo);
    EXPECT_EQ(reinterpret_cast<const VIDEOINFOHEADER*>(type.pbFormat)->AvgTimePerFrame, 0);
}

TEST(HostileAvi, UnitsAndTimeBaseDoNotOverflowTogether) {
    Bytes file = WithTimeBase(0xffff'ffff, 0xffff'fffe, 1);
    std::string text(file.begin(), file.end());
    text.replace(text.find("vids") + 28, 4, Dword(86'000)); // the start
    const Cost cost = CostOf(OpenAvi, BytesOf(text));
    EXPECT_EQ(cost.packets, 1u);
    EXPECT_FALSE(cost.isDamaged);
}

TEST(HostileAvi, FormatsOfAllStreamsShareABound) {
    std::string headers = Chunk("avih", std::string(56, '\0'));
    const std::string format(kMiB, 'f');
    for (int i = 0; i < 40; ++i) {
        headers += List("strl", Chunk("strh", "vids" + std::string(52, '\0')) + Chunk("strf", format));
    }
    const MemorySource bytes(Riff("AVI ", List("hdrl", headers) + List("movi", Chunk("00dc", "x"))));
    const auto parsed = avi::ReadAviFile(bytes);
    ASSERT_TRUE(parsed);
    ASSERT_EQ(parsed->streams.size(), 40u);
    size_t held = 0;
    for (const avi::AviStream& stream : parsed->streams) {
        held += stream.format.size();
    }
    EXPECT_EQ(held, source::kMaxPrivateBytes);
}

} // namespace
} // namespace test_hostile
