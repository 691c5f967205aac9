// What an output tells of its writes, to whoever asks at any time; the clock is the test's.
#include "mkv/write_figures.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>

#include "log/logger.h"
#include "mkv/mkv_io.h"
#include "tests/log/log_directory.h"
#include "tests/support/memory_stream.h"

namespace {

using test_support::MemoryStream;
using test_support::StreamOperation;

constexpr INT64 kMs = 10'000; // of 100 ns

INT64 g_now = 0;

INT64 TestTime() {
    return g_now;
}

class WriteFiguresTest : public testing::Test {
  protected:
    // A stream whose writes last as long as said.
    void EachWriteTakes(INT64 ms) {
        m_stream.OnEveryCall([this, ms] {
            g_now += ms * kMs;
            m_seenInside = m_io.figures().get();
        });
        m_io.setStream(&m_stream);
    }

    MemoryStream m_stream;
    CMkvIO m_io{TestTime};
    mkv::CWriteFigures::Figures m_seenInside;
};

TEST_F(WriteFiguresTest, BytesWritesTimeAndTheLongestAreToldAndStayWithoutAStream) {
    EachWriteTakes(5);
    (void)m_io.write("abcdef", 6);
    EachWriteTakes(70);
    (void)m_io.write("abc", 3);
    EachWriteTakes(2);
    (void)m_io.write("a", 1);
    m_io.releaseStream();
    const auto figures = m_io.figures().get();
    EXPECT_EQ(10u, figures.bytes);
    EXPECT_EQ(3u, figures.writes);
    EXPECT_EQ(77 * kMs, figures.time);
    EXPECT_EQ(70 * kMs, figures.longest);
}

TEST_F(WriteFiguresTest, AWriteThatHasNotReturnedCountsWithItsTimeSoFar) {
    EachWriteTakes(5);
    (void)m_io.write("abc", 3);
    EachWriteTakes(30);
    (void)m_io.write("defg", 4);
    EXPECT_EQ(2u, m_seenInside.writes);
    EXPECT_EQ(3u, m_seenInside.bytes);
    EXPECT_EQ(35 * kMs, m_seenInside.time);
    EXPECT_EQ(30 * kMs, m_seenInside.longest);
}

TEST_F(WriteFiguresTest, OnlyBytesThatArrivedCount) {
    m_io.setStream(&m_stream);
    m_stream.FailNth(StreamOperation::Write, 1, STG_E_MEDIUMFULL);
    (void)m_io.write("abc", 3);
    m_stream.AnswerNextWrite(S_OK, 2);
    (void)m_io.write("defg", 4);
    EXPECT_EQ(2u, m_io.figures().get().bytes);
    EXPECT_EQ(2u, m_io.figures().get().writes);
}

TEST_F(WriteFiguresTest, ForgottenFiguresAreZeros) {
    EachWriteTakes(5);
    (void)m_io.write("abc", 3);
    m_io.forgetFigures();
    const auto figures = m_io.figures().get();
    EXPECT_EQ(0u, figures.bytes + figures.writes);
    EXPECT_EQ(0, figures.time + figures.longest);
}

TEST_F(WriteFiguresTest, AWriteOfMoreThanASecondIsALineOfTheLogAndAShorterOneIsNot) {
    const LogDirectory directory;
    g_Logger.SetEnabled(true);
    ASSERT_NE(0, g_Logger.OpenNamedLog(directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true));
    EachWriteTakes(1000);
    (void)m_io.write("abc", 3);
    EachWriteTakes(1250);
    (void)m_io.write("defg", 4);
    g_Logger.CloseLog();
    g_Logger.SetEnabled(false);
    const std::string log = ReadWholeFile(directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
    EXPECT_EQ(std::string::npos, log.find("bytes=3"));
    EXPECT_NE(std::string::npos, log.find("CMkvIO::write took ms=1250 bytes=4\r\n")) << log;
}

// Each write has ten bytes and takes a millisecond: what belongs together is seen together.
TEST_F(WriteFiguresTest, AReaderBesideAWriterSeesFiguresOfOneMoment) {
    std::atomic<INT64> now{0};
    static std::atomic<INT64>* s_now;
    s_now = &now;
    mkv::CWriteFigures figures([] { return s_now->load(); });
    constexpr UINT64 kWrites = 20000;
    std::thread writer([&] {
        for (UINT64 i = 0; i < kWrites; ++i) {
            figures.begin();
            now += kMs;
            (void)figures.end(10);
        }
    });
    UINT64 last = 0;
    while (last < kWrites) {
        const auto seen = figures.get();
        ASSERT_GE(seen.writes, last);
        ASSERT_LE(seen.bytes, 10 * seen.writes);
        ASSERT_GE(seen.bytes + 10, 10 * seen.writes); // one may be going on
        last = seen.bytes / 10;
    }
    writer.join();
    EXPECT_EQ(static_cast<INT64>(kWrites) * kMs, figures.get().time);
}

} // namespace
