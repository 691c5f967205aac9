"""Every codec that the muxer maps, on streams from encoders that nobody here wrote, against three judges."""

from whole_files.codec_case import CodecCase
from whole_files.codec_matrix import AUDIO, SRT, SUBTITLES, VIDEO, encoded
from whole_files.mkvmux_case import input_directory, make_input
from whole_files.profiles import in_both_profiles


WINDOWS_HEADER_DIGITS = 2 * 40  # BITMAPINFOHEADER


class MatrixCase(CodecCase):
    def assert_offer(self, line, source):
        offered = self.identified(source)[0]
        expected = line.codec_id_in(self.is_strict) or None
        self.assertEqual((offered["subtype"], offered["codec_id"]), (line.media_type, expected))

    def assert_track(self, line, source, output):
        self.assert_offer(line, source)
        track = self.report(output)["properties"]
        self.assertEqual(track["codec_id"], line.codec_id_in(self.is_strict))
        for name, value in line.fields.items():
            self.assertEqual(track.get(name), value, name)
        private = track.get("codec_private_data", "")
        if line.private in ("behind", "windows"):
            self.assert_windows_private(line, source, private)
            return
        # The strict profile builds records that are as whole as those of the encoder's own container.
        if line.private == "carried" or (self.is_strict and source.suffix == ".mkv" and line.private == "built"):
            self.assertEqual(private, self.report(source)["properties"].get("codec_private_data", ""), "CodecPrivate")
        elif line.private == "none":
            self.assertEqual(private, "", "CodecPrivate")
        else:
            self.assertGreater(len(private), 0, "CodecPrivate")

    def assert_windows_private(self, line, source, private):
        """What Windows has in a structure, and Matroska has not."""
        if self.is_strict:
            before = self.report(source)["properties"].get("codec_private_data", "")
            self.assertEqual(private, before[WINDOWS_HEADER_DIGITS:] if line.private == "behind" else "", "CodecPrivate")
        else:
            self.assertGreaterEqual(len(private), WINDOWS_HEADER_DIGITS, "CodecPrivate")

    def assert_refused(self, line, source):
        self.assert_offer(line, source)
        output = self.directory / "refused.mkv"
        self.assert_fails(self.mkvmux("-o", output, source), "compatible files do not hold this type",
                          "--profile strict")
        self.assertFalse(output.exists())

    def check(self, line, source, kind, *decoded_as):
        if not line.codec_id_in(self.is_strict):
            self.assert_refused(line, source)
            return
        ending = ".webm" if line.container == "webm" else ".mkv"
        output = self.remux(source, ending=ending)
        self.assert_track(line, source, output)
        self.assert_same_stream(source, output)
        self.assert_decodes_alike(source, output, kind, *decoded_as)
        self.assert_remuxes(output)


@in_both_profiles
class VideoCodecs(MatrixCase):
    pass


@in_both_profiles
class AudioCodecs(MatrixCase):
    pass


@in_both_profiles
class SubtitleCodecs(MatrixCase):
    pass


def add_media_tests(case, lines, kind):
    for line in lines:
        def test(self, line=line):
            self.check(line, encoded(line, kind), kind)
        setattr(case, f"test_{line.name}", test)


def add_subtitle_tests():
    for line in SUBTITLES:
        def test(self, line=line):
            text = input_directory() / "subtitles.srt"
            text.write_text(SRT)
            source = make_input(f"{line.name}.mkv", "-i", str(text), "-c:s", line.encoder)
            self.check(line, source, "s", "-c:s", "srt")
        setattr(SubtitleCodecs, f"test_{line.name}", test)


add_media_tests(VideoCodecs, VIDEO, "v")
add_media_tests(AudioCodecs, AUDIO, "a")
add_subtitle_tests()
