"""What lies between picture and sound: in the output what it was in the input, for ffprobe and our own reader."""

import json
import struct

from whole_files.mkv_builder import audio_fields, cluster, matroska, simple_block, track_entry, video_fields
from whole_files.mkvmux_case import BIN, MkvmuxCase, make_input
from whole_files.profiles import in_both_profiles
from whole_files.wine_process import WineProcess

SOUND_FIELDS = audio_fields(8000, 1, 16)
PICTURE_BYTES = 16 * 16 * 3  # RGB
SAMPLES_A_BLOCK = 800  # 100 ms
BLOCK_MS = 100


def pictures_and_sound(video_start_ms, audio_start_ms, seconds=2):
    """Raw pictures and sound with the times as they are given; below zero, too."""
    count = seconds * 1000 // BLOCK_MS
    blocks = [(start + BLOCK_MS * index, track, size) for index in range(count)
              for start, track, size in ((video_start_ms, 1, PICTURE_BYTES), (audio_start_ms, 2, 2 * SAMPLES_A_BLOCK))]
    blocks.sort()
    content = [simple_block(track, time, bytes([index]) * size)
               for index, (time, track, size) in enumerate(blocks)]
    bitmap = struct.pack("<IiiHHIIiiII", 40, 16, 16, 1, 24, 0, PICTURE_BYTES, 0, 0, 0, 0)
    tracks = [track_entry(1, 1, "V_MS/VFW/FOURCC", bitmap, video_fields(16, 16)),
              track_entry(2, 2, "A_PCM/INT/LIT", b"", SOUND_FIELDS)]
    return matroska(tracks, [cluster(0, *content)], seconds * 1000)


@in_both_profiles
class Offsets(MkvmuxCase):
    def first_times(self, path):
        """Of the first block of each track, in milliseconds."""
        process = WineProcess(BIN / "mkvlayout.exe", path)
        self.addCleanup(process.end)
        times = {}
        for part in json.loads(process.wait().output)["clusters"]:
            for block in part["blocks"]:
                times.setdefault(block["track"], round(block["timeNs"] / 10**6))
        return [times[track] for track in sorted(times)]

    def probed_times(self, path):
        """The same as ffprobe sees it."""
        starts = []
        for stream in (0, 1):
            text = self.run_ffprobe(path, "-fflags", "noparse+nofillin", "-select_streams", str(stream),
                                    "-show_packets", "-show_entries", "packet=pts_time,dts_time", "-of", "json")
            packet = json.loads(text)["packets"][0]
            starts.append(round(1000 * float(packet.get("pts_time", packet.get("dts_time")))))
        return starts

    def check(self, video_ms, audio_ms, expected):
        source, output = self.directory / "source.mkv", self.directory / "out.mkv"
        source.write_bytes(pictures_and_sound(video_ms, audio_ms))
        self.assertEqual(self.first_times(source), [video_ms, audio_ms], "the input is as it is meant")
        self.mux(output, source)
        self.assertEqual(self.first_times(output), expected)
        self.assertEqual(self.probed_times(output), expected)
        self.assertEqual(expected[1] - expected[0], audio_ms - video_ms, "the offset is that of the input")

    def test_both_from_zero(self):
        self.check(0, 0, [0, 0])

    def test_sound_that_is_late(self):
        self.check(0, 360, [0, 360])

    def test_pictures_that_are_late(self):
        self.check(440, 0, [440, 0])

    def test_both_late_keep_their_times(self):
        self.check(500, 730, [500, 730])

    def test_sound_below_zero_moves_all_streams(self):
        self.check(0, -80, [80, 0])

    def test_pictures_below_zero_move_all_streams(self):
        self.check(-120, 0, [0, 120])

    def test_both_below_zero(self):
        self.check(-120, -40, [0, 80])

    def test_one_below_zero_and_one_late(self):
        self.check(-40, 300, [0, 340])

    def test_encoded_streams_keep_their_offset(self):
        for video_ms, audio_ms in ((0, 250), (500, 0)):
            with self.subTest(video_ms=video_ms, audio_ms=audio_ms):
                source = self.encoded(video_ms, audio_ms)
                output = self.directory / source.name
                self.mux(output, source)
                for path in (source, output):
                    video, audio = self.probed_times(path)
                    self.assertEqual(audio - video, audio_ms - video_ms, path)

    @staticmethod
    def encoded(video_ms, audio_ms):
        picture, sound = "testsrc=size=64x48:rate=20:duration=2", "sine=sample_rate=48000:duration=2"
        return make_input(f"late_{video_ms}_{audio_ms}.mkv", "-itsoffset", f"{video_ms}ms", "-f", "lavfi", "-i",
                          picture, "-itsoffset", f"{audio_ms}ms", "-f", "lavfi", "-i", sound, "-c:v", "libx264",
                          "-preset", "ultrafast", "-c:a", "pcm_s16le")

    def test_two_inputs_each_move_by_themselves(self):
        """Only the streams of one input belong together."""
        first, second = self.directory / "a.mkv", self.directory / "b.mkv"
        first.write_bytes(pictures_and_sound(0, -80))
        second.write_bytes(pictures_and_sound(200, 100))
        output = self.directory / "out.mkv"
        self.mux(output, first, second)
        self.assertEqual(self.first_times(output), [80, 0, 200, 100])
