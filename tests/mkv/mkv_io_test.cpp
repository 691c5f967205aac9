#include "mkv/mkv_io.h"

#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "mkv/writer_errors.h"
#include "tests/support/memory_stream.h"

namespace {

using test_support::MemoryStream;
using test_support::StreamOperation;

constexpr auto kNoSuchMode = static_cast<libebml::seek_mode>(3);

std::string ThrownBySetFilePointer(CMkvIO& io, int64 offset, libebml::seek_mode mode) {
    try {
        io.setFilePointer(offset, mode);
    } catch (const char* text) {
        return text;
    }
    return "nothing";
}

class MkvIOTest : public testing::Test {
  protected:
    MemoryStream m_stream; // outlives the output, and checks that no reference is left
    CMkvIO m_io;
};

TEST_F(MkvIOTest, WithoutStreamEveryOperationReportsZero) {
    BYTE byte = 7;
    EXPECT_EQ(m_io.read(&byte, 1), 0u);
    EXPECT_EQ(m_io.write(&byte, 1), 0u);
    EXPECT_EQ(m_io.getFilePointer(), 0u);
    EXPECT_EQ(m_io.lastWriteResult(), S_OK);
    EXPECT_EQ(ThrownBySetFilePointer(m_io, 5, libebml::seek_beginning), "nothing");
    EXPECT_EQ(ThrownBySetFilePointer(m_io, 5, kNoSuchMode), "nothing");
    m_io.releaseStream();
    m_io.close();
}

TEST_F(MkvIOTest, PassesReadsWritesAndSeeksStraightOn) {
    m_io.setStream(&m_stream);
    EXPECT_EQ(m_io.write("abcdef", 6), 6u);
    EXPECT_EQ(m_io.getFilePointer(), 6u);
    m_io.setFilePointer(1);
    m_io.setFilePointer(2, libebml::seek_current);
    EXPECT_EQ(m_io.getFilePointer(), 3u);
    char text[8] = {};
    EXPECT_EQ(m_io.read(text, 8), 3u);
    EXPECT_STREQ(text, "def");
    m_io.setFilePointer(-2, libebml::seek_end);
    EXPECT_EQ(m_io.getFilePointer(), 4u);
}

TEST_F(MkvIOTest, SeekModesKeepTheirNumbers) {
    m_io.setStream(&m_stream);
    m_io.setFilePointer(0, libebml::seek_beginning);
    m_io.setFilePointer(0, libebml::seek_current);
    m_io.setFilePointer(0, libebml::seek_end);
    const auto calls = m_stream.Calls(StreamOperation::Seek);
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0].origin, DWORD{STREAM_SEEK_SET});
    EXPECT_EQ(calls[1].origin, DWORD{STREAM_SEEK_CUR});
    EXPECT_EQ(calls[2].origin, DWORD{STREAM_SEEK_END});
}

TEST_F(MkvIOTest, NothingIsBuffered) {
    m_io.setStream(&m_stream);
    m_io.write("ab", 2);
    EXPECT_EQ(m_stream.Bytes().size(), 2u);
    m_io.write("c", 1);
    EXPECT_EQ(m_stream.Bytes().size(), 3u);
    EXPECT_EQ(m_stream.Calls().size(), 2u);
}

TEST_F(MkvIOTest, FailedWriteReturnsTheRequestedSizeAndLeavesTheCodeReadable) {
    m_io.setStream(&m_stream);
    m_stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    EXPECT_EQ(m_io.write("abcd", 4), 4u);
    EXPECT_EQ(m_io.lastWriteResult(), STG_E_MEDIUMFULL);
    EXPECT_EQ(m_io.write("abcd", 4), 4u);
    EXPECT_EQ(m_io.lastWriteResult(), S_OK);
}

TEST_F(MkvIOTest, LastWriteResultSurvivesTheStream) {
    m_io.setStream(&m_stream);
    m_stream.FailNth(StreamOperation::Write, 1, E_FAIL);
    m_io.write("a", 1);
    m_io.releaseStream();
    EXPECT_EQ(m_io.lastWriteResult(), E_FAIL);
    m_io.write("a", 1);
    EXPECT_EQ(m_io.lastWriteResult(), E_FAIL);
}

// The stream leaves the count of a read that fails as it was.
TEST_F(MkvIOTest, FailedReadReturnsZero) {
    m_io.setStream(&m_stream);
    m_io.write("abcd", 4);
    m_io.setFilePointer(0);
    m_stream.FailNth(StreamOperation::Read, 1, E_FAIL);
    char text[4] = {};
    EXPECT_EQ(m_io.read(text, 4), 0u);
    EXPECT_EQ(m_io.lastWriteResult(), S_OK);
}

TEST_F(MkvIOTest, UnknownSeekModeThrowsBeforeTheStreamIsAsked) {
    m_io.setStream(&m_stream);
    EXPECT_EQ(ThrownBySetFilePointer(m_io, 0, kNoSuchMode), "CMkvIO::setFilePointer  unknown mode");
    EXPECT_TRUE(m_stream.Calls().empty());
    EXPECT_STREQ(mkv::kUnknownSeekModeError, "CMkvIO::setFilePointer  unknown mode");
}

TEST_F(MkvIOTest, FailedSeekThrows) {
    m_io.setStream(&m_stream);
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    EXPECT_EQ(ThrownBySetFilePointer(m_io, 0, libebml::seek_beginning), "CMkvIO::setFilePointer failed");
    EXPECT_EQ(ThrownBySetFilePointer(m_io, 0, libebml::seek_beginning), "nothing");
}

TEST_F(MkvIOTest, FilePointerOfAStreamWhoseSeekFailsIsZero) {
    m_io.setStream(&m_stream);
    m_io.write("abcd", 4);
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    EXPECT_EQ(m_io.getFilePointer(), 0u) << "what the failed call put into its result is no position";
    EXPECT_EQ(m_io.getFilePointer(), 4u);
}

TEST_F(MkvIOTest, APositionThatTheStreamCannotTellIsNone) {
    EXPECT_EQ(m_io.position(), std::nullopt);
    m_io.setStream(&m_stream);
    m_io.write("abcd", 4);
    m_stream.FailNth(StreamOperation::Seek, 1, STG_E_SEEKERROR);
    EXPECT_EQ(m_io.position(), std::nullopt);
    EXPECT_EQ(m_io.position(), 4u);
}

// ---- Writes that do not arrive as a whole --------------------------------------------------------------------------

// What a stream may answer to a write.
class OddWritesTest : public MkvIOTest, public testing::WithParamInterface<std::tuple<HRESULT, int, bool>> {};

TEST_P(OddWritesTest, AreWholeOnlyIfTheySucceedAndNoByteIsMissing) {
    const auto& [result, missing, isWhole] = GetParam();
    m_io.setStream(&m_stream);
    EXPECT_TRUE(m_io.isLastWriteWhole());
    m_stream.AnswerNextWrite(result, 4 - static_cast<ULONG>(missing));
    EXPECT_EQ(m_io.write("abcd", 4), 4u);
    EXPECT_EQ(m_io.lastWriteResult(), result);
    EXPECT_EQ(m_io.isLastWriteWhole(), isWhole);
    m_io.write("abcd", 4);
    EXPECT_TRUE(m_io.isLastWriteWhole());
}

INSTANTIATE_TEST_SUITE_P(Answers, OddWritesTest,
                         testing::Values(std::tuple(S_OK, 0, true), std::tuple(S_FALSE, 0, true),
                                         std::tuple(S_OK, 1, false), std::tuple(S_OK, 4, false),
                                         std::tuple(E_FAIL, 0, false), std::tuple(STG_E_MEDIUMFULL, 2, false)));

// ---- What the stream holds behind the end --------------------------------------------------------------------------

TEST_F(MkvIOTest, WhatLiesBehindTheEndIsCutOff) {
    m_io.cutOffAt(0); // no stream, no effect
    m_io.setStream(&m_stream);
    m_io.write("abcdef", 6);
    m_io.cutOffAt(4);
    EXPECT_EQ(m_stream.Bytes().size(), 4u);
}

TEST_F(MkvIOTest, AStreamThatHoldsNothingBehindTheEndIsNotAskedForASize) {
    m_io.setStream(&m_stream);
    m_io.write("abcdef", 6);
    m_io.cutOffAt(6);
    m_io.cutOffAt(7);
    EXPECT_TRUE(m_stream.Calls(StreamOperation::SetSize).empty());
    EXPECT_EQ(m_stream.Bytes().size(), 6u);
}

TEST_F(MkvIOTest, AStreamThatCannotTellItsSizeIsAskedForItsEnd) {
    m_io.setStream(&m_stream);
    m_io.write("abcdef", 6);
    m_stream.FailFrom(StreamOperation::Stat, 1, E_NOTIMPL);
    m_io.cutOffAt(4);
    EXPECT_EQ(m_stream.Bytes().size(), 4u);
    m_stream.FailFrom(StreamOperation::Seek, 1, E_NOTIMPL);
    m_io.cutOffAt(2); // nothing is known of it
    EXPECT_EQ(m_stream.Bytes().size(), 4u);
}

TEST_F(MkvIOTest, AStreamThatCannotBeCutStaysAsItIs) {
    m_io.setStream(&m_stream);
    m_io.write("abcdef", 6);
    m_stream.FailFrom(StreamOperation::SetSize, 1, E_NOTIMPL);
    m_io.cutOffAt(4);
    EXPECT_EQ(m_stream.Bytes().size(), 6u);
    EXPECT_EQ(m_io.lastWriteResult(), S_OK);
}

TEST_F(MkvIOTest, SettingTheSameStreamTwiceHoldsOneReference) {
    m_stream.AddRef(); // the filter's own
    m_io.setStream(&m_stream);
    m_io.setStream(&m_stream);
    EXPECT_EQ(m_stream.References(), 2);
    m_io.setStream(nullptr);
    EXPECT_EQ(m_stream.References(), 1);
    m_stream.Release();
}

TEST_F(MkvIOTest, ReleaseAndDestructionLetTheStreamGo) {
    m_io.setStream(&m_stream);
    m_io.releaseStream();
    EXPECT_EQ(m_stream.References(), 0);
    m_io.releaseStream();
    {
        CMkvIO other;
        other.setStream(&m_stream);
        EXPECT_EQ(m_stream.References(), 1);
    }
    EXPECT_EQ(m_stream.References(), 0);
}

TEST_F(MkvIOTest, CloseKeepsTheStream) {
    m_io.setStream(&m_stream);
    m_io.close();
    EXPECT_EQ(m_stream.References(), 1);
    EXPECT_EQ(m_io.write("a", 1), 1u);
}

} // namespace
