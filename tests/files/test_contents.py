"""Inputs are what their bytes say, whatever their names say, and whatever a splitter of the host makes of them."""

import shutil

from whole_files.mkvmux_case import MkvmuxCase, cinepak_avi, make_input, pcm_wave, picture, sound


class Contents(MkvmuxCase):
    def renamed(self, source, name):
        path = self.directory / name
        shutil.copy(source, path)
        return path

    def test_an_input_is_recognised_by_its_content_under_another_name(self):
        text = self.directory / "text.srt"
        text.write_text("1\n00:00:00,000 --> 00:00:01,000\nA\n", encoding="ascii")
        sources = [
            (make_input("v.mkv", *picture(1), "-c:v", "mpeg4"), "V_MPEG4/ISO/ASP"),
            (make_input("v.h264", *picture(1), "-c:v", "libx264"), "V_MPEG4/ISO/AVC"),
            (make_input("v.hevc", *picture(1), "-c:v", "libx265", "-x265-params", "log-level=0"), "V_MPEGH/ISO/HEVC"),
            (text, "S_TEXT/UTF8"),
            (make_input("text.ass", "-i", text), "S_TEXT/ASS"),
            (cinepak_avi(), "V_MS/VFW/FOURCC"),
            (pcm_wave(), "A_PCM/INT/LIT"),
        ]
        for source, codec in sources:
            for name in ("film.dat", "film", "film.avi", "film.mkv"):
                with self.subTest(source=source.name, name=name):
                    output = self.directory / "out.mkv"
                    run = self.mkvmux("-y", "-q", "-o", output, self.renamed(source, name))
                    self.assertEqual((run.status, run.error_lines), (0, []), run)
                    self.assertEqual(self.codecs(output)[0][1], codec)

    def test_sound_that_the_splitter_takes_for_another_kind_is_refused(self):
        source = make_input("sound.aac", *sound(10), "-c:a", "aac")
        for name in ("sound.aac", "sound.mp3", "sound.dat"):
            output = self.directory / "out.mkv"
            run = self.mkvmux("-o", output, self.renamed(source, name))
            self.assert_fails(run, name, "holds AAC in ADTS frames")
            self.assertFalse(output.exists())
        self.assert_fails(self.mkvmux("--identify", source), "holds AAC in ADTS frames")

    def test_mpeg_audio_of_every_make_is_read_without_a_doubt(self):
        for name, *options in (("a.mp3", "-b:a", "320k"), ("b.mp3", "-q:a", "9"), ("c.mp3", "-id3v2_version", "0"),
                               ("d.mp3", "-b:a", "8k", "-ar", "8000"), ("e.mp2", "-b:a", "384k")):
            with self.subTest(name=name):
                self.mux(self.directory / f"{name}.mkv", make_input(name, *sound(5), *options))

    def test_a_duration_that_cannot_be_is_a_warning(self):
        source = self.directory / "long.wav"
        source.write_bytes(pcm_wave(1).read_bytes() + b"junk" + (4 << 20).to_bytes(4, "little") + bytes(4 << 20))
        run = self.mkvmux("-o", self.directory / "out.mkv", source)
        self.assertEqual((run.status, len(run.error_lines)), (1, 1), run)
        self.assertIn(f"warning: {source}: the system's splitter finds 1.00 s of sound in", run.error_lines[0])
