"""Files as users have them: unusual rates, shapes and structures. Each keeps every packet of every stream."""

import struct

from whole_files.codec_case import CodecCase
from whole_files.mkv_builder import (audio_fields, block_group, cluster, matroska, simple_block, stripped_headers,
                                     track_entry)
from whole_files.mkvmux_case import make_input, picture, run_tool, sound
from whole_files.profiles import in_both_profiles

ULTRAFAST = ("-preset", "ultrafast")
VARIABLE_RATE = "select='not(eq(mod(n,7),3))*not(eq(mod(n,11),5))'"
X265 = ("-x265-params", "log-level=error:keyint=25")


def made(name, *arguments):
    return make_input(name, *arguments)


@in_both_profiles
class Unusual(CodecCase):
    def check(self, source, kinds="va", ending=".mkv", keys=True):
        output = self.remux(source, ending=ending)
        self.save_for_judges(output)
        streams = len(self.identified(source))
        for stream in range(streams):
            self.assert_same_stream(source, output, stream, keys=keys)
        for kind in kinds:
            self.assert_decodes_alike(source, output, kind)
        self.assert_remuxes(output)
        return output

    def built(self, name, content):
        path = self.directory / name
        path.write_bytes(content)
        return path

    # ---- pictures

    def test_variable_frame_rate(self):
        self.check(made("vfr.mkv", *picture(4), "-vf", VARIABLE_RATE, "-fps_mode", "vfr", "-c:v", "libx264",
                        *ULTRAFAST), "v")

    def test_open_gop_with_b_frames(self):
        self.check(made("opengop.mkv", *picture(4), "-c:v", "libx264", "-x264-params",
                        "open-gop=1:keyint=25:bframes=3:b-pyramid=normal"), "v")

    def test_10_bit_hevc(self):
        self.check(made("hevc10.mkv", *picture(2), "-c:v", "libx265", *ULTRAFAST, *X265, "-pix_fmt", "yuv420p10le"),
                   "v")

    def test_10_bit_422_avc(self):
        self.check(made("avc10.mkv", *picture(2), "-c:v", "libx264", *ULTRAFAST, "-pix_fmt", "yuv422p10le"), "v")

    def test_odd_sizes(self):
        self.check(made("odd.mkv", *picture(1, "161x121"), "-c:v", "libvpx-vp9", "-cpu-used", "8", "-deadline",
                        "realtime"), "v")

    def test_pixels_that_are_not_square(self):
        self.check(made("anamorphic.mkv", *picture(1, "180x144"), "-vf", "setsar=16/11", "-c:v", "mpeg2video"), "v")

    def test_gops_of_three_seconds(self):
        self.check(made("longgop.mkv", *picture(10), *sound(10), "-c:v", "libx264", *ULTRAFAST, "-g", "75", "-c:a",
                        "libmp3lame"))

    def test_interlaced(self):
        self.check(made("interlaced.mkv", *picture(2), "-c:v", "mpeg2video", "-flags", "+ildct+ilme", "-top", "1"), "v")

    def test_film_rate(self):
        self.check(made("film.mkv", *picture(3, rate="24000/1001"), "-c:v", "libx264", *ULTRAFAST), "v")

    def test_120_frames_a_second(self):
        self.check(made("fast.mkv", *picture(2, rate=120), "-c:v", "libx264", *ULTRAFAST), "v")

    # ---- sound

    def test_7_1_sound(self):
        self.check(made("surround.mkv", *sound(2, 48000), "-af", "aformat=channel_layouts=7.1", "-c:a", "flac"), "a")

    def test_5_1_aac(self):
        self.check(made("aac51.mkv", *sound(2, 48000), "-af", "aformat=channel_layouts=5.1", "-c:a", "aac"), "a")

    def test_192_khz(self):
        self.check(made("192k.mkv", *sound(2, 192000), "-c:a", "flac", "-sample_fmt", "s32"), "a")

    def test_8_khz_opus_with_long_frames(self):
        self.check(made("opus60.webm", *sound(3, 8000), "-c:a", "libopus", "-frame_duration", "60"), "a", ".webm")

    def test_sound_that_begins_late(self):
        self.check(made("late.mkv", *picture(3), "-itsoffset", "1.234", *sound(1), "-c:v", "libx264", *ULTRAFAST,
                        "-c:a", "ac3"))

    # ---- structures

    def test_100_tracks(self):
        maps = [argument for _ in range(100) for argument in ("-map", "0:a")]
        output = self.check(made("tracks.mka", *sound(1, 8000), *maps, "-c:a", "pcm_s16le"), "", ".mkv")
        self.assertEqual(len(self.identify(output)["tracks"]), 100)

    def test_one_packet_only(self):
        self.check(made("single.mkv", *picture(1), "-frames:v", "1", "-c:v", "libx264"), "v")

    def test_a_stream_without_a_packet(self):
        tracks = [track_entry(1, 2, "A_PCM/INT/LIT", more=audio_fields(8000, 1, 16)),
                  track_entry(2, 17, "S_TEXT/UTF8")]
        blocks = [simple_block(1, 100 * i, bytes(1600)) for i in range(20)]
        source = self.built("empty.mkv", matroska(tracks, [cluster(0, *blocks)], 2000))
        output = self.remux(source)
        self.assertEqual(len(self.identify(output)["tracks"]), 2)
        self.assert_same_stream(source, output, 0)
        self.assertEqual(self.probe(output, 1), [])

    def test_laced_blocks_of_every_kind(self):
        frames = [bytes([n, 0]) * (50 + n) for n in range(4)]  # 100, 102, 104, 106 bytes
        even = [bytes([n, 0]) * 50 for n in range(4)]
        xiph = bytes([3, 100, 102, 104]) + b"".join(frames)
        # The first size as it is, then the differences: 2 each, stored above 63.
        ebml = bytes([3]) + (100 | 0x4000).to_bytes(2, "big") + bytes([0x80 | 63 + 2]) * 2 + b"".join(frames)
        fixed = bytes([3]) + b"".join(even)
        default_duration = bytes.fromhex("23e38384") + struct.pack(">I", 32_000_000)
        track = track_entry(1, 2, "A_PCM/INT/LIT", more=audio_fields(8000, 1, 16) + default_duration)
        blocks = [simple_block(1, 0, xiph, 0x82), simple_block(1, 128, ebml, 0x86), simple_block(1, 256, fixed, 0x84)]
        source = self.built("laced.mkv", matroska([track], [cluster(0, *blocks)], 384))
        output = self.remux(source)
        self.assert_same_stream(source, output)
        self.assertEqual(len(self.probe(output)), 12)

    def test_a_live_recording_of_unknown_sizes(self):
        track = track_entry(1, 2, "A_PCM/INT/LIT", more=audio_fields(8000, 1, 16))
        clusters = [cluster(1000 * n, *(simple_block(1, 100 * i, bytes([n, i]) * 800) for i in range(10)),
                            unknown_size=True) for n in range(5)]
        source = self.built("live.mkv", matroska([track], clusters, unknown_size=True))
        output = self.remux(source)
        self.assert_same_stream(source, output)

    def test_a_fine_timestamp_scale(self):
        track = track_entry(1, 2, "A_PCM/INT/LIT", more=audio_fields(8000, 1, 16))
        blocks = [simple_block(1, 3125 * i, bytes([i]) * 500) for i in range(10)]
        source = self.built("fine.mkv", matroska([track], [cluster(0, *blocks)], 313, scale_ns=10_000))
        self.assert_same_stream(source, self.remux(source))

    def test_zlib(self):
        plain = made("ac3.mkv", *sound(2), "-c:a", "ac3")
        source = self.directory / "zlib.mkv"
        done = run_tool(["mkvmerge", "-o", str(source), "--compression", "0:zlib", str(plain)])
        self.assertEqual(done.returncode, 0, done.stdout)
        output = self.check(source, "a")
        if self.is_strict:  # mkvmerge has laced the frames, and told their times again by the first one of each block
            self.assertEqual(self.packets(output, 0), self.packets(plain, 0))
        else:
            self.assert_same_stream(plain, output)

    def test_stripped_headers(self):
        frames = [b"\x11\x22" + bytes([n, 0]) * 400 for n in range(10)]
        encoded = audio_fields(8000, 1, 16) + stripped_headers(frames[0][:2])
        blocks = [simple_block(1, 50 * n, frame[2:]) for n, frame in enumerate(frames)]
        stripped = matroska([track_entry(1, 2, "A_PCM/INT/LIT", more=encoded)], [cluster(0, *blocks)], 500)
        source = self.built("stripped.mkv", stripped)
        output = self.remux(source)
        self.assert_same_stream(source, output)
        self.assertIn(frames[3], output.read_bytes())
        self.assertNotIn(frames[3], stripped)

    def test_blocks_that_last_longer_than_an_offset_can_say(self):
        track = track_entry(1, 17, "S_TEXT/UTF8")
        blocks = [block_group(1, 0, b"long", 60_000), block_group(1, 500, b"short", 200)]
        source = self.built("long.mkv", matroska([track], [cluster(0, *blocks)], 60_000))
        output = self.remux(source)
        self.assert_same_stream(source, output, keys=False)
