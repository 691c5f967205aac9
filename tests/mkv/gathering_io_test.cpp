#include "mkv/gathering_io.h"

#include <gtest/gtest.h>

#include <array>

#include "mkv/mkv_io.h"
#include "tests/support/memory_stream.h"

namespace {

using test_support::MemoryStream;
using test_support::StreamOperation;

class GatheringIOTest : public testing::Test {
  protected:
    GatheringIOTest() { m_io.setStream(&m_stream); }

    MemoryStream m_stream;
    CMkvIO m_io;
    CGatheringIO m_gathering{m_io};
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

TEST_F(GatheringIOTest, AsksTheStreamForItsPositionOncePerWrite) {
    for (int piece = 0; piece < 100; ++piece) {
        m_gathering.write("x", 1);
        static_cast<void>(m_gathering.getFilePointer());
    }
    m_gathering.flush();
    EXPECT_EQ(m_stream.Calls(StreamOperation::Seek).size(), 1u);
    EXPECT_EQ(m_stream.Calls(StreamOperation::Write).size(), 1u);
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

} // namespace
