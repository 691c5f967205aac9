// What stands in front of the tracks and behind the cues of small strict files, compared, as text, with the ones kept
// in golden/.
#include "tests/mkv/writer_fixture.h"
#include "tests/support/golden_file.h"
#include "tests/support/layout_dump.h"

namespace {

using test_support::MatchesGolden;

class StrictHeadGoldenTest : public WriterTest {
  protected:
    void OpenStrict() {
        records::FileOptions options;
        options.profile = MuxProfile_Strict;
        options.seed = 20261122;
        options.title = OLESTR("Ein Titel: \u00e4\u65e5");
        Open(options);
    }

    void WriteAll() {
        for (INT64 frame = 0; frame < 9; ++frame) {
            Write(0, frame * 40 * kMs, (frame + 1) * 40 * kMs, frame % 4 == 0, Bytes(60, 1));
            Write(1, frame * 40 * kMs, (frame + 1) * 40 * kMs, true, Bytes(16, 2));
            if (frame == 3) { // dropped where there is no such track
                WriteGroup(2, 120 * kMs, 320 * kMs, {'o', 'n', 'e'});
            }
        }
    }

    // With the seed nothing is random; the tracks and clusters are shown elsewhere.
    static std::string HeadAndTags(const Layout& layout) {
        test_support::DumpOptions options;
        options.offsets = false;
        options.masked = {test_support::ebml_id::kSegment};
        const std::string text = test_support::DumpLayout(layout, options);
        const size_t tracks = text.find("\n  Tracks ");
        const size_t tags = text.find("\n  Tags ");
        return text.substr(0, tracks + 1) + (tags == std::string::npos ? std::string() : text.substr(tags + 1));
    }
};

TEST_F(StrictHeadGoldenTest, VideoAudioSubtitlesAndAnAttachment) {
    static char s_mimeType[] = "text/plain";
    static BYTE s_data[] = {'h', 'i'};
    const win::Bstr fileName{WideStringView(OLESTR("note.txt"))};
    m_writer.addAttachment({fileName.Get(), nullptr, s_mimeType, sizeof(s_data), s_data, 77});
    RegisterVideo();
    RegisterAudio();
    RegisterSubtitle();
    OpenStrict();
    WriteAll();
    EXPECT_TRUE(MatchesGolden("mkv", "strict_head_and_tags", HeadAndTags(File())));
}

TEST_F(StrictHeadGoldenTest, ARecordingThatIsCutOff) {
    RegisterVideo();
    RegisterAudio();
    OpenStrict();
    WriteAll();
    EXPECT_TRUE(MatchesGolden("mkv", "strict_head_while_recording", HeadAndTags(Snapshot())));
    Finish();
}

TEST_F(StrictHeadGoldenTest, NoPacketAtAll) {
    RegisterVideo();
    OpenStrict();
    EXPECT_TRUE(MatchesGolden("mkv", "strict_head_no_packet", HeadAndTags(File())));
}

TEST_F(StrictHeadGoldenTest, Webm) {
    m_writer.setOutputFormat(CMkvWriter::kWebMFormat);
    KeepFromJudges(); // there is no picture in it
    Register(test_support::VideoInfoType(SubtypeFromFourCC('V', 'P', '8', '0')));
    OpenStrict();
    Write(0, 0, 40 * kMs, true);
    EXPECT_TRUE(MatchesGolden("mkv", "strict_head_webm", HeadAndTags(File())));
}

} // namespace
