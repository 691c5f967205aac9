#include "mkv/gathering_io.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "mkv/mkv_io.h"
#include "tests/support/memory_stream.h"

namespace {

using test_support::MemoryStream;
using test_support::StreamOperation;

class GatheringIOTest : public testing::Test {
  protected:
    GatheringIOTest() { m_io.setStream(&m_stream); }

    [[nodiscard]] std::string Text() const {
        const auto bytes = m_stream.Bytes();
        return {bytes.begin(), bytes.end()};
    }

    MemoryStream m_stream;
    CMkvIO m_io;
    mkv::CGatheringIO m_gathering{m_io};
};

TEST_F(GatheringIOTest, ManyPiecesLeaveInOneWriteAtTheSamePosition) {
    m_io.write("head", 4);
    m_stream.ClearCalls();
    m_gathering.write("ab", 2);
    m_gathering.write("", 0);
    m_gathering.write("cde", 3);
    EXPECT_EQ(m_stream.Bytes().size(), 4u);
    m_gathering.flush();
    const auto writes = m_stream.Calls(StreamOperation::Write);
    ASSERT_EQ(writes.size(), 1u);
    EXPECT_EQ(writes[0].position, 4u);
    EXPECT_EQ(writes[0].size, 5u);
    const auto bytes = m_stream.Bytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "headabcde");
}

TEST_F(GatheringIOTest, FilePointerCountsWhatWasGathered) {
    m_io.write("head", 4);
    EXPECT_EQ(m_gathering.getFilePointer(), 4u);
    m_gathering.write("abc", 3);
    EXPECT_EQ(m_gathering.getFilePointer(), 7u);
    m_gathering.write("d", 1);
    EXPECT_EQ(m_gathering.getFilePointer(), 8u);
    m_gathering.flush();
    EXPECT_EQ(m_gathering.getFilePointer(), 8u);
}

TEST_F(GatheringIOTest, AsksTheStreamForItsPositionOnceAndCountsFromThere) {
    for (int piece = 0; piece < 100; ++piece) {
        m_gathering.write("x", 1);
        (void)m_gathering.getFilePointer();
    }
    m_gathering.flush();
    m_gathering.write("y", 1);
    m_gathering.flush();
    EXPECT_EQ(m_gathering.getFilePointer(), 101u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Seek).size(), 1u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Write).size(), 2u);
}

TEST_F(GatheringIOTest, SeekingWritesWhatWasGatheredFirst) {
    m_gathering.write("abcd", 4);
    m_gathering.setFilePointer(1);
    EXPECT_EQ(m_stream.Bytes().size(), 4u);
    m_gathering.write("X", 1);
    m_gathering.close();
    const auto bytes = m_stream.Bytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "aXcd");
}

TEST_F(GatheringIOTest, ReadingWritesWhatWasGatheredFirst) {
    m_gathering.write("abcd", 4);
    m_gathering.setFilePointer(-2, libebml::seek_end);
    char text[4] = {};
    EXPECT_EQ(m_gathering.read(text, 4), 2u);
    EXPECT_STREQ(text, "cd");
}

TEST_F(GatheringIOTest, DiscardedBytesNeverLeave) {
    m_gathering.write("abcd", 4);
    m_gathering.discard();
    m_gathering.flush();
    EXPECT_TRUE(m_stream.Bytes().empty());
    EXPECT_EQ(m_gathering.getFilePointer(), 0u);
}

TEST_F(GatheringIOTest, TheTailCanBeOverwrittenBeforeItLeaves) {
    m_gathering.write("abcdef", 6);
    m_gathering.overwriteTail(std::array<BYTE, 2>{'X', 'Y'});
    m_gathering.flush();
    const auto bytes = m_stream.Bytes();
    EXPECT_EQ(std::string(bytes.begin(), bytes.end()), "abcdXY");
}

// ---- Positions, when calls fail ------------------------------------------------------------------------------------

TEST_F(GatheringIOTest, BytesGoWhereTheyWereMovedToAndTheStreamIsAskedOnlyThen) {
    m_io.write("0123456789", 10);
    m_stream.ClearCalls();
    m_gathering.moveTo(2);
    EXPECT_EQ(m_gathering.getFilePointer(), 2u);
    EXPECT_TRUE(m_stream.Calls().empty());
    m_gathering.write("ab", 2);
    m_gathering.flush();
    m_gathering.moveTo(4); // where it stands
    m_gathering.write("c", 1);
    m_gathering.flush();
    EXPECT_EQ(Text(), "01abc56789");
    EXPECT_EQ(m_stream.Calls(StreamOperation::Seek).size(), 1u);
}

TEST_F(GatheringIOTest, ASeekThatFailsOnceIsMadeAgain) {
    m_io.write("0123", 4);
    m_gathering.moveTo(1);
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    m_gathering.write("a", 1);
    m_gathering.flush();
    EXPECT_EQ(Text(), "0a23");
    EXPECT_EQ(m_gathering.skippedBytes(), 0u);
    EXPECT_TRUE(m_gathering.isPositionSure());
}

TEST_F(GatheringIOTest, AStreamThatDoesNotSeekIsBelievedWhereItStands) {
    m_io.write("0123", 4);
    m_gathering.moveTo(1);
    m_stream.FailNth(StreamOperation::Seek, 1, E_NOTIMPL);
    m_stream.FailNth(StreamOperation::Seek, 2, E_NOTIMPL);
    m_gathering.write("a", 1);
    m_gathering.flush();
    EXPECT_EQ(Text(), "0123a");
    EXPECT_EQ(m_gathering.getFilePointer(), 5u);
    EXPECT_EQ(m_gathering.skippedBytes(), 3u);
    EXPECT_TRUE(m_gathering.isPositionSure());
}

TEST_F(GatheringIOTest, WhatMayGoNowhereElseIsNotWrittenWhenTheSeekIsRefused) {
    m_io.write("0123", 4);
    m_gathering.bringTo(1);
    m_gathering.write("a", 1);
    m_gathering.flush();
    m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    m_gathering.bringTo(2); // where it stands
    m_gathering.write("b", 1);
    m_gathering.flush();
    EXPECT_THROW(m_gathering.bringTo(0), const char*);
    EXPECT_EQ(Text(), "0ab3");
}

TEST_F(GatheringIOTest, ReturningToAPlaceForgetsWhatWasSkippedBehindIt) {
    m_io.write("0123", 4);
    m_gathering.moveTo(1);
    const auto place = m_gathering.place();
    EXPECT_EQ(place.position, 1u);
    m_stream.FailNth(StreamOperation::Seek, 1, E_NOTIMPL);
    m_stream.FailNth(StreamOperation::Seek, 2, E_NOTIMPL);
    m_gathering.write("a", 1);
    m_gathering.flush();
    EXPECT_EQ(m_gathering.skippedBytes(), 3u);
    m_gathering.returnTo(place);
    m_gathering.write("b", 1);
    m_gathering.flush();
    EXPECT_EQ(Text(), "0b23a");
    EXPECT_EQ(m_gathering.skippedBytes(), 0u);
}

TEST_F(GatheringIOTest, AStreamThatNeitherSeeksNorTellsGetsItsBytesAndNoPositionIsSure) {
    m_gathering.moveTo(0);
    m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    m_gathering.write("ab", 2);
    m_gathering.flush();
    m_gathering.write("c", 1);
    m_gathering.flush();
    EXPECT_EQ(Text(), "abc");
    EXPECT_FALSE(m_gathering.isPositionSure());
}

TEST_F(GatheringIOTest, WhatFollowsALostWriteTakesItsPlace) {
    m_gathering.moveTo(0);
    m_gathering.write("ab", 2);
    m_gathering.flush();
    EXPECT_FALSE(m_gathering.takeLost());
    m_stream.AnswerNextWrite(S_OK, 2); // of four bytes
    m_gathering.write("lost", 4);
    m_gathering.flush();
    const auto lost = m_gathering.takeLost();
    ASSERT_TRUE(lost);
    EXPECT_EQ(lost->position, 2u);
    EXPECT_EQ(std::string(lost->bytes.begin(), lost->bytes.end()), "lost");
    EXPECT_FALSE(m_gathering.takeLost()) << "it is told once";
    m_gathering.write("cd", 2);
    EXPECT_EQ(m_gathering.getFilePointer(), 4u);
    m_gathering.flush();
    EXPECT_EQ(Text(), "abcd");
}

TEST_F(GatheringIOTest, PartsLeaveFromWhereTheyLieBehindWhatWasGathered) {
    const std::array<BYTE, 2> first{'c', 'd'};
    const std::array<BYTE, 1> second{'e'};
    const std::array<std::span<const BYTE>, 2> parts{first, second};
    m_gathering.moveTo(0);
    m_gathering.write("ab", 2);
    m_gathering.writeParts(parts);
    EXPECT_EQ(Text(), "abcde");
    EXPECT_EQ(m_gathering.getFilePointer(), 5u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Write).size(), 3u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Seek).size(), 1u);
}

TEST_F(GatheringIOTest, PartsOfWhichOneIsLostAreLostTogether) {
    const std::array<BYTE, 2> part{'x', 'y'};
    const std::array<std::span<const BYTE>, 3> parts{part, part, part};
    for (UINT64 n = 1; n <= parts.size(); ++n) {
        m_gathering.moveTo(1);
        m_stream.SetBytes({'a'});
        m_stream.ClearCalls();
        m_stream.FailNth(StreamOperation::Write, n, E_FAIL);
        m_gathering.writeParts(parts);
        const auto lost = m_gathering.takeLost();
        ASSERT_TRUE(lost) << n;
        EXPECT_EQ(lost->position, 1u) << n;
        EXPECT_EQ(m_stream.Calls(StreamOperation::Write).size(), n) << "none is written behind a lost one";
        EXPECT_EQ(m_gathering.getFilePointer(), 1u) << n;
        m_gathering.write("b", 1);
        m_gathering.flush();
        EXPECT_EQ(Text().substr(0, 2), "ab") << n;
    }
}

TEST_F(GatheringIOTest, PartsLeaveInOneWriteWhereTheStreamDoesNotSeek) {
    const std::array<BYTE, 2> part{'x', 'y'};
    const std::array<std::span<const BYTE>, 2> parts{part, part};
    m_gathering.moveTo(0);
    m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    m_gathering.write("ab", 2);
    m_gathering.flush();
    m_gathering.writeParts(parts);
    EXPECT_EQ(Text(), "abxyxy");
    EXPECT_EQ(m_stream.Calls(StreamOperation::Write).size(), 2u);
}

TEST_F(GatheringIOTest, ALongPieceLeavesFromWhereItLiesBehindWhatWasGathered) {
    const std::vector<BYTE> piece(size_t{8} << 20, 'x');
    m_gathering.moveTo(0);
    m_gathering.write("ab", 2);
    m_gathering.write(piece.data(), piece.size());
    EXPECT_EQ(m_gathering.getFilePointer(), 2 + piece.size());
    const auto writes = m_stream.Calls(StreamOperation::Write);
    ASSERT_EQ(writes.size(), 2u);
    EXPECT_EQ(writes[1].position, 2u);
    EXPECT_EQ(writes[1].size, piece.size());
    m_stream.FailNth(StreamOperation::Write, 1, E_FAIL);
    m_gathering.write(piece.data(), piece.size());
    const auto lost = m_gathering.takeLost();
    ASSERT_TRUE(lost);
    EXPECT_EQ(lost->position, 2 + piece.size());
    EXPECT_TRUE(lost->bytes.empty()) << "nobody needs a copy";
}

} // namespace
