"""Inputs that no system splits: raw H.264 and H.265, text subtitles, and what a Matroska file says besides its streams."""

import json

from whole_files.codec_case import CodecCase
from whole_files.codec_matrix import SRT
from whole_files.mkvmux_case import make_input, pcm_wave, picture, run_tool, sound
from whole_files.profiles import STRICT, in_both_profiles

H264 = ("-c:v", "libx264", "-g", "25", "-bf", "3", "-x264-params", "b-pyramid=normal:scenecut=0")
H265 = ("-c:v", "libx265", "-x265-params", "log-level=error:keyint=25:bframes=3")

ASS = """[Script Info]
ScriptType: v4.00+

[V4+ Styles]
Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, OutlineColour, BackColour, Bold, Italic, Underline, StrikeOut, ScaleX, ScaleY, Spacing, Angle, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, Encoding
Style: Default,Arial,16,&Hffffff,&Hffffff,&H0,&H0,0,0,0,0,100,100,0,0,1,1,0,2,10,10,10,0

[Events]
Format: Layer, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text
Dialogue: 0,0:00:01.50,0:00:02.00,Default,,0,0,0,,Second, with a comma
Dialogue: 1,0:00:00.50,0:00:01.25,Default,actor,0,0,0,,{\\i1}First
"""


@in_both_profiles
class RawVideo(CodecCase):
    """The elementary stream gives the same frames at the same times as the file it was taken from."""

    def frame_times(self, path):
        """Milliseconds from the first frame, in the order of display."""
        text = self.run_ffprobe(path, "-select_streams", "v", "-show_entries", "frame=best_effort_timestamp_time",
                                "-of", "json")
        times = [1000 * float(frame["best_effort_timestamp_time"]) for frame in json.loads(text)["frames"]]
        return [round(time - times[0]) for time in times]

    def check(self, name, raw_ending, rate, codec_id, *encoder):
        twin = make_input(f"{name}.mp4", *picture(4, rate=rate), *encoder)
        raw = make_input(f"{name}{raw_ending}", "-i", str(twin), "-c", "copy")
        output = self.directory / f"out{raw_ending}.mkv"
        self.mux(output, "--fps", rate, raw)
        self.assertEqual(self.codecs(output), [("video", codec_id)])
        self.assert_decodes_alike(twin, output, "v")
        before, after = self.frame_times(twin), self.frame_times(output)
        self.assertEqual(len(after), len(before))
        for number, (a, b) in enumerate(zip(after, before)):
            self.assertLessEqual(abs(a - b), 1, f"time of frame {number}")
        self.assert_remuxes(output)
        self.save_for_judges(output)

    def test_h264(self):
        for ending in (".h264", ".264"):
            with self.subTest(ending=ending):
                self.check("raw_avc", ending, "25", "V_MPEG4/ISO/AVC", *H264)

    def test_h265(self):
        for ending in (".hevc", ".265"):
            with self.subTest(ending=ending):
                options = () if ending == ".hevc" else ("-f", "hevc")
                self.check_265(ending, options)

    def check_265(self, ending, options):
        twin = make_input("raw_hevc.mp4", *picture(4), *H265)
        make_input(f"raw_hevc{ending}", "-i", str(twin), "-c", "copy", *options)
        self.check("raw_hevc", ending, "25", "V_MPEGH/ISO/HEVC", *H265)

    def test_a_film_rate(self):
        self.check("raw_film", ".h264", "24000/1001", "V_MPEG4/ISO/AVC", *H264)

    def test_sound_beside_it(self):
        raw = make_input("raw_beside.h264", *picture(2), *H264)
        output = self.directory / "out.mkv"
        self.mux(output, "--fps", "25", raw, pcm_wave(2))
        self.assertEqual([kind for kind, _ in self.codecs(output)], ["video", "audio"])
        self.assert_decodes(output)


class RgbRows(CodecCase):
    """Windows has the lowest row of RGB first and fills the rows up; a strict file has neither."""
    profile = STRICT

    def check(self, flipped):
        width, height = 162, 120  # no multiple of four bytes, of 24 bits
        source = make_input(f"rgb_{flipped}.avi", *picture(1, f"{width}x{height}"), "-c:v", "rawvideo", "-pix_fmt",
                            "bgr24", "-flipped_raw_rgb", str(flipped))
        output = self.remux(source)
        self.assertEqual(self.codecs(output), [("video", "V_UNCOMPRESSED")])
        self.assertEqual({int(packet["size"]) for packet in self.probe(output)}, {width * height * 3})
        self.assert_decodes_alike(source, output, "v", "-pix_fmt", "bgr24")
        self.assert_remuxes(output)

    def test_24_bits(self):
        self.check(0)

    def test_24_bits_with_the_lowest_row_first(self):
        self.check(1)


@in_both_profiles
class TextSubtitles(CodecCase):
    def remuxed(self, name, content):
        source = self.directory / name
        source.write_bytes(content if isinstance(content, bytes) else content.encode())
        return source, self.remux(source)

    def lines(self, path, encoder="srt"):
        done = run_tool(["ffmpeg", "-v", "error", "-i", str(path), "-map", "0:s:0", "-c:s", encoder, "-f", encoder,
                         "-"])
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        return done.stdout

    def test_srt_of_every_encoding(self):
        encodings = {"utf8": SRT.encode(), "bom": b"\xef\xbb\xbf" + SRT.encode(), "utf16": SRT.encode("utf-16"),
                     "utf16be": b"\xfe\xff" + SRT.encode("utf-16-be"), "ansi": SRT.encode("cp1252"),
                     "crlf": SRT.replace("\n", "\r\n").encode()}
        for name, content in encodings.items():
            with self.subTest(encoding=name):
                _, output = self.remuxed(f"{name}.srt", content)
                self.assertEqual(self.codecs(output), [("subtitles", "S_TEXT/UTF8")])
                text = self.lines(output)
                self.assertIn("00:00:00,500 --> 00:00:01,250\nFirst line\n<i>second</i> line", text)
                self.assertIn("00:00:01,500 --> 00:00:02,000\nKäse €", text)

    def test_ass(self):
        source, output = self.remuxed("a.ass", ASS)
        self.assertEqual(self.codecs(output), [("subtitles", "S_TEXT/ASS")])
        self.assertEqual(self.lines(output, "ass"), self.lines(source, "ass"))
        self.assert_remuxes(output)


@in_both_profiles
class CarriedOver(CodecCase):
    """A remux keeps names, languages, flags and attachments, unless options say otherwise."""

    def source(self):
        font = self.directory / "a.ttf"
        font.write_bytes(b"font" * 1000)
        plain = make_input("two.mkv", *picture(1), *sound(1), "-c:v", "libx264", "-c:a", "aac")
        source = self.directory / "source.mkv"
        done = run_tool(["mkvmerge", "-o", str(source), "--track-name", "0:Bild \U0001F3AC", "--language", "0:fr",
                         "--default-track-flag", "0:no", "--language", "1:ger", "--default-track-flag", "1:yes",
                         "--attachment-name", "Schrift.ttf", "--attachment-description", "eine Schrift",
                         "--attachment-mime-type", "application/x-truetype-font", "--attach-file", str(font),
                         str(plain)])
        self.assertEqual(done.returncode, 0, done.stdout)
        return source

    @staticmethod
    def tags(report):
        return [(track["properties"].get("track_name"), track["properties"]["language"],
                 track["properties"]["default_track"]) for track in report["tracks"]]

    def attached(self, report):
        return [(a["file_name"], a["description"], a["content_type"], a["size"], a["properties"]["uid"])
                for a in report["attachments"]]

    def test_names_languages_flags_and_attachments(self):
        source = self.source()
        output = self.remux(source)
        before, after = self.identify(source), self.identify(output)
        self.assertEqual(self.tags(after), self.tags(before))
        self.assertEqual(len(before["attachments"]), 1)
        self.assertEqual(self.attached(after), self.attached(before))

    def test_options_go_over_them(self):
        output = self.remux(self.source(), "--track-name", "0:", "--language", "1:Polish")
        self.assertEqual(self.tags(self.identify(output)), [(None, "fre", False), (None, "pol", True)])

    def remerged(self, source, *options):
        """The file with other flags, by mkvmerge."""
        changed = self.directory / "changed.mkv"
        done = run_tool(["mkvmerge", "-o", str(changed), *options, str(source)])
        self.assertEqual(done.returncode, 0, done.stdout)
        return changed

    def remux_warned(self, source):
        """The output and the warnings of a run that loses something."""
        output = self.directory / "out.mkv"
        run = self.mkvmux("-o", output, source)
        self.assertEqual(run.status, 1, run)
        return output, run.error_lines

    def test_a_default_subtitle_becomes_forced_only_where_it_was(self):
        text = self.directory / "a.srt"
        text.write_text("1\n00:00:00,100 --> 00:00:00,600\nHello\n")
        for forced in (False, True):
            with self.subTest(forced=forced):
                source = self.remerged(text, "--default-track-flag", "0:yes", "--forced-display-flag", f"0:{int(forced)}")
                output = self.directory / f"forced_{forced}.mkv"
                self.mux(output, source)
                track = self.identify(output)["tracks"][0]["properties"]
                # The compatible profile has one flag for both; in a strict file each is its own.
                self.assertEqual((track["default_track"], track["forced_track"]), (self.is_strict or forced, forced))

    def test_a_track_that_is_not_to_be_used_goes_on_with_a_warning(self):
        source = self.remerged(self.source(), "--track-enabled-flag", "1:no")
        output, warnings = self.remux_warned(source)
        self.assertEqual(len(warnings), 1)
        self.assertIn("changed.mkv: stream 'Track 2': is marked as not to be used", warnings[0])
        self.assertEqual(len(self.identify(output)["tracks"]), 2)

    def test_an_alpha_channel_is_lost_with_a_warning(self):
        source = make_input("alpha.webm", *picture(1), "-vf", "format=yuva420p", "-c:v", "libvpx", "-auto-alt-ref", "0",
                            "-deadline", "realtime")
        output, warnings = self.remux_warned(source)
        self.assertEqual(len(warnings), 1)
        self.assertIn("alpha.webm: stream 'Track 1': what its blocks carry besides the frames", warnings[0])
        self.assert_same_stream(source, output, 0)

    def test_a_matroska_file_retargeted_to_webm(self):
        source = make_input("vp9opus.mkv", *picture(1), *sound(1, 48000), "-c:v", "libvpx-vp9", "-cpu-used", "8",
                            "-deadline", "realtime", "-c:a", "libopus")
        output = self.remux(source, ending=".webm")
        self.assertIn(b"\x42\x82\x84webm", output.read_bytes()[:64])
        self.assert_same_stream(source, output, 0)
        self.assert_same_stream(source, output, 1)
        self.save_for_judges(output)

    def test_a_codec_that_has_no_row_is_named_or_left_out(self):
        source = make_input("quicktime.mkv", *picture(1), *sound(1), "-c:v", "cinepak", "-c:a", "aac")
        output = self.directory / "out.mkv"
        self.assert_fails(self.mkvmux("-o", output, source), "V_QUICKTIME", "--disable 0")
        self.assertFalse(output.exists())
        self.mux(output, "--disable", "0", source)
        self.assertEqual([kind for kind, _ in self.codecs(output)], ["audio"])
