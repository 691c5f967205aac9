// What the writer says about its work: one log line a packet, and the debug trace.
#include "log/logger.h"
#include "mkv/cluster_writer.h"
#include "mkv/debug_trace.h"
#include "mkv/writer_errors.h"
#include "tests/log/log_directory.h"
#include "tests/mkv/writer_fixture.h"

namespace {

class WriterLogTest : public WriterTest {
  protected:
    WriterLogTest() {
        g_Logger.SetEnabled(true);
        g_Logger.OpenNamedLog(m_directory.Path().c_str(), OLESTR("QRX_MKVMuxer"), true);
    }
    ~WriterLogTest() override {
        g_Logger.CloseLog();
        g_Logger.SetEnabled(false);
    }

    // The lines between the banners.
    std::string LoggedLines() {
        g_Logger.CloseLog();
        std::string text = ReadWholeFile(m_directory.Path() + OLESTR("\\QRX_MKVMuxer.log"));
        text = text.substr(text.find("\r\n") + 2);
        return text.substr(0, text.find("~~~"));
    }

    LogDirectory m_directory;
};

TEST_F(WriterLogTest, EveryPacketIsOneLine) {
    RegisterAudio();
    Open();
    Write(0, -400000, 12345678901234, true, {1, 2, 3});
    Finish();
    EXPECT_EQ(LoggedLines(), "CMkvWriter::WritePacket stream=0 start=-400000 stop=12345678901234 size=3\r\n");
}

TEST_F(WriterLogTest, APacketBeyondTheTracksProducesItsLineAndNothingElse) {
    RegisterAudio();
    Open();
    m_stream.ClearCalls();
    Write(1, 0, 50000 * kMs, true, {1, 2, 3});
    EXPECT_TRUE(m_stream.Calls().empty());
    EXPECT_EQ(m_writer.duration(), 0.0);
    EXPECT_EQ(LoggedLines(), "CMkvWriter::WritePacket stream=1 start=0 stop=500000000 size=3\r\n");
    EXPECT_EQ(File().clusters.size(), 1u);
    EXPECT_TRUE(File().clusters[0].blocks.empty());
}

class WriterTraceTest : public WriterTest {
  protected:
    WriterTraceTest() {
        s_texts.clear();
        mkv::SetDebugTraceHook([](const char* text) { s_texts.emplace_back(text); });
    }
    ~WriterTraceTest() override { mkv::SetDebugTraceHook(nullptr); }

    static inline std::vector<std::string> s_texts;
};

TEST_F(WriterTraceTest, TellsOfEachFrameAndOfTheEnd) {
    RegisterAudio();
    RegisterAudio();
    Open();
    Write(1, 10, 30);
    Finish();
    EXPECT_EQ(s_texts,
              (std::vector<std::string>{"addFrameToCurrentCluster: 1 time: 1000 duration: 2000", "Stoped.... "}));
}

TEST(ClusterWriterTest, APacketBeyondTheTrackListThrows) {
    test_support::MemoryStream stream;
    CMkvIO io;
    io.setStream(&stream);
    mkv::CGatheringIO gathering(io);
    libmatroska::KaxSegment segment;
    mkv::CMkvCues cues;
    mkv::CClusterWriter clusters(gathering, segment, cues);
    const mkv::TrackList noTracks;
    clusters.setTracks(noTracks, {}, mkv::kNoCueTrack);
    try {
        (void)clusters.addFrameToCurrentCluster({});
        ADD_FAILURE() << "nothing was thrown";
    } catch (const char* text) {
        EXPECT_STREQ(text, "CMkvWriter::getTrackType trackNum out of range");
        EXPECT_STREQ(text, mkv::kTrackOutOfRangeError);
    }
}

} // namespace
