#include "mkvmux/huge_chunks.h"

#include <string>

#include <gtest/gtest.h>

#include "sources/base/limits.h"
#include "tests/sources/avi/avi_builder.h"

namespace mkvmux {
namespace {

using namespace test_avi;

constexpr UINT32 kMost = source::kMaxPacketBytes;

// The head of a chunk of that many bytes, which are not there.
std::string Claim(const char* id, UINT32 size) {
    return id + Dword(size);
}

bool IsHuge(const std::string& file) {
    return HasHugeChunk(MemorySource(file));
}

TEST(HugeChunksTest, AMediaChunkAboveTheBoundIsHuge) {
    EXPECT_FALSE(IsHuge(AviFileOf(Chunk("00dc", "good") + Claim("00dc", kMost))));
    EXPECT_TRUE(IsHuge(AviFileOf(Chunk("00dc", "good") + Claim("00dc", kMost + 1))));
    EXPECT_TRUE(IsHuge(AviFileOf(Claim("01wb", 0xffffffff))));
}

TEST(HugeChunksTest, ListsOfChunksAreLookedInto) {
    EXPECT_TRUE(IsHuge(AviFileOf(List("rec ", Chunk("00dc", "odd") + Claim("01wb", kMost + 1)))));
    const std::string second = Riff("AVIX", List("movi", Claim("00dc", kMost + 1)));
    EXPECT_TRUE(IsHuge(AviFileOf(Chunk("00dc", "good")) + second));
}

TEST(HugeChunksTest, WhatIsNoMediaIsNotCounted) {
    EXPECT_FALSE(IsHuge(AviFileOf(Chunk("00dc", "good") + Claim("JUNK", 0x7fffffff))));
    EXPECT_FALSE(IsHuge(AviFileOf(Chunk("00dc", Claim("00dc", kMost + 1))))) << "inside of a chunk";
    EXPECT_FALSE(IsHuge(Riff("WAVE", Claim("00dc", kMost + 1))));
    EXPECT_FALSE(IsHuge(std::string()));
}

// Nobody but the file itself says that a list of its own holds no media; and what it says of its size may be wrong.
TEST(HugeChunksTest, ListsOfOtherKindsAreLookedIntoAndBehind) {
    EXPECT_TRUE(IsHuge(AviFileOf(List("abcd", Claim("00dc", kMost + 1)))));
    EXPECT_TRUE(IsHuge(AviFileOf(List("abcd", "no chunks at all") + Claim("00dc", kMost + 1))));
    EXPECT_FALSE(IsHuge(AviFileOf(List("abcd", Chunk("00dc", "good")) + Chunk("00dc", "good"))));
}

TEST(HugeChunksTest, WhatAFileSaysOfItsOwnSizeIsNotBelieved) {
    std::string file = AviFileOf(Claim("00dc", kMost + 1));
    file.replace(4, 4, Dword(4));
    EXPECT_TRUE(IsHuge(file));
}

TEST(HugeChunksTest, MoreChunksThanAnyRecordingHasCountAsHuge) {
    std::string chunks;
    for (int i = 0; i < 8 << 20; ++i) {
        chunks += "JUNK";
        chunks += Dword(0);
    }
    EXPECT_TRUE(IsHuge(AviFileOf(chunks)));
    EXPECT_FALSE(IsHuge(AviFileOf(chunks.substr(800)))); // the head of the file has a few as well
}

// Across the ends of what is read at once.
TEST(HugeChunksTest, HeadsAreFoundWhereverTheyLie) {
    for (size_t size = 3900; size < 4100; ++size) {
        EXPECT_TRUE(IsHuge(AviFileOf(Chunk("00dc", std::string(size, '0')) + Claim("00dc", kMost + 1)))) << size;
        EXPECT_FALSE(IsHuge(AviFileOf(Chunk("00dc", std::string(size, '0')) + Claim("00dc", kMost)))) << size;
    }
}

TEST(HugeChunksTest, AFileThatCannotBeOpenedHasNone) {
    EXPECT_FALSE(HasHugeChunk(L"C:\\no such file.avi"));
}

} // namespace
} // namespace mkvmux
