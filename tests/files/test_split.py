"""mkvmux --split: packets of all parts together are the input's, each part begins with a keyframe and plays alone, and
picture and sound are cut at the same moment, where mkvmerge cuts the same input, too."""

import json
import re

from whole_files.mkvmux_case import MkvmuxCase, make_input, picture, run_tool, sound
from whole_files.profiles import STRICT, in_both_profiles

ROUNDING_MS = 2
PICTURE_MS = 40
CHAPTERS = "CHAPTER01=00:00:00.000\nCHAPTER01NAME=one\nCHAPTER02=00:00:03.500\nCHAPTER02NAME=two\n"


def film(seconds=7):
    """Pictures with B frames, a keyframe a second, and sound that ends two seconds earlier."""
    return make_input(f"split{seconds}.mkv", *picture(seconds), *sound(seconds - 2), "-c:v", "libx264", "-g", "25",
                      "-bf", "2", "-sc_threshold", "0", "-c:a", "pcm_s16le")


def open_groups():
    """Pictures that are shown before their keyframe come behind it."""
    return make_input("open_groups.mkv", *picture(6), *sound(6), "-c:v", "libx265", "-x265-params",
                      "keyint=25:min-keyint=25:open-gop=1:bframes=3:b-adapt=0:scenecut=0:log-level=none", "-c:a",
                      "libmp3lame")


@in_both_profiles
class Split(MkvmuxCase):
    def split(self, source, *options, name="out.mkv"):
        run = self.mkvmux("-o", self.directory / name, *options, source)
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        parts = sorted(self.directory.glob("out-*.mkv"))
        told = re.findall(r"(out-\d+\.mkv): (\d+) bytes written", run.output)
        self.assertEqual(told, [(part.name, str(part.stat().st_size)) for part in parts])
        for part in parts:
            self.save_for_judges(part)
        return parts

    def merged(self, source, how):
        done = run_tool(["mkvmerge", "-q", "-o", str(self.directory / "merged.mkv"), "--split", how, str(source)])
        self.assertEqual(done.returncode, 0, done)
        return sorted(self.directory.glob("merged-*.mkv"))

    def counts(self, parts, stream):
        return [len(self.packets(part, stream)) for part in parts]

    def check_parts(self, source, parts):
        for stream in (0, 1):
            together = [packet for part in parts for packet in self.packets(part, stream)]
            self.assertEqual(together, self.packets(source, stream), f"packets of stream {stream}")
        for part in parts:
            self.identify(part)
            self.assert_decodes(part)
            flags = self.run_ffprobe(part, "-select_streams", "v", "-read_intervals", "%+#1", "-show_entries",
                                     "packet=flags", "-of", "csv=p=0")
            self.assertTrue(flags.startswith("K"), f"{part} begins with {flags}")

    def check_in_step(self, source, parts):
        """What lies between the first picture and the first sound of each part is what it was in the input."""
        pictures, sounds = self.times(source, 0), self.times(source, 1)
        for number, part in enumerate(parts):
            own_pictures, own_sounds = self.times(part, 0), self.times(part, 1)
            if number > 0 and own_sounds:
                distance = own_sounds[0] - own_pictures[0]
                self.assertLessEqual(abs(distance - (sounds[0] - pictures[0])), ROUNDING_MS)
                self.assertTrue(-ROUNDING_MS <= distance < PICTURE_MS, "sound begins with the keyframe")
            pictures, sounds = pictures[len(own_pictures):], sounds[len(own_sounds):]

    def test_durations_are_cut_where_mkvmerge_cuts(self):
        parts = self.split(film(), "--split", "duration:00:00:02.5")
        self.check_parts(film(), parts)
        self.check_in_step(film(), parts)
        merged = self.merged(film(), "duration:00:00:02.5")
        self.assertEqual(self.counts(parts, 0), self.counts(merged, 0))
        self.assertEqual(self.counts(parts, 0), [75, 75, 25])

    def test_timestamps_are_cut_where_mkvmerge_cuts(self):
        parts = self.split(film(), "--split", "timestamps:1500ms,00:00:03.9")
        self.check_parts(film(), parts)
        self.check_in_step(film(), parts)
        self.assertEqual(self.counts(parts, 0), self.counts(self.merged(film(), "timestamps:1500ms,00:00:03.9"), 0))

    def test_sizes_are_what_a_part_has_at_least(self):
        limit = 30000
        parts = self.split(film(), "--split", f"size:{limit}")
        self.check_parts(film(), parts)
        self.assertGreater(len(parts), 2)
        for part in parts[:-1]:
            self.assertGreaterEqual(part.stat().st_size, limit)

    def test_pictures_before_their_keyframe_stay_with_it(self):
        parts = self.split(open_groups(), "--split", "duration:2s")
        together = [packet for part in parts for packet in self.packets(part, 0)]
        self.assertEqual(together, self.packets(open_groups(), 0))
        self.assertGreater(len(parts), 1)
        for part in parts:
            self.identify(part)
        merged = self.merged(open_groups(), "duration:2s")
        self.assertEqual(self.counts(parts, 0), self.counts(merged, 0))

    def test_names_with_a_pattern(self):
        run = self.mkvmux("-o", self.directory / "%04d of film.mkv", "--split", "duration:3s", film())
        self.assertEqual(run.status, 0, run)
        self.assertEqual([part.name for part in sorted(self.directory.iterdir())],
                         ["0001 of film.mkv", "0002 of film.mkv", "0003 of film.mkv"])

    def test_one_part_has_a_number_too(self):
        self.assertEqual([part.name for part in self.split(film(), "--split", "1h")], ["out-001.mkv"])

    def test_a_part_that_exists_already_ends_the_run(self):
        there = self.directory / "out-002.mkv"
        there.write_bytes(b"mine")
        run = self.mkvmux("-o", self.directory / "out.mkv", "--split", "duration:3s", film())
        self.assert_fails(run, "out-002.mkv: cannot be written", "exist")
        self.assertEqual(there.read_bytes(), b"mine")
        self.assert_decodes(self.directory / "out-001.mkv")
        self.split(film(), "-y", "--split", "duration:3s")

    def test_what_the_run_reads_or_writes_is_no_part(self):
        chapters = self.directory / "out-002.mkv"
        for option, what in (("--chapters", "an input"), ("--save-config", "the saved configuration")):
            chapters.write_text(CHAPTERS)
            with self.subTest(option):
                self.assert_fails(self.mkvmux("-y", "-o", self.directory / "out.mkv", "--split", "2s", option, chapters,
                                              film()), f"out-002.mkv: is {what} and cannot be a part of the output")
                self.assertEqual(chapters.read_text(), CHAPTERS)
                self.assertFalse((self.directory / "out-001.mkv").exists())
        source = (self.directory / "film12.mkv")
        source.write_bytes(film().read_bytes())
        self.assert_fails(self.mkvmux("-y", "-o", self.directory / "film%d.mkv", "--split", "2s", source), "film12.mkv: is an input")

    def test_what_cannot_be_is_told(self):
        for how in ("duration:x", "parts:1s-2s", "size:0"):
            self.assert_fails(self.mkvmux("-o", self.directory / "out.mkv", "--split", how, film()), "--split")
        self.assert_fails(self.mkvmux("-o", "-", "--split", "3s", film()), "--split", "standard output")
        self.assertEqual(list(self.directory.iterdir()), [])


class SplitChapters(MkvmuxCase):
    profile = STRICT

    def test_each_part_has_its_own_chapters(self):
        lines = self.directory / "c.txt"
        lines.write_text(CHAPTERS)
        run = self.mkvmux("-o", self.directory / "out.mkv", "--split", "duration:3s", "--title", "film", "--chapters",
                          lines, film())
        self.assertEqual((run.status, run.error_lines), (0, []), run)
        titles = []
        for part in sorted(self.directory.glob("out-*.mkv")):
            self.save_for_judges(part)
            shown = json.loads(self.run_ffprobe(part, "-show_chapters", "-show_entries", "format_tags", "-of", "json"))
            self.assertEqual(shown["format"]["tags"]["title"], "film")
            titles.append([(round(float(chapter["start_time"]), 1), chapter["tags"]["title"])
                           for chapter in shown["chapters"]])
        self.assertEqual(titles, [[(0.0, "one")], [(0.0, "one"), (0.5, "two")], [(0.0, "two")]])
