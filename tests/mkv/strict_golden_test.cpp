// The clusters and cues of small strict files, compared, as text, with the ones kept in golden/.
#include "tests/mkv/strict_fixture.h"
#include "tests/support/golden_file.h"
#include "tests/support/layout_dump.h"

namespace {

using test_support::MatchesGolden;

class StrictGoldenTest : public StrictTest {
  protected:
    // From the first cluster to the end of the cues.
    std::string ClustersAndCues() {
        test_support::DumpOptions options;
        options.offsets = false; // what stands in front of them has any length
        const std::string text = test_support::DumpLayout(File(), options);
        const size_t first = text.find("\n  Cluster ");
        const size_t behind = text.find("\n  Tags ");
        if (first == std::string::npos) {
            return "no cluster\n";
        }
        return text.substr(first + 1, behind == std::string::npos ? behind : behind - first);
    }
};

TEST_F(StrictGoldenTest, VideoAudioAndSubtitles) {
    RegisterVideo();
    RegisterAudio();
    RegisterSubtitle();
    OpenStrict();
    for (INT64 frame = 0; frame < 9; ++frame) {
        const auto value = static_cast<BYTE>(frame);
        Write(0, frame * 41 * kMs + 7083, (frame + 1) * 41 * kMs, frame % 4 == 0, Bytes(60, value));
        Write(1, frame * 40 * kMs - 65000, (frame + 1) * 40 * kMs - 65000, true, Bytes(16, value));
        if (frame == 3) {
            WriteGroup(2, 120 * kMs, 320 * kMs, {'o', 'n', 'e'});
        }
    }
    WriteGroup(2, 340 * kMs, 340 * kMs, {'t', 'w', 'o'});
    EXPECT_TRUE(MatchesGolden("mkv", "strict_video_audio_and_subtitles", ClustersAndCues()));
}

TEST_F(StrictGoldenTest, TracksThatStartBelowZero) {
    RegisterVideo();
    RegisterAudio();
    OpenStrict();
    Write(1, -20 * kMs, 20 * kMs);
    Write(0, 0, 40 * kMs, true);
    Write(0, -80 * kMs, -40 * kMs);
    Write(0, -40 * kMs, 0);
    Write(1, 20 * kMs, 60 * kMs);
    Write(0, 40 * kMs, 80 * kMs, true);
    Write(1, -100 * kMs, -60 * kMs);
    EXPECT_TRUE(MatchesGolden("mkv", "strict_tracks_that_start_below_zero", ClustersAndCues()));
}

TEST_F(StrictGoldenTest, SoundAlone) {
    Register(test_support::WaveType(
        mediasubtype::kOpus, {}, {'O', 'p', 'u', 's', 'H', 'e', 'a', 'd', 1, 2, 0x38, 1, 0x80, 0xbb, 0, 0, 0, 0, 0}));
    OpenStrict();
    for (INT64 packet = 0; packet < 8; ++packet) {
        const INT64 start = packet * 900 * kMs;
        Write(0, start, start + (packet == 7 ? 135000 : 200000), true, {31 << 3, static_cast<BYTE>(packet)});
    }
    EXPECT_TRUE(MatchesGolden("mkv", "strict_sound_alone", ClustersAndCues()));
}

} // namespace
