"""GStreamer plays every codec that the muxer maps: as many buffers as packets, at their times, to the end."""

import gstreamer
from whole_files.codec_case import tracks_of
from whole_files.codec_matrix import AUDIO, SRT, SUBTITLES, VIDEO, encoded
from whole_files.mkv_builder import block_group, cluster, matroska, track_entry
from whole_files.mkvmux_case import MkvmuxCase, input_directory, make_input
from whole_files.profiles import in_both_profiles

SUBTITLE_TRACK = 17
# What no encoder makes; the demultiplexer does not look into them.
MADE_UP_SUBTITLES = ["S_TEXT/ASCII", "S_TEXT/SSA", "S_TEXT/USF", "S_VOBSUB", "S_HDMV/PGS"]

# From no Matroska file, one of ffmpeg's neither, which is looked at in their tests: the decoder of TTA wants the head of
# a TTA file, which the demultiplexer does not give, and the others' codec identifiers are not known.
NOT_DECODED = {"tta", "alac", "nv12"}
# Nor by the four letters of a structure of Windows, with which compatible files tell of them; nor in an AVI file.
NOT_DECODED_BY_LETTERS = {"prores", "prores4444"}


class GStreamerCase(MkvmuxCase):
    def save_for_judges(self, output):
        """The codecs' own tests hand over such files already."""

    def mux_to(self, name, *inputs):
        output = self.directory / name
        self.mux(output, *inputs)
        return output

    def packet_times(self, path, stream):
        """Of the packets as they are in the file, in milliseconds. What the codec delays is taken off to the nanosecond,
        and nothing is earlier than the start; ffprobe takes off whole milliseconds."""
        delay_ns = tracks_of(path)[stream]["properties"].get("codec_delay", 0)
        delay_ms = (delay_ns + 500_000) // 10**6
        text = self.run_ffprobe(path, "-fflags", "noparse+nofillin", "-select_streams", str(stream), "-show_entries",
                                "packet=pts_time,dts_time", "-of", "csv=p=0")
        # Tracks that describe their codec by a structure of Windows have their times counted as decoding times.
        seen_ms = [round(1000 * float(next(field for field in line.split(",") if field not in ("N/A", ""))))
                   for line in text.split()]
        return [max(0, (seen + delay_ms) * 10**6 - delay_ns) // 10**6 for seen in seen_ms]

    def assert_reaches_end(self, playback):
        self.assertEqual((playback.status, playback.remarks), (0, []), "\n".join(playback.lines[-20:]))
        self.assertTrue(playback.reached_end, "\n".join(playback.lines[-20:]))

    def assert_demultiplexes(self, path, *pads):
        for stream, pad in enumerate(pads):
            playback = gstreamer.demultiplex(path, pad)
            self.assert_reaches_end(playback)
            expected = self.packet_times(path, stream)
            self.assertGreater(len(expected), 0, f"ffprobe finds no packet in {path}")
            self.assertEqual(len(playback.buffers), len(expected), f"buffers of {pad}")
            self.assertEqual([buffer.time_ns and buffer.time_ns // 10**6 for buffer in playback.buffers],
                             self.times_given(path, stream, expected), f"times of {pad}")

    @staticmethod
    def times_given(path, stream, expected):
        """Of ProRes the demultiplexer gives no times, of a file of ffmpeg's neither."""
        is_known = tracks_of(path)[stream]["properties"]["codec_id"] != "V_PRORES"
        return expected if is_known else [None] * len(expected)

    def assert_is_not_decoded(self, path, pad, container="matroska"):
        self.assertFalse(gstreamer.decode(path, pad, container).reached_end, "a file of ffmpeg's is decoded by now")

    def assert_decodes_to(self, path, pad, frames=None):
        playback = gstreamer.decode(path, pad)
        self.assert_reaches_end(playback)
        self.assertGreater(sum(buffer.size for buffer in playback.buffers), 0, "nothing is decoded")
        if frames is not None:
            self.assertEqual(len(playback.buffers), frames, "decoded frames")


@in_both_profiles
class VideoCodecs(GStreamerCase):
    def check(self, line):
        source = encoded(line, "v")
        output = self.mux_to("out.mkv", source)
        self.assert_demultiplexes(output, "video_0")
        if line.name in NOT_DECODED:
            self.assert_is_not_decoded(source, "video_0")
            return
        if line.name in NOT_DECODED_BY_LETTERS:
            if not self.is_strict:
                self.assert_is_not_decoded(make_input(f"{line.name}.avi", "-i", str(source), "-c", "copy"), "video_0", "avi")
                return
            self.assertEqual({buffer.time_ns for buffer in gstreamer.demultiplex(source, "video_0").buffers}, {None})
        self.assert_decodes_to(output, "video_0", frames=len(self.packet_times(output, 0)))


@in_both_profiles
class AudioCodecs(GStreamerCase):
    def check(self, line):
        source = encoded(line, "a")
        output = self.mux_to("out.mkv", source)
        self.assert_demultiplexes(output, "audio_0")
        if line.name in NOT_DECODED:
            self.assert_is_not_decoded(source, "audio_0")
        else:
            self.assert_decodes_to(output, "audio_0")


@in_both_profiles
class SubtitleCodecs(GStreamerCase):
    def encoded(self, line):
        text = input_directory() / "subtitles.srt"
        text.write_text(SRT)
        return make_input(f"{line.name}.mkv", "-i", str(text), "-c:s", line.encoder)

    def made_up(self, codec_id):
        path = self.directory / "source.mkv"
        blocks = [block_group(1, start, b"Text %d" % start, 500) for start in (0, 700, 1500)]
        track = track_entry(1, SUBTITLE_TRACK, codec_id, b"" if codec_id == "S_TEXT/ASCII" else b"header")
        path.write_bytes(matroska([track], [cluster(0, *blocks)], 2000))
        return path

    def check(self, source):
        self.assert_demultiplexes(self.mux_to("out.mkv", source), "subtitle_0")


@in_both_profiles
class ManyTracks(GStreamerCase):
    def test_video_sound_and_subtitles_of_three_inputs(self):
        video, sound = (next(line for line in lines if line.name == name)
                        for lines, name in ((VIDEO, "h264"), (AUDIO, "aac")))
        text = SubtitleCodecs().encoded(SUBTITLES[0])
        output = self.mux_to("out.mkv", encoded(video, "v"), encoded(sound, "a"), text)
        self.assert_demultiplexes(output, "video_0", "audio_0", "subtitle_0")

    def test_a_file_that_was_cut_is_seen_as_one(self):
        """So that the tests above can fail."""
        line = next(line for line in AUDIO if line.name == "pcm")
        whole = self.mux_to("out.mkv", encoded(line, "a"))
        cut = self.directory / "cut.mkv"
        cut.write_bytes(whole.read_bytes()[:whole.stat().st_size // 2])
        buffers = gstreamer.demultiplex(cut, "audio_0").buffers
        self.assertLess(len(buffers), len(self.packet_times(whole, 0)))


def case_for(line, case):
    """Both profiles, or the strict one where compatible files do not hold the codec."""
    return case if line.codec_id else globals()["Strict" + case.__name__]


def add_tests():
    for case, lines in ((VideoCodecs, VIDEO), (AudioCodecs, AUDIO)):
        for line in lines:
            setattr(case_for(line, case), f"test_{line.name}", lambda self, line=line: self.check(line))
    for line in SUBTITLES:
        setattr(SubtitleCodecs, f"test_{line.name}", lambda self, line=line: self.check(self.encoded(line)))
    for codec_id in MADE_UP_SUBTITLES:
        name = "test_" + codec_id.removeprefix("S_").replace("/", "_").lower()
        setattr(SubtitleCodecs, name, lambda self, codec_id=codec_id: self.check(self.made_up(codec_id)))


add_tests()
