"""The subtitle rows: text of every kind, and bitmaps, most of them from files that the test writes by itself."""

import struct

from whole_files.codec_case import CodecCase
from whole_files.mkv_builder import block_group, cluster, matroska, track_entry
from whole_files.mkvmux_case import run_tool
from whole_files.profiles import in_both_profiles

SSA = """[Script Info]
ScriptType: v4.00

[V4 Styles]
Format: Name, Fontname, Fontsize, PrimaryColour, SecondaryColour, TertiaryColour, BackColour, Bold, Italic, BorderStyle, Outline, Shadow, Alignment, MarginL, MarginR, MarginV, AlphaLevel, Encoding
Style: Default,Arial,20,65535,65535,65535,-2147483640,-1,0,1,3,0,2,30,30,30,0,0

[Events]
Format: Marked, Start, End, Style, Name, MarginL, MarginR, MarginV, Effect, Text
Dialogue: Marked=0,0:00:00.50,0:00:01.25,Default,,0000,0000,0000,,First line
Dialogue: Marked=0,0:00:01.50,0:00:02.00,Default,,0000,0000,0000,,Second
"""

USF = """<?xml version="1.0" encoding="UTF-8"?>
<USFSubtitles version="1.0">
<metadata><title>t</title><author><name>n</name></author><language code="eng">English</language></metadata>
<styles><style name="Default"><fontstyle face="Arial" size="20"/></style></styles>
<subtitles>
<subtitle start="00:00:00.500" stop="00:00:01.250"><text style="Default">First line</text></subtitle>
<subtitle start="00:00:01.500" stop="00:00:02.000"><text style="Default">Second</text></subtitle>
</subtitles>
</USFSubtitles>
"""

VTT = """WEBVTT - a title

STYLE
::cue { color: red }

NOTE of the file

one
00:00:00.500 --> 00:00:01.250 align:start position:10%
First line
<i>second</i> line

00:00:01.500 --> 00:00:02.000
Käse €

NOTE in front of a cue

00:00:02.500 --> 00:00:03.000 line:0
<v Ann>Third
"""

SUBTITLE_DEFAULT_DURATION_NS = 3_000_000_000


def pgs_segment(time_ms, kind, data):
    return b"PG" + struct.pack(">IIBH", time_ms * 90, 0, kind, len(data)) + data


def pgs_picture(time_ms, number):
    """A red square of 8 by 8 in the middle of a 720 by 576 picture."""
    lines = b"".join(b"\x00\x88\x01\x00\x00" for _ in range(8))  # 8 pixels of colour 1, end of line
    show = struct.pack(">HHBHBBBB", 720, 576, 0x10, number, 0x80, 0, 0, 1) + struct.pack(">HBBHH", 0, 0, 0, 100, 100)
    window = b"\x01" + struct.pack(">BHHHH", 0, 100, 100, 8, 8)
    palette = bytes([0, 0, 1, 81, 240, 90, 255])
    image = struct.pack(">HBB", 0, 0, 0xC0) + (len(lines) + 4).to_bytes(3, "big") + struct.pack(">HH", 8, 8) + lines
    return b"".join(pgs_segment(time_ms, kind, data) for kind, data in
                    ((0x16, show), (0x17, window), (0x14, palette), (0x15, image), (0x80, b"")))


def pgs_nothing(time_ms, number):
    show = struct.pack(">HHBHBBBB", 720, 576, 0x10, number, 0, 0, 0, 0)
    window = b"\x01" + struct.pack(">BHHHH", 0, 100, 100, 8, 8)
    return b"".join(pgs_segment(time_ms, kind, data) for kind, data in ((0x16, show), (0x17, window), (0x80, b"")))


@in_both_profiles
class Subtitles(CodecCase):
    def write(self, name, content):
        path = self.directory / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def mkvmerge(self, source, *options):
        target = self.directory / "source.mkv"
        done = run_tool(["mkvmerge", "-o", str(target), *options, str(source)])
        self.assertEqual(done.returncode, 0, done.stdout)
        return target

    def sup(self):
        return self.write("a.sup", pgs_picture(500, 0) + pgs_nothing(1250, 1) + pgs_picture(1500, 2) +
                          pgs_nothing(2000, 3))

    def check(self, source, codec_id, media_type):
        output = self.directory / "out.mkv"
        self.mux(output, source)
        offered = self.identified(source)[0]
        expected = self.strict_codec_id(codec_id) if self.is_strict else codec_id
        self.assertEqual((offered["subtype"], offered["codec_id"]), (media_type, expected))
        track, before = self.report(output)["properties"], self.report(source)["properties"]
        self.assertEqual(track["codec_id"], expected)
        self.assertEqual(track.get("default_duration"), None if self.is_strict else SUBTITLE_DEFAULT_DURATION_NS)
        self.assertEqual(track.get("codec_private_data", ""), before.get("codec_private_data", ""), "CodecPrivate")
        self.assert_same_stream(source, output, keys=False)
        # Where the input says nothing, readers of a compatible file find the track's default of 3 s.
        default = None if self.is_strict else f"{SUBTITLE_DEFAULT_DURATION_NS / 1e9:.6f}"
        self.assertEqual([p.get("duration_time") for p in self.probe(output)],
                         [p.get("duration_time", default) for p in self.probe(source)], "durations")
        self.assert_remuxes(output)
        return output

    @staticmethod
    def strict_codec_id(codec_id):
        """RFC 9559's list of codecs has no text that is ASCII alone."""
        return "S_TEXT/UTF8" if codec_id == "S_TEXT/ASCII" else codec_id

    def test_plain_text(self):
        blocks = [block_group(1, 500, b"First line", 750), block_group(1, 1500, b"Second", 500)]
        source = self.write("source.mkv", matroska([track_entry(1, 17, "S_TEXT/ASCII")], [cluster(0, *blocks)], 2000))
        output = self.check(source, "S_TEXT/ASCII", "{00000000-0000-0000-0000-000000000000}")
        self.assert_decodes_alike(source, output, "s", "-c:s", "srt")

    def test_ssa(self):
        source = self.mkvmerge(self.write("a.ssa", SSA))
        output = self.check(source, "S_TEXT/SSA", "{3020560F-255A-4DDC-806E-6C5CC6DCD70A}")
        self.assert_decodes_alike(source, output, "s", "-c:s", "ass")

    def test_usf(self):
        source = self.mkvmerge(self.write("a.usf", USF))
        self.check(source, "S_TEXT/USF", "{B753B29A-0A96-45BE-985F-68351D9CAB90}")

    def test_pgs(self):
        source = self.mkvmerge(self.sup(), "--compression", "0:none")
        output = self.check(source, "S_HDMV/PGS", "{00000000-0000-0000-0000-000000000000}")
        self.assert_decodes_alike(source, output, "s", "-c:s", "dvdsub")

    def test_pgs_that_was_compressed(self):
        source = self.mkvmerge(self.sup(), "--compression", "0:zlib")
        output = self.check(source, "S_HDMV/PGS", "{00000000-0000-0000-0000-000000000000}")
        self.assert_decodes_alike(source, output, "s", "-c:s", "dvdsub")

    def test_vobsub(self):
        source = self.directory / "source.mkv"
        done = run_tool(["ffmpeg", "-v", "error", "-y", "-i", str(self.sup()), "-c:s", "dvdsub", str(source)])
        self.assertEqual(done.returncode, 0, done.stderr)
        output = self.check(source, "S_VOBSUB", "{F7239E31-9599-4E43-8DD5-FBAF75CF37F1}")
        self.assert_decodes_alike(source, output, "s", "-c:s", "dvdsub")

    # ---- What compatible files do not hold

    def check_strict(self, source, codec_id, media_type):
        """The output, or None where the profile has no such codec."""
        if self.is_strict:
            return self.check(source, codec_id, media_type)
        output = self.directory / "out.mkv"
        self.assert_fails(self.mkvmux("-o", output, source), "compatible files do not hold this type",
                          "--profile strict")
        self.assertFalse(output.exists())
        return None

    def extracted(self, path):
        """The subtitles as mkvextract writes them."""
        target = self.directory / "extracted"
        done = run_tool(["mkvextract", str(path), "tracks", f"0:{target}"])
        self.assertEqual(done.returncode, 0, done.stdout)
        return target.read_bytes()

    def test_webvtt(self):
        source = self.mkvmerge(self.write("a.vtt", VTT))
        output = self.check_strict(source, "S_TEXT/WEBVTT", "'wvtt'")
        if output is not None:
            text = self.extracted(output)
            self.assertEqual(text, self.extracted(source))
            for part in ("one\n00:00:00.500 --> 00:00:01.250 align:start position:10%\nFirst line", "Käse €",
                         "NOTE in front of a cue", " line:0\n<v Ann>Third", "::cue { color: red }"):
                self.assertIn(part.encode(), text)

    def test_a_webvtt_file_becomes_what_mkvmerge_makes_of_it(self):
        text = self.write("a.vtt", VTT.replace("<v Ann>Third", "<v Ann>Third<00:00:02.700>later"))
        if not self.is_strict:
            return self.assert_fails(self.mkvmux("-o", self.directory / "out.mkv", text), "--profile strict")
        output = self.remux(text)
        source = self.mkvmerge(text)
        self.assertEqual(self.report(output)["properties"]["codec_private_data"],
                         self.report(source)["properties"]["codec_private_data"])
        self.assert_same_stream(source, output)
        self.assertEqual(self.extracted(output), self.extracted(source))
        self.assert_remuxes(output)
        return None

    def test_dvb_subtitles(self):
        stream = self.directory / "a.ts"
        done = run_tool(["ffmpeg", "-v", "error", "-y", "-i", str(self.sup()), "-c:s", "dvbsub", str(stream)])
        self.assertEqual(done.returncode, 0, done.stderr)
        source = self.mkvmerge(stream)
        self.assertEqual(len(self.report(source)["properties"]["codec_private_data"]), 2 * 5)
        self.check_strict(source, "S_DVBSUB", "{34FFCBC3-D5B3-4171-9002-D4C60301697F}")
