#include <random>

#include <gtest/gtest.h>

#include "sources/avi/avi_file.h"
#include "sources/avi/avi_reader.h"
#include "tests/sources/avi/avi_builder.h"
#include "tests/sources/base/packet_checks.h"

namespace avi {
namespace {

using namespace test_avi;

constexpr UINT32 kKeyframe = 0x10;

std::optional<AviFile> Parsed(const std::string& bytes) {
    return ReadAviFile(MemorySource(bytes));
}

std::string ContentOf(const std::string& file, const AviChunk& chunk) {
    return file.substr(static_cast<size_t>(chunk.offset), chunk.size);
}

// "0:abc" for each chunk, in the order of the file; a star marks keyframes.
std::string Summary(const std::string& file) {
    std::string text;
    const auto parsed = Parsed(file);
    if (!parsed) {
        return "none";
    }
    for (const AviChunk& chunk : parsed->chunks) {
        text += std::to_string(chunk.stream) + (chunk.keyframe ? "*:" : ":") + ContentOf(file, chunk) + " ";
    }
    return text;
}

TEST(AviParser, FindsStreamsAndChunksInTheOrderOfTheFile) {
    const std::string file = AviFileOf(Chunk("00dc", "picture") + Chunk("01wb", "sound!") + Chunk("00dc", "next"));
    const auto parsed = Parsed(file);
    ASSERT_TRUE(parsed);
    ASSERT_EQ(parsed->streams.size(), 2u);
    EXPECT_EQ(parsed->streams[0].rate, 25u);
    EXPECT_EQ(parsed->streams[0].format.size(), 40u);
    EXPECT_EQ(parsed->streams[0].largestChunk, 7u);
    EXPECT_EQ(parsed->streams[1].sampleSize, 2u);
    EXPECT_EQ(Summary(file), "0*:picture 1*:sound! 0*:next ");
}

TEST(AviParser, AStreamMayStartLateButNotADayLate) {
    std::string file = AviFileOf(Chunk("01wb", "sound!"));
    const size_t header = file.find("strh", file.find("strh") + 1) + 8;
    file.replace(header + 28, 4, Dword(4000));
    EXPECT_EQ(Parsed(file)->streams.at(1).start, 4000u);
    file.replace(header + 28, 4, Dword(24 * 60 * 60 * 8000));
    EXPECT_EQ(Parsed(file)->streams.at(1).start, 24u * 60 * 60 * 8000);
    for (const UINT32 damaged : {24U * 60 * 60 * 8000 + 1, 0xFFFFFFFFU}) {
        file.replace(header + 28, 4, Dword(damaged));
        EXPECT_EQ(Parsed(file)->streams.at(1).start, 0u);
    }
}

TEST(AviParser, TheIndexTellsKeyframes) {
    const std::string movie = Chunk("00dc", "a") + Chunk("01wb", "bb") + Chunk("00dc", "c") + Chunk("00dc", "d");
    const std::string index = Chunk("idx1", IndexEntry("00dc", kKeyframe) + IndexEntry("01wb", kKeyframe) +
                                                IndexEntry("00dc", 0) + IndexEntry("00dc", kKeyframe));
    EXPECT_EQ(Summary(AviFileOf(movie, index)), "0*:a 1*:bb 0:c 0*:d ");
}

TEST(AviParser, TheStandardIndexTellsKeyframesByPosition) {
    const std::string movie = Chunk("00dc", "aa") + Chunk("00dc", "bb");
    const auto positions = Parsed(AviFileOf(movie))->chunks;
    std::string index = std::string("\x02\x00\x00\x01", 4) + Dword(2) + "00dc" + Dword(0) + Dword(0) + Dword(0);
    index += Dword(static_cast<UINT32>(positions[0].offset)) + Dword(2);
    index += Dword(static_cast<UINT32>(positions[1].offset)) + Dword(0x80000002);
    EXPECT_EQ(Summary(AviFileOf(movie + Chunk("ix00", index))), "0*:aa 0:bb ");
}

TEST(AviParser, SegmentsBehindTheFirstAreRead) {
    const std::string file = AviFileOf(Chunk("00dc", "aa")) + Riff("AVIX", List("movi", Chunk("00dc", "bb")));
    EXPECT_EQ(Summary(file), "0*:aa 0*:bb ");
}

TEST(AviParser, RecordsAreEntered) {
    EXPECT_EQ(Summary(AviFileOf(List("rec ", Chunk("00dc", "aa") + Chunk("01wb", "bb")))), "0*:aa 1*:bb ");
}

TEST(AviParser, ARecordingThatWasCutOffIsReadAsFarAsItGoes) {
    std::string file = AviFileOf(Chunk("00dc", "aa") + Chunk("00dc", "bb") + Chunk("00dc", "cccccc"));
    file.resize(file.size() - 3); // within the last chunk
    EXPECT_EQ(Summary(file), "0*:aa 0*:bb ");
    // The sizes of the outer lists were never written.
    file.replace(4, 4, Dword(0));
    file.replace(file.find("movi") - 4, 4, Dword(0));
    EXPECT_EQ(Summary(file), "0*:aa 0*:bb ");
}

TEST(AviParser, TellsThatARecordingWasCutOff) {
    const std::string whole = AviFileOf(Chunk("00dc", "aa") + Chunk("00dc", "bb"), Chunk("idx1", std::string(64, '.')));
    EXPECT_FALSE(Parsed(whole)->isCutOff);
    for (const size_t behindMovie : {size_t{0}, size_t{8}, size_t{40}}) {
        EXPECT_TRUE(Parsed(whole.substr(0, whole.find("idx1") + behindMovie))->isCutOff) << behindMovie;
    }
    // The sizes of the outer lists were never written: only a chunk that breaks off tells.
    std::string unfinished = AviFileOf(Chunk("00dc", "aa") + Chunk("00dc", "cccccc"));
    unfinished.replace(4, 4, Dword(0));
    unfinished.replace(unfinished.find("movi") - 4, 4, Dword(0));
    EXPECT_FALSE(Parsed(unfinished)->isCutOff);
    EXPECT_TRUE(Parsed(unfinished.substr(0, unfinished.size() - 3))->isCutOff);
}

TEST(AviParser, AnOuterSizeThatCountsItsHeadIsNoCut) {
    std::string file = AviFileOf(Chunk("00dc", "aa"));
    file.replace(4, 4, Dword(static_cast<UINT32>(file.size())));
    EXPECT_FALSE(Parsed(file)->isCutOff);
}

TEST(AviParser, WhatIsNoAviFileIsNone) {
    for (const std::string& bytes : {std::string(), std::string("RIFF"), Riff("WAVE", "x"), Riff("AVI ", ""),
                                     Riff("AVI ", List("movi", Chunk("00dc", "a"))), std::string(1000, 'x')}) {
        EXPECT_FALSE(Parsed(bytes)) << bytes.substr(0, 12);
    }
}

TEST(AviParser, ChunksOfUnknownStreamsAreSkipped) {
    EXPECT_EQ(Summary(AviFileOf(Chunk("07dc", "a") + Chunk("JUNK", "b") + Chunk("x1dc", "c") + Chunk("00dc", "d"))),
              "0*:d ");
}

TEST(AviParser, ChangesOfThePaletteAreNoPictures) {
    const std::string movie = Chunk("00dc", "a") + Chunk("00pc", "palette") + Chunk("00dc", "b");
    const std::string index =
        Chunk("idx1", IndexEntry("00dc", kKeyframe) + IndexEntry("00pc", kKeyframe) + IndexEntry("00dc", 0));
    EXPECT_EQ(Summary(AviFileOf(movie, index)), "0*:a 0:b ");
}

TEST(AviParser, SurvivesEveryCutAndTellsNothingBehindTheEnd) {
    const std::string index = Chunk("idx1", IndexEntry("00dc", kKeyframe) + IndexEntry("01wb", 0));
    const std::string whole = AviFileOf(Chunk("00dc", "picture") + Chunk("01wb", "sound"), index);
    for (size_t length = 0; length <= whole.size(); ++length) {
        if (const auto parsed = Parsed(whole.substr(0, length))) {
            for (const AviChunk& chunk : parsed->chunks) {
                EXPECT_LE(chunk.offset + chunk.size, length);
                EXPECT_LT(chunk.stream, parsed->streams.size());
            }
        }
    }
}

TEST(AviParser, SurvivesDamageEverywhere) {
    const std::string index = Chunk("idx1", IndexEntry("00dc", kKeyframe) + IndexEntry("01wb", 0));
    const std::string whole = AviFileOf(Chunk("00dc", "picture") + Chunk("ix00", std::string(40, '\x01')) +
                                            List("rec ", Chunk("01wb", "sound")),
                                        index) +
                              Riff("AVIX", List("movi", Chunk("00dc", "bb")));
    std::mt19937 random(20240607);
    for (int round = 0; round < 20000; ++round) {
        std::string damaged = whole;
        for (int i = 0; i < 4; ++i) {
            damaged[random() % damaged.size()] = static_cast<char>(random() % 2 == 0 ? 0xff : random());
        }
        if (const auto parsed = Parsed(damaged)) {
            for (const AviChunk& chunk : parsed->chunks) {
                ASSERT_LE(chunk.offset + chunk.size, damaged.size());
                ASSERT_LT(chunk.stream, parsed->streams.size());
            }
        }
    }
}

std::unique_ptr<source::PacketReader> ReaderOf(const test_source::Bytes& bytes) {
    auto memory = std::make_unique<MemorySource>(bytes);
    std::optional<AviFile> file = ReadAviFile(*memory);
    return file ? std::make_unique<AviReader>(std::move(memory), std::move(*file)) : nullptr;
}

test_source::Bytes LongFile() {
    std::string movie;
    std::string index;
    for (int i = 0; i < 60; ++i) {
        movie += Chunk("00dc", std::string(40, static_cast<char>(i))) + Chunk("01wb", std::string(80, 's'));
        index += IndexEntry("00dc", i % 12 == 0 ? kKeyframe : 0) + IndexEntry("01wb", kKeyframe);
    }
    const std::string file = AviFileOf(movie, Chunk("idx1", index));
    return {file.begin(), file.end()};
}

TEST(AviReader, ReadsWhatATruncatedFileStillHoldsAndTellsOfTheCut) {
    test_source::CheckTruncations(ReaderOf, LongFile(), true);
}

TEST(AviReader, SurvivesFlippedBits) {
    test_source::CheckBitFlips(ReaderOf, LongFile());
}

} // namespace
} // namespace avi
