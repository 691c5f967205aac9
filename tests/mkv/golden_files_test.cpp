// Small scenarios whose whole files are compared, as text, with the ones kept in golden/.
#include "tests/mkv/writer_fixture.h"
#include "tests/support/golden_file.h"
#include "tests/support/layout_dump.h"
#include "tests/support/written_files.h"

namespace {

using test_support::MatchesGolden;
namespace ebml_id = test_support::ebml_id;

class GoldenFilesTest : public WriterTest {
  protected:
    static std::string Dump(const Layout& layout) {
        test_support::DumpOptions options;
        options.offsets = false; // random UIDs take one byte or two
        options.masked = {ebml_id::kWritingApp, ebml_id::kTrackUid};
        return test_support::DumpLayout(layout, options);
    }
};

TEST_F(GoldenFilesTest, NoPacketAtAll) {
    RegisterVideo();
    RegisterAudio();
    Open();
    EXPECT_TRUE(MatchesGolden("mkv", "no_packet_at_all", Dump(File())));
}

TEST_F(GoldenFilesTest, AudioOnly) {
    Register(PcmType(), Row(OLESTR("French"), OLESTR("Commentaire"), 1));
    Open();
    for (INT64 packet = 0; packet < 3; ++packet) {
        Write(0, packet * 20000 * kMs, (packet + 1) * 20000 * kMs, true, Bytes(8, static_cast<BYTE>(packet)));
    }
    EXPECT_TRUE(MatchesGolden("mkv", "audio_only", Dump(File())));
}

TEST_F(GoldenFilesTest, VideoAudioAndSubtitles) {
    Register(CinepakType());
    Register(PcmType(), Row(OLESTR("German"), OLESTR("Ton")));
    Register(Utf8Type(), Row(OLESTR("Chinese"), OLESTR(""), 1));
    Open();
    for (INT64 frame = 0; frame < 9; ++frame) {
        const auto value = static_cast<BYTE>(frame);
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 4 == 0, Bytes(60, value));
        Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, true, Bytes(16, value));
    }
    WriteGroup(2, 120 * kMs, 320 * kMs, {'o', 'n', 'e'});
    WriteGroup(2, 340 * kMs, 2340 * kMs, {'t', 'w', 'o'});
    EXPECT_TRUE(MatchesGolden("mkv", "video_audio_and_subtitles", Dump(File())));
}

TEST_F(GoldenFilesTest, WebmWithAnAttachment) {
    static char s_mimeType[] = "text/plain";
    static BYTE s_data[] = {'h', 'i'};
    const win::Bstr fileName{WideStringView(OLESTR("note.txt"))};
    const win::Bstr description{WideStringView(OLESTR("a note"))};
    m_writer.addAttachment({fileName.Get(), description.Get(), s_mimeType, sizeof(s_data), s_data, 0x0102030405060708});
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    KeepFromJudges(); // WebM has neither attachments nor this codec
    RegisterVideo();
    Open();
    Write(0, 0, 40 * kMs, true);
    EXPECT_TRUE(MatchesGolden("mkv", "webm_with_an_attachment", Dump(File())));
}

TEST_F(GoldenFilesTest, TracksThatStartBelowZero) {
    RegisterVideo();
    RegisterAudio();
    Open();
    Write(0, -80 * kMs, -40 * kMs, true);
    Write(1, -20 * kMs, 20 * kMs);
    Write(0, -40 * kMs, 0);
    Write(1, -60 * kMs, -20 * kMs);
    Write(0, 0, 40 * kMs, true);
    EXPECT_TRUE(MatchesGolden("mkv", "tracks_that_start_below_zero", Dump(File())));
}

TEST_F(GoldenFilesTest, LongAndLateBlocks) {
    Expect({.clustersMayGoBack = true});
    RegisterVideo();
    RegisterSubtitle();
    Open();
    Write(0, 0, 40 * kMs, true);
    WriteGroup(1, 1000 * kMs, 61000 * kMs); // longer than an offset can say
    Write(0, 100000 * kMs, 100040 * kMs, true);
    WriteGroup(1, 50000 * kMs, 90000 * kMs); // late
    Write(0, 100040 * kMs, 100080 * kMs);
    EXPECT_TRUE(MatchesGolden("mkv", "long_and_late_blocks", Dump(File())));
}

TEST_F(GoldenFilesTest, CutRecording) {
    RegisterVideo();
    RegisterAudio();
    Open();
    for (INT64 frame = 0; frame < 6; ++frame) {
        Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 2 == 0);
        Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs);
    }
    const auto cut = Snapshot();
    test_support::SaveForJudges("GoldenFilesTest.CutRecording", cut.file, test_support::WrittenFile::CutOnPurpose);
    EXPECT_TRUE(MatchesGolden("mkv", "cut_recording", Dump(cut)));
    Finish();
}

} // namespace
